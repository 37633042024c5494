#include "conversions.h"

#include <QStringBuilder>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

/// The letter 13 places on, after the last letter from the first on.
char16_t rotated(char16_t letter, char16_t first_letter)
{
    constexpr int half_alphabet = 13;
    const bool is_in_first_half = letter < first_letter + half_alphabet;
    return static_cast<char16_t>(is_in_first_half ? letter + half_alphabet
                                                  : letter - half_alphabet);
}

} // namespace

QString shown_install_date(const QString &install_date)
{
    if (install_date.isEmpty())
        return {};
    const QStringView date = install_date;
    return date.mid(6, 2) % u'/' % date.mid(4, 2) % u'/' % date.mid(0, 4);
}

QString rotated_name(QString name, const bool &is_cancelled)
{
    for (QChar &character : name) {
        if (is_cancelled)
            return {};
        const char16_t code = character.unicode();
        if (code >= u'A' && code <= u'Z')
            character = rotated(code, u'A');
        else if (code >= u'a' && code <= u'z')
            character = rotated(code, u'a');
    }
    return name;
}

quint64 integer_of(const QByteArray &bytes, byte_order order, quint64 maximum,
                   const bool &is_cancelled)
{
    if (order != byte_order::little_endian && order != byte_order::big_endian)
        return 0;
    const bool is_reversed = order == byte_order::little_endian;
    quint64 number = 0;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        if (is_reversed && is_cancelled)
            return 0;
        const auto byte = static_cast<quint8>(bytes[is_reversed ? bytes.size() - 1 - i : i]);
        if (number > (maximum - byte) / 256)
            return 0;
        number = number * 256 + byte;
    }
    return number;
}

qint32 integer_32_of(const QByteArray &bytes, byte_order order, const bool &is_cancelled)
{
    return static_cast<qint32>(
        integer_of(bytes, order, std::numeric_limits<qint32>::max(), is_cancelled));
}

qint64 integer_64_of(const QByteArray &bytes, byte_order order, const bool &is_cancelled)
{
    return static_cast<qint64>(
        integer_of(bytes, order, std::numeric_limits<qint64>::max(), is_cancelled));
}

QString windows_path_of(const QString &path, const QString &source_root_path)
{
    if (path.isEmpty())
        return {};
    QString windows_path = "C:/"_L1 + path.mid(source_root_path.size());
    return windows_path.replace(u'/', u'\\');
}
