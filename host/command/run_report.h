#ifndef RUN_REPORT_H
#define RUN_REPORT_H

#include <QStringList>

#include "exit_code.h"
#include "extraction_run.h"
#include "row_counter.h"

/// A finished or cancelled run: what the plug-in told of it, and what the database holds.
struct finished_run
{
    run_outcome outcome;
    row_counts counts;    ///< what the run added to its tabs
    qint64 rows_kept = 0; ///< rows of earlier runs that these tabs keep besides
    qsizetype tab_count = 0;
    bool is_any_left_out = false; ///< whether a warning told of something that was not read
    QString database_file;
    /// Why the rows at `database_file` may not be those of the run. If there is a reason, no rows
    /// are counted.
    QStringList output_problems;
    QString deleted_problem;  ///< why the deleted records are not in their database
    QStringList log_problems; ///< why not all lines may be in the debug log
};

/// What went wrong, one line each; none after a run without failures.
QStringList problems_of(const finished_run &run);

/// One line for each reading that ended early, and a last one with their number. No lines when
/// every hive was read to its end.
QStringList early_end_lines(const finished_run &run);

/// The lines for standard output: rows of each tab, their total and, last, the database's path.
QStringList report_lines(const finished_run &run);

/// Prints the report and the problems. Returns the exit code of the program.
exit_code report_run(const finished_run &run);

#endif
