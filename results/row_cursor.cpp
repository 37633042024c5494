#include "row_cursor.h"

#include <limits>

using namespace Qt::StringLiterals;

namespace results {

namespace {

constexpr size_t rows_of_batch = 1000;
constexpr size_t bytes_of_batch = 4 << 20;
constexpr size_t bytes_kept_of_cell = 4 << 10;

/// A statement that reads the id and the stored columns of a table.
QByteArray statement_for(const table_layout &layout, const QByteArray &which)
{
    QByteArray text = "SELECT rowid";
    for (const int place : layout.stored())
        text += ", " + quoted(layout.columns()[place].name);
    return text + " FROM " + quoted(layout.name()) + " WHERE " + which;
}

} // namespace

row_cursor::row_cursor(const opened_result &result, const table_layout &layout)
    : m_layout(layout),
      m_statement(result.connection().prepare(statement_for(layout, "rowid >= ? ORDER BY rowid"))),
      m_first_of_batch(std::numeric_limits<qint64>::min())
{
}

row_cursor::row_cursor(const opened_result &result, const table_layout &layout,
                       std::vector<qint64> ids)
    : m_layout(layout),
      m_statement(result.connection().prepare(statement_for(layout, "rowid = ?"))),
      m_is_listed(true),
      m_ids(std::move(ids))
{
}

const row *row_cursor::next()
{
    if (m_next == m_batch_size) {
        if (m_is_finished)
            return nullptr;
        read_batch();
    }
    return m_next < m_batch_size ? &m_batch[m_next++] : nullptr;
}

void row_cursor::read_batch()
{
    m_next = 0;
    m_batch_size = 0;
    m_batch_bytes = 0;
    if (m_is_listed)
        read_listed();
    else
        read_following();
    m_statement.reset();
}

void row_cursor::read_following()
{
    m_statement.bind(1, m_first_of_batch);
    while (!is_batch_full()) {
        if (!m_statement.step()) {
            m_is_finished = true;
            note_failure();
            return;
        }
        read_row();
    }
    const qint64 last = m_batch[m_batch_size - 1].id;
    m_is_finished = last == std::numeric_limits<qint64>::max();
    m_first_of_batch = m_is_finished ? last : last + 1;
}

void row_cursor::read_listed()
{
    while (!is_batch_full() && m_next_id < m_ids.size() && m_failure.isEmpty()) {
        m_statement.bind(1, m_ids[m_next_id++]);
        if (m_statement.step())
            read_row();
        else
            note_failure();
        m_statement.reset();
    }
    m_is_finished = m_next_id == m_ids.size() || !m_failure.isEmpty();
}

row &row_cursor::next_free_row()
{
    if (m_batch_size == m_batch.size()) {
        m_batch.emplace_back();
        m_batch.back().cells.resize(size_t(m_layout.columns().size()));
    }
    return m_batch[m_batch_size++];
}

void row_cursor::read_row()
{
    row &read = next_free_row();
    read.id = m_statement.number(0);
    int number = 1;
    for (const int place : m_layout.stored()) {
        cell &value = read.cells[size_t(place)];
        if (value.bytes.capacity() > bytes_kept_of_cell)
            std::string().swap(value.bytes);
        m_statement.read(number++, value);
        m_batch_bytes += value.bytes.size();
    }
    m_layout.derive(read);
}

bool row_cursor::is_batch_full() const
{
    return m_batch_size == rows_of_batch || m_batch_bytes >= bytes_of_batch;
}

void row_cursor::note_failure()
{
    if (m_statement.code() != SQLITE_DONE)
        m_failure = u"table %1 cannot be read to its end: %2"_s.arg(
            m_layout.name(), QString::fromUtf8(sqlite3_errstr(m_statement.code())));
}

} // namespace results
