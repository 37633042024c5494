#ifndef TIME_LINE_H
#define TIME_LINE_H

#include <memory>
#include <vector>

#include "opened_result.h"
#include "row_cursor.h"
#include "row_filter.h"

namespace results {

/// The places of the columns of a time_line.
namespace time_line_column {

enum place : int
{
    time,
    time_utc,
    precision, ///< "second", or "day" for the days that installers write
    event,     ///< what the time tells
    subject,
    account,
    table,
    row_id,
    detail, ///< what else is told of the row: path or count
    source_file,
    source,
    letter, ///< "m", "a" or "b": what comes closest among the times of a file
    column_count
};

} // namespace time_line_column

/// Every time of every row of some tables, in their order, the oldest first. What is kept in memory
/// is where each time stands; the rows are read when they are asked for.
class time_line : public row_source
{
public:
    /// Only rows that the filter lets pass, and of these only times that lie within it.
    time_line(const opened_result &result, const QStringList &tables, const row_filter &filter);
    ~time_line() override;

    QString name() const override { return QStringLiteral("timeline"); }
    QString title() const override;
    const QList<column> &columns() const override { return m_columns; }
    const row *next() override;
    QString failure() const override { return m_failure; }

private:
    /// Where a time stands.
    struct timed
    {
        qint64 time;
        qint64 row_id;
        int table;
        int column;
    };
    struct table_reader;

    void collect(int table, const row_filter &filter);
    void look_up_rows();
    void make_row(const timed &entry, const row &of, const table_layout &layout);

    const opened_result &m_result;
    QList<column> m_columns;
    std::vector<std::unique_ptr<table_reader>> m_tables;
    std::vector<timed> m_times;
    size_t m_next = 0;
    size_t m_batch_end = 0;
    row m_row;
    QString m_failure;
};

} // namespace results

#endif
