#ifndef REPORT_WRITER_H
#define REPORT_WRITER_H

#include <QDateTime>
#include <QString>
#include <QStringList>

#include "opened_result.h"
#include "recorded_runs.h"
#include "row_filter.h"
#include "row_writer.h"

namespace results {

/// What a report is made of.
struct report_content
{
    const opened_result &result;
    const recorded_runs &record;
    QStringList tables;  ///< those that are shown
    bool has_all_tables; ///< whether that is all of the result, so that programs can be joined
    row_filter filter;
    QStringList remarks; ///< what the reader has to know before all else
    QString made_by;     ///< program and version
    QDateTime made_at;
};

/// How the writing of a report ended.
struct written_report
{
    bool is_taken = true; ///< false: the sink took no more
    QStringList failures; ///< why rows are missing; empty if none are
    qint64 rows = 0;      ///< of the tables
    qint64 cut_cells = 0; ///< texts that were too long for a page
};

/// Writes the report as one HTML file that needs no other file and asks nobody for anything. It
/// holds the rows, from which its script draws pictures and tables. Keeps one table at a time in
/// memory.
written_report write_report(const report_content &content, const text_sink &sink);

} // namespace results

#endif
