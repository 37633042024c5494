#ifndef PROGRAMS_VIEW_H
#define PROGRAMS_VIEW_H

#include "made_columns.h"
#include "opened_result.h"

namespace results {

/// What was installed and by whom it was run: one row for each program and account. docs/results.md
/// has the rules by which rows of the tables are joined; what cannot be joined is a program of its
/// own.
struct programs_view
{
    QList<column> columns;
    std::vector<row> rows;
    QString failure; ///< why rows of the tables are missing; empty when all were read
};

/// Makes the view. Keeps what it shows in memory.
programs_view make_programs_view(const opened_result &result);

} // namespace results

#endif
