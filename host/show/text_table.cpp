#include "text_table.h"

#include <algorithm>

#include "characters.h"
#include "plain_text.h"
#include "text_width.h"

using namespace results;

namespace {

constexpr size_t rows_to_measure = 200;
constexpr int most_of_cell = 100; ///< columns
constexpr int least_of_cell = 8;  ///< columns, below which a table is of no use
constexpr int gap = 2;

bool is_number(column_kind kind)
{
    return kind == column_kind::number || kind == column_kind::row_id ||
           kind == column_kind::run_count || kind == column_kind::unix_time;
}

/// A cell as a short text. Of long ones only the beginning is looked at.
std::string shown_cell(const cell &value)
{
    constexpr size_t most_bytes = 1024;
    std::string scratch;
    std::string_view text = plain_text(value, scratch);
    size_t end = std::min(text.size(), most_bytes);
    while (end < text.size() && end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0U) == 0x80)
        --end;
    return cut_to_width(escaped(text.substr(0, end)), most_of_cell);
}

void append_blanks(std::string &out, int count)
{
    out.append(size_t(std::max(0, count)), ' ');
}

} // namespace

bool text_table::begin(const row_source &source, const QList<int> &places)
{
    const bool is_taken = end_source();
    std::string &out = m_out.text();
    if (m_has_source)
        out += '\n';
    out += escaped(source.name().toStdString());
    if (!source.title().isEmpty())
        out += ": " + source.title().toStdString();
    out += '\n';
    m_columns.clear();
    for (const int place : places) {
        const column &of = source.columns()[place];
        m_columns.push_back({place, escaped(of.name.toStdString()), is_number(of.kind), 0});
    }
    m_has_source = true;
    m_is_begun = false;
    m_rows = 0;
    return is_taken;
}

text_table::line_cells text_table::cells_of(const row &of) const
{
    line_cells cells;
    for (const shown_column &each : m_columns)
        cells.push_back(shown_cell(cell_at(of, each.place)));
    return cells;
}

bool text_table::write(const row &of)
{
    ++m_rows;
    if (m_is_begun) {
        append_cells(cells_of(of));
        return m_out.flush_large();
    }
    m_first_rows.push_back(cells_of(of));
    if (m_first_rows.size() == rows_to_measure)
        begin_rows();
    return m_out.flush_large();
}

void text_table::measure()
{
    for (size_t i = 0; i < m_columns.size(); ++i) {
        shown_column &of = m_columns[i];
        of.width = width_of(of.name);
        for (const line_cells &cells : m_first_rows)
            of.width = std::max(of.width, width_of(cells[i]));
    }
}

/// The width of the table if no column is wider than `most`.
int text_table::total_width(int most) const
{
    int total = -gap;
    for (const shown_column &of : m_columns)
        total += std::min(of.width, most) + gap;
    return total;
}

void text_table::fit()
{
    if (m_width == 0)
        return;
    int most = most_of_cell;
    while (most > least_of_cell && total_width(most) > m_width)
        --most;
    m_is_list = total_width(most) > m_width;
    int left = m_width - total_width(most);
    for (shown_column &of : m_columns) {
        const int more = std::clamp(of.width - most, 0, std::max(0, left));
        of.width = std::min(of.width, most) + more;
        left -= more;
    }
}

void text_table::begin_rows()
{
    m_is_begun = true;
    m_is_list = false;
    measure();
    fit();
    if (!m_is_list) {
        line_cells names;
        line_cells rules;
        for (const shown_column &of : m_columns) {
            names.push_back(of.name);
            rules.emplace_back(size_t(of.width), '-');
        }
        append_line(names);
        append_line(rules);
    }
    for (const line_cells &cells : m_first_rows)
        append_cells(cells);
    m_first_rows.clear();
}

void text_table::append_cells(const line_cells &cells)
{
    if (m_is_list)
        append_list(cells);
    else
        append_line(cells);
}

void text_table::append_line(const line_cells &cells)
{
    std::string line;
    for (size_t i = 0; i < cells.size(); ++i) {
        const shown_column &of = m_columns[i];
        const std::string text = cut_to_width(cells[i], of.width);
        const int blanks = of.width - width_of(text);
        append_blanks(line, of.is_number ? blanks : 0);
        line += text;
        append_blanks(line, of.is_number ? gap : blanks + gap);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    m_out.text() += line + '\n';
}

void text_table::append_list(const line_cells &cells)
{
    std::string &out = m_out.text();
    out += "--\n";
    for (size_t i = 0; i < cells.size(); ++i) {
        if (!cells[i].empty())
            out += cut_to_width(m_columns[i].name + ": " + cells[i], m_width) + '\n';
    }
}

bool text_table::end_source()
{
    if (!m_has_source)
        return true;
    if (!m_is_begun && !m_first_rows.empty())
        begin_rows();
    const std::string count = std::to_string(m_rows);
    m_out.text() +=
        m_rows == 0 ? "no rows\n" : "(" + count + (m_rows == 1 ? " row)\n" : " rows)\n");
    return m_out.flush_large();
}

bool text_table::finish()
{
    const bool is_taken = end_source();
    return m_out.flush() && is_taken;
}
