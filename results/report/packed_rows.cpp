#include "packed_rows.h"

#include "characters.h"
#include "json_writer.h"
#include "plain_text.h"

namespace results {

namespace {

constexpr qint64 greatest_exact_number = (qint64(1) << 53) - 1; // of what a script counts with

const char *name_of(column_kind kind)
{
    switch (kind) {
    case column_kind::account:
        return "account";
    case column_kind::install_date:
        return "install_date";
    case column_kind::unix_time:
        return "unix_time";
    case column_kind::utc_time:
        return "utc_time";
    case column_kind::run_count:
        return "run_count";
    case column_kind::number:
        return "number";
    case column_kind::row_id:
        return "row_id";
    default:
        return "text";
    }
}

/// As much of the beginning as fits, and no half character.
std::string_view cut_text(std::string_view text, size_t most)
{
    constexpr auto is_continued = [](char byte) { return (byte & 0xc0) == 0x80; };
    while (most > 0 && is_continued(text[most]))
        --most;
    return text.substr(0, most);
}

/// A text as JSON without "<".
std::string script_json(std::string_view text)
{
    std::string json;
    append_json_string(json, text);
    for (size_t at = json.find('<'); at != std::string::npos; at = json.find('<', at))
        json.replace(at, 1, "\\u003c");
    return json;
}

} // namespace

std::string shown_script_json(const QString &text)
{
    return script_json(escaped(text.toStdString()));
}

packed_rows::packed_rows(row_source &rows, const QList<int> &subjects)
    : m_name(rows.name()), m_title(rows.title()), m_subjects(subjects)
{
    for (const column &each : rows.columns())
        m_columns.push_back({each, {}, {}, {}});
    while (const row *read = rows.next())
        add(*read);
    m_failure = rows.failure();
}

void packed_rows::add(const row &of)
{
    for (size_t place = 0; place < m_columns.size(); ++place) {
        packed_column &packed = m_columns[place];
        const auto next = quint32(packed.values.size());
        const auto [found, is_new] = packed.places.try_emplace(json_of(of.cells[place]), next);
        if (is_new)
            packed.values.push_back(&found->first);
        packed.rows.push_back(found->second);
    }
    ++m_row_count;
}

std::string packed_rows::shown_json(std::string_view text)
{
    if (text.size() <= most_bytes_of_cell)
        return script_json(escaped(text));
    ++m_cut_cells;
    return script_json(escaped(cut_text(text, most_bytes_of_cell)) + "… (" +
                       std::to_string(text.size()) + " bytes)");
}

std::string packed_rows::json_of(const cell &value)
{
    if (value.is == cell::kind::null)
        return "null";
    std::string scratch;
    const auto [text, is_sql_literal] = plain_form_of(value, scratch);
    const bool is_exact = value.is == cell::kind::real || (value.is == cell::kind::integer &&
                                                           value.number <= greatest_exact_number &&
                                                           value.number >= -greatest_exact_number);
    if (is_sql_literal)
        return "{\"sql\":" + shown_json(text) + "}";
    return is_exact ? std::string(text) : shown_json(text);
}

/// Without places, the values stand row by row, or the only one in all rows.
void packed_rows::append_json(std::string &out, const packed_column &packed)
{
    out += "{\"name\":" + shown_script_json(packed.of.name);
    out += ",\"meaning\":" + shown_script_json(packed.of.meaning);
    out += std::string(",\"kind\":\"") + name_of(packed.of.kind) + "\"";
    // A column that nobody can explain is shown, so that nothing of a foreign table is hidden.
    const bool is_shown = packed.of.is_shown || packed.of.meaning.isEmpty();
    out += std::string(",\"isShown\":") + (is_shown ? "true" : "false");
    out += std::string(",\"isDerived\":") + (packed.of.is_derived ? "true" : "false");
    out += ",\"values\":[";
    for (size_t i = 0; i < packed.values.size(); ++i)
        out.append(i == 0 ? "" : ",").append(*packed.values[i]);
    out += "],\"places\":";
    const bool has_places = packed.values.size() > 1 && packed.values.size() < packed.rows.size();
    out += has_places ? "[" : "null";
    for (size_t row = 0; has_places && row < packed.rows.size(); ++row)
        out.append(row == 0 ? "" : ",").append(std::to_string(packed.rows[row]));
    out += has_places ? "]}" : "}";
}

std::string packed_rows::json() const
{
    std::string out = "{\"name\":" + shown_script_json(m_name);
    out += ",\"title\":" + shown_script_json(m_title);
    out += ",\"rows\":" + std::to_string(m_row_count) + ",\"subjects\":[";
    for (qsizetype i = 0; i < m_subjects.size(); ++i)
        out.append(i == 0 ? "" : ",").append(std::to_string(m_subjects[i]));
    out += "],\"columns\":[";
    for (size_t place = 0; place < m_columns.size(); ++place) {
        out += place == 0 ? "\n" : ",\n";
        append_json(out, m_columns[place]);
    }
    return out + "]}";
}

} // namespace results
