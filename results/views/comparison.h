#ifndef COMPARISON_H
#define COMPARISON_H

#include <QString>

#include "made_columns.h"
#include "opened_result.h"

namespace results {

/// One of the two states that are compared: a result, or the rows of one source in it.
struct compared_state
{
    const opened_result *result = nullptr;
    QString source; ///< "Source2"; empty: the rows of all sources
};

/// What differs between two states: one row for each program that was installed, removed, upgraded,
/// newly run or run again, with the rows that this rests on. docs/results.md has the rules.
struct comparison
{
    QList<column> columns;
    std::vector<row> rows;
    QString failure; ///< why rows of a state are missing; empty when all were read
};

/// Compares the earlier state with the later one. Keeps what identifies their rows in memory.
comparison compare(const compared_state &before, const compared_state &after);

} // namespace results

#endif
