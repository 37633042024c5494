#ifndef RUN_LOG_H
#define RUN_LOG_H

#include "reference_run.h"
#include "tab_rows.h"

#include <QString>
#include <QStringList>

namespace test_support {

// What the debug log and the tables of a run must say when its database fails.

/// What Qt says of a statement that could not be prepared, whatever the reason.
extern const QString unprepared;

/// A run in a process of its own, and the messages of its log.
struct logged_run
{
    extraction_outcome outcome;
    QStringList lines;
};

/// Runs the process, its log in a file.
logged_run run_with_log(extraction_process process, const QString &result_folder);

/// The line that a tab writes whose database cannot be opened.
QString opening_failure(const result_tab &tab);

/// The three lines for each row that could not be inserted.
QStringList insert_failures(const result_tab &tab, const QString &error, qint64 rows);

/// The lines between the one that opens a tab's extraction and the one that ends it.
QStringList lines_of_run(const QStringList &lines, const result_tab &tab);

/// How many rows each tab of a run counted, as its events show.
QList<qint64> rows_counted(const QStringList &events);

/// What is wrong with the log of a run over the given tabs, held against what the run counted;
/// empty when nothing is.
QString defect_of_log(const QStringList &lines, const QStringList &events, const QStringList &tabs,
                      const reference_run &reference);

/// A result folder in which an undisturbed run has filled all tables. Throws std::runtime_error
/// when that run is not whole.
QString finished_folder(reference_run &reference);

/// What is wrong with the tables after a run in which as many tabs as given came to their end
/// before the fault; empty when nothing is.
QString defect_of_tables(const reference_run &reference, const QString &database_path,
                         int whole_tabs);

} // namespace test_support

#endif
