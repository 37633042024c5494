#include "hive_output.h"

namespace {

qint64 utf8_length(const QString &text)
{
    constexpr char16_t first_of_two_bytes = 0x80;
    constexpr char16_t first_of_three_bytes = 0x800;
    qint64 length = text.size();
    for (const QChar character : text) {
        // The two halves of a character beyond the first plane take four bytes together.
        const bool is_third = character >= first_of_three_bytes && !character.isSurrogate();
        length += (character >= first_of_two_bytes ? 1 : 0) + (is_third ? 1 : 0);
    }
    return length;
}

} // namespace

bool hive_output::takes(const QStringList &columns, bool is_certain)
{
    qint64 text_bytes = 0;
    for (const QString &column : columns)
        text_bytes += utf8_length(column);
    m_is_full =
        m_is_full || m_rows >= m_limit.rows || text_bytes > m_limit.text_bytes - m_text_bytes;
    if (m_is_full && !is_certain)
        return false;
    ++m_rows;
    m_text_bytes += text_bytes;
    return true;
}
