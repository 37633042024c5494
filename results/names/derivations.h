#ifndef DERIVATIONS_H
#define DERIVATIONS_H

#include <QList>

#include "column.h"

namespace results {

/// What is derived of one stored column: columns that stand beside it, never in its place.
struct derivation
{
    int stored;     ///< place of the stored column
    int companion;  ///< place of another one that tells more; -1 for none
    int first_made; ///< place of the first derived column; the others follow
    void (*fill)(const cell &stored, const cell &companion, cell *made);
};

/// The columns that are derived of the stored one, in their order; none for most kinds.
QList<column> columns_derived_of(const column &stored);

/// How the cells of these columns are filled; `fill` is null for kinds of which nothing is derived.
derivation derivation_of(column_kind kind);

/// What a count of runs tells together with the time of the last one.
std::string_view meaning_of_runs(qint64 count, qint64 last_run);

} // namespace results

#endif
