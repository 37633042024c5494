#include "time_line.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "made_columns.h"
#include "time_texts.h"
#include "told_time.h"

using namespace Qt::StringLiterals;

namespace results {

namespace {

QList<column> columns_of_time_line()
{
    QList<column> columns = made_time_columns(u"time"_s, u"when"_s);
    columns += {
        made_column(u"precision"_s, u"how exact the time is: second or day"_s, column_kind::text,
                    false),
        made_column(u"event"_s, u"what the time tells"_s),
        made_column(u"subject"_s, u"what the row is about"_s),
        made_column(u"system_account"_s, u"account of the row"_s, column_kind::account),
        made_column(u"row_table"_s, u"table of the row"_s),
        made_column(u"row_id"_s, u"number of the row in its table"_s, column_kind::number),
        made_column(u"detail"_s, u"path, version or count of the row"_s, column_kind::text, false),
        made_column(u"source_file"_s, u"path of the evidence file"_s, column_kind::path, false),
        made_column(u"source_count_name"_s, u"number of the source"_s, column_kind::text, false),
        made_column(u"file_time"_s, u"what comes closest among the times of a file: m, a or b"_s,
                    column_kind::text, false),
    };
    return columns;
}

std::string_view letter_of(file_time time)
{
    switch (time) {
    case file_time::accessed:
        return "a";
    case file_time::created:
        return "b";
    default:
        return "m";
    }
}

void set_copy(cell &into, const cell *from)
{
    if (from == nullptr)
        into.set_null();
    else
        into = *from;
}

const cell *cell_named(const row &of, const table_layout &layout, const QString &name)
{
    const int place = place_of(layout.columns(), name);
    return place < 0 ? nullptr : &cell_at(of, place);
}

/// The first of these columns that the table has.
const cell *detail_of(const row &of, const table_layout &layout)
{
    for (const QString &name : {u"display_version"_s, u"runcount"_s, u"windows_path"_s}) {
        if (const cell *found = cell_named(of, layout, name))
            return found;
    }
    return nullptr;
}

} // namespace

/// A table, and its rows that the next times stand in.
struct time_line::table_reader
{
    explicit table_reader(table_layout of) : layout(std::move(of)) {}

    /// The next of the rows; null if it is not the one of that id, which is gone then.
    const row *row_of(qint64 id)
    {
        if (pending == nullptr)
            pending = rows->next();
        if (pending == nullptr || pending->id != id)
            return nullptr;
        return std::exchange(pending, nullptr);
    }

    table_layout layout;
    std::unique_ptr<row_cursor> rows;
    const row *pending = nullptr;
};

time_line::time_line(const opened_result &result, const QStringList &tables,
                     const row_filter &filter)
    : m_result(result), m_columns(columns_of_time_line())
{
    m_row.cells.resize(time_line_column::column_count);
    for (const QString &table : tables) {
        m_tables.push_back(std::make_unique<table_reader>(result.layout_of(table)));
        collect(int(m_tables.size()) - 1, filter);
    }
    std::sort(m_times.begin(), m_times.end(), [](const timed &a, const timed &b) {
        return std::tie(a.time, a.table, a.row_id, a.column) <
               std::tie(b.time, b.table, b.row_id, b.column);
    });
}

time_line::~time_line() = default;

QString time_line::title() const
{
    return u"every time of every row"_s;
}

void time_line::collect(int table, const row_filter &filter)
{
    row_cursor rows(m_result, m_tables[size_t(table)]->layout);
    const QList<column> &columns = rows.columns();
    while (const row *read = rows.next()) {
        if (filter.is_set() && !filter.matches(*read, columns))
            continue;
        for (int place = 0; place < int(columns.size()); ++place) {
            const auto time = told_time(cell_at(*read, place), columns[place].kind);
            if (time && *time >= filter.since.value_or(*time) &&
                *time <= filter.until.value_or(*time))
                m_times.push_back({*time, read->id, table, place});
        }
    }
    if (!rows.failure().isEmpty())
        m_failure = rows.failure();
}

/// Prepares the reading of the rows in which the next times stand.
void time_line::look_up_rows()
{
    constexpr size_t times_of_batch = 1000;
    m_batch_end = std::min(m_next + times_of_batch, m_times.size());
    for (size_t table = 0; table < m_tables.size(); ++table) {
        std::vector<qint64> ids;
        for (size_t i = m_next; i < m_batch_end; ++i) {
            if (m_times[i].table == int(table))
                ids.push_back(m_times[i].row_id);
        }
        table_reader &reader = *m_tables[table];
        reader.pending = nullptr;
        reader.rows = std::make_unique<row_cursor>(m_result, reader.layout, std::move(ids));
    }
}

const row *time_line::next()
{
    while (m_next < m_times.size() && m_failure.isEmpty()) {
        if (m_next == m_batch_end)
            look_up_rows();
        const timed &entry = m_times[m_next++];
        table_reader &reader = *m_tables[size_t(entry.table)];
        if (const row *read = reader.row_of(entry.row_id)) {
            make_row(entry, *read, reader.layout);
            return &m_row;
        }
        m_failure = reader.rows->failure();
    }
    return nullptr;
}

void time_line::make_row(const timed &entry, const row &of, const table_layout &layout)
{
    namespace at = time_line_column;
    std::vector<cell> &cells = m_row.cells;
    const column &told = layout.columns()[entry.column];
    const bool is_day = told.kind == column_kind::install_date;
    cells[at::time].set_number(entry.time);
    const std::string utc = utc_text(entry.time);
    cells[at::time_utc].set_text(is_day ? utc.substr(0, utc.find('T')) : utc);
    cells[at::precision].set_text(is_day ? "day" : "second");
    cells[at::event].set_text(told.meaning.toStdString());
    cells[at::subject] = layout.subject_of(of);
    set_copy(cells[at::account], cell_named(of, layout, u"system_account"_s));
    cells[at::table].set_text(layout.name().toStdString());
    cells[at::row_id].set_number(of.id);
    set_copy(cells[at::detail], detail_of(of, layout));
    set_copy(cells[at::source_file], cell_named(of, layout, u"source_file"_s));
    set_copy(cells[at::source], cell_named(of, layout, u"source_count_name"_s));
    cells[at::letter].set_text(letter_of(told.time));
}

} // namespace results
