#include "csv_writer.h"

#include <array>

#include "plain_text.h"

namespace results {

namespace {

/// The characters for which a field is quoted; a table, because every character is looked up.
constexpr std::array<bool, 256> special_characters = [] {
    std::array<bool, 256> special{};
    for (const char character : {',', '"', '\r', '\n', '\0'})
        special[static_cast<unsigned char>(character)] = true;
    return special;
}();

bool needs_quotes(std::string_view text)
{
    if (text.empty() || text.front() == ' ' || text.back() == ' ')
        return true;
    for (const char character : text) {
        if (special_characters[static_cast<unsigned char>(character)])
            return true;
    }
    return false;
}

/// What spreadsheets take for the beginning of a formula. OWASP, "CSV Injection".
bool begins_formula(std::string_view text)
{
    constexpr std::string_view beginnings = "=+-@\t\r\n";
    return !text.empty() && beginnings.find(text.front()) != std::string_view::npos;
}

} // namespace

csv_writer::csv_writer(text_sink sink, const QStringList &columns, const csv_options &options)
    : m_out(std::move(sink)), m_columns(columns), m_options(options)
{
    for (const QString &name : columns)
        m_names.push_back(name.toStdString());
}

void csv_writer::write_header()
{
    std::string &out = m_out.text();
    if (m_options.byte_order_mark)
        out += "\xef\xbb\xbf";
    append_field("table");
    for (const std::string &name : m_names) {
        out += ',';
        append_field(name);
    }
    out += ",sql_literals\r\n";
    m_has_header = true;
}

bool csv_writer::begin(const row_source &source, const QList<int> &places)
{
    if (!m_has_header)
        write_header();
    m_table = source.name().toStdString();
    m_places.clear();
    for (const QString &name : std::as_const(m_columns)) {
        const int place = place_of(source.columns(), name);
        m_places.push_back(places.contains(place) ? place : -1);
    }
    return true;
}

void csv_writer::append_field(std::string_view text)
{
    std::string &out = m_out.text();
    if (!needs_quotes(text)) {
        out += text;
        return;
    }
    out += '"';
    for (const char character : text) {
        if (character == '"')
            out += '"';
        out += character;
    }
    out += '"';
}

void csv_writer::append_cell(const cell &value, const std::string &name)
{
    if (value.is == cell::kind::null)
        return;
    const auto [text, is_sql_literal] = plain_form_of(value, m_scratch);
    if (is_sql_literal)
        m_literals += (m_literals.empty() ? "" : " ") + name;
    if (m_options.spreadsheet_safe && value.is == cell::kind::text && begins_formula(text))
        append_field("'" + std::string(text));
    else
        append_field(text);
}

bool csv_writer::write(const row &of)
{
    std::string &out = m_out.text();
    m_literals.clear();
    append_field(m_table);
    for (size_t i = 0; i < m_places.size(); ++i) {
        out += ',';
        append_cell(cell_at(of, m_places[i]), m_names[i]);
    }
    out += ',';
    out += m_literals;
    out += "\r\n";
    return m_out.flush_large();
}

bool csv_writer::finish()
{
    if (!m_has_header)
        write_header();
    return m_out.flush();
}

} // namespace results
