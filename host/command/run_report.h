#ifndef RUN_REPORT_H
#define RUN_REPORT_H

#include <QStringList>

#include "exit_code.h"
#include "extraction_run.h"
#include "row_counter.h"

/// A finished or cancelled run, as the plug-in told it and as the database holds it.
struct finished_run
{
    run_outcome outcome;
    row_counts counts;    ///< of the tabs of the run
    qint64 rows_kept = 0; ///< rows of earlier runs that these tabs were to keep
    QString database_file;
    /// Why the rows at `database_file` may not be those of the run; none are counted then.
    QStringList output_problems;
    QStringList log_problems; ///< why not all lines may be in the debug log
};

/// What went wrong, one line each; none after a run without failures.
QStringList problems_of(const finished_run &run);

/// What the plug-in left out of its tables, one line each and then how many there are; none when
/// every hive was read to its end.
QStringList early_end_lines(const finished_run &run);

/// The lines for standard output: rows of each tab, their total and, last, the database's path.
QStringList report_lines(const finished_run &run);

/// Prints the report and the problems and tells how the program is to end.
exit_code report_run(const finished_run &run);

#endif
