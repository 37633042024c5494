#ifndef MADE_COLUMNS_H
#define MADE_COLUMNS_H

#include <QString>

#include <vector>

#include "column.h"

namespace results {

/// A column that stands in no database.
column made_column(const QString &name, const QString &meaning,
                   column_kind kind = column_kind::text, bool is_shown = true);

/// The column of a time in Unix seconds, and the one of the same time in UTC.
QList<column> made_time_columns(const QString &name, const QString &meaning);

/// Fills the two cells of such columns; 0 is no time.
void set_time(cell *seconds_and_text, qint64 unix_seconds);

/// Rows that are in memory.
class memory_rows : public row_source
{
public:
    memory_rows(const QString &name, const QString &title, const QList<column> &columns,
                std::vector<row> rows)
        : m_name(name), m_title(title), m_columns(columns), m_rows(std::move(rows))
    {
    }

    QString name() const override { return m_name; }
    QString title() const override { return m_title; }
    const QList<column> &columns() const override { return m_columns; }
    const row *next() override { return m_next < m_rows.size() ? &m_rows[m_next++] : nullptr; }

private:
    QString m_name;
    QString m_title;
    QList<column> m_columns;
    std::vector<row> m_rows;
    size_t m_next = 0;
};

} // namespace results

#endif
