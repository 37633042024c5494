#include "hive_output.h"

#include <algorithm>

namespace {

/// The fewest bytes that a value takes of a hive: its record, and its entry in a list.
constexpr qint64 shortest_value = 36;

/// The most text that the row of such a value has for each of its bytes. Windows allows 255 letters
/// for the name of its key, and the other columns repeat a few hundred bytes.
constexpr qint64 text_for_each_byte = 64;

/// An icon may be listed as hidden and as shown; its names are certain for each of the two.
constexpr qint64 settings = 2;

/// Bytes of the text in UTF-8. Both halves of a surrogate pair take two.
qint64 utf8_length(const QString &text)
{
    int more_than_one = 0;
    for (const QChar character : text) {
        const char16_t unit = character.unicode();
        const bool takes_two = unit >= 0x80;
        const bool takes_three = unit >= 0x800 && (unit & 0xf800) != 0xd800;
        more_than_one += int(takes_two) + int(takes_three);
    }
    return text.size() + more_than_one;
}

qint64 utf8_length(const QStringList &columns)
{
    qint64 length = 0;
    for (const QString &column : columns)
        length += utf8_length(column);
    return length;
}

} // namespace

hive_output::limit hive_output::limit_for(qint64 length)
{
    const limit least;
    return {std::max(least.rows, length / shortest_value),
            std::max(least.text_bytes, length * text_for_each_byte),
            settings * length / shortest_value};
}

hive_output::hive_output(const limit &most, const QStringList &repeated_columns)
    : m_limit(most), m_repeated_bytes(utf8_length(repeated_columns))
{
}

bool hive_output::takes(const QStringList &columns, bool is_certain)
{
    if (!m_is_full) {
        const qint64 text_bytes = m_repeated_bytes + utf8_length(columns);
        m_is_full = m_rows >= m_limit.rows || text_bytes > m_limit.text_bytes - m_text_bytes;
        ++m_rows;
        m_text_bytes += text_bytes;
    }
    if (!m_is_full)
        return true;
    return is_certain && m_certain_rows++ < m_limit.certain_rows;
}
