#include "value_text.h"

#include <QtEndian>

#include <utility>

namespace {

QString without_zero_bytes(char *begin, qsizetype length)
{
    char *end = begin;
    int all_bits = 0;
    for (const char *byte = begin; byte != begin + length; ++byte) {
        all_bits |= *byte;
        *end = *byte;
        end += *byte == '\0' ? 0 : 1;
    }
    // Latin-1 is much faster, and ASCII is the same in every local encoding.
    const bool is_ascii = (all_bits & 0x80) == 0;
    return is_ascii ? QString::fromLatin1(begin, end - begin)
                    : QString::fromLocal8Bit(begin, end - begin);
}

/// Does the same for ASCII text in UTF-16 with zeros only behind its end, which nearly all texts of
/// a registry are. Null for any other data.
QString plain_text(const char *begin, qsizetype length)
{
    if (length % 2 != 0)
        return {};
    while (length > 0 && begin[length - 1] == '\0' && begin[length - 2] == '\0')
        length -= 2;
    QString text(length / 2, Qt::Uninitialized);
    qFromLittleEndian<quint16>(begin, text.size(), text.data());
    ushort all_bits = 0;
    bool has_zero = false;
    for (const QChar character : std::as_const(text)) {
        all_bits |= character.unicode();
        has_zero |= character.isNull();
    }
    return all_bits < 0x80 && !has_zero ? text : QString();
}

} // namespace

QString text_of_data(char *begin, qsizetype length)
{
    QString text = plain_text(begin, length);
    return text.isNull() ? without_zero_bytes(begin, length) : text;
}
