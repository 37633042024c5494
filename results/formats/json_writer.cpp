#include "json_writer.h"

#include <QChar>

#include "characters.h"
#include "plain_text.h"

namespace results {

namespace {

bool is_plain(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 0x20 && byte < 0x7f && character != '"' && character != '\\';
}

void append_unit(std::string &out, unsigned unit)
{
    constexpr char hex[] = "0123456789abcdef";
    out += "\\u";
    for (const unsigned shift : {12U, 8U, 4U, 0U})
        out += hex[unit >> shift & 0xfU];
}

void append_escape(std::string &out, char32_t character)
{
    if (character < 0x1'0000) {
        append_unit(out, character);
    } else {
        append_unit(out, QChar::highSurrogate(character));
        append_unit(out, QChar::lowSurrogate(character));
    }
}

void append_special(std::string &out, const char *begin, const char *end, char32_t character)
{
    if (character == U'"' || character == U'\\') {
        out += '\\';
        out += static_cast<char>(character);
    } else if (character == U'\n') {
        out += "\\n";
    } else if (must_be_escaped(character)) {
        append_escape(out, character);
    } else {
        out.append(begin, end);
    }
}

} // namespace

void append_json_string(std::string &out, std::string_view text)
{
    out += '"';
    const char *at = text.data();
    const char *const end = at + text.size();
    while (at != end) {
        const char *begin = at;
        while (at != end && is_plain(*at))
            ++at;
        out.append(begin, at);
        if (at == end)
            break;
        begin = at;
        const char32_t character = next_character(at, end);
        append_special(out, begin, at, character);
    }
    out += '"';
}

bool append_json_value(std::string &out, const cell &value)
{
    std::string scratch;
    const auto [text, is_sql_literal] = plain_form_of(value, scratch);
    const bool is_number = value.is == cell::kind::integer || value.is == cell::kind::real;
    if (value.is == cell::kind::null)
        out += "null";
    else if (is_number && !is_sql_literal)
        out += text;
    else
        append_json_string(out, text);
    return is_sql_literal;
}

bool json_writer::begin(const row_source &source, const QList<int> &places)
{
    m_beginning = "{\"table\":";
    append_json_string(m_beginning, source.name().toStdString());
    m_members.clear();
    for (const int place : places) {
        std::string name;
        append_json_string(name, source.columns()[place].name.toStdString());
        m_members.push_back({place, name, "," + name + ":"});
    }
    return true;
}

bool json_writer::write(const row &of)
{
    std::string &out = m_out.text();
    out += m_beginning;
    m_literals.clear();
    for (const member &each : m_members) {
        out += each.before;
        if (append_json_value(out, cell_at(of, each.place)))
            m_literals += (m_literals.empty() ? "" : ",") + each.name;
    }
    if (!m_literals.empty())
        out += ",\"sql_literals\":[" + m_literals + "]";
    out += "}\n";
    return m_out.flush_large();
}

} // namespace results
