#include "typed_text.h"

#include <QStringList>
#include <QtEndian>

using namespace Qt::StringLiterals;

namespace {

// The registry's type codes.
enum registry_type
{
    reg_sz = 1,
    reg_expand_sz = 2,
    reg_dword = 4,
    reg_dword_big_endian = 5,
    reg_link = 6,
    reg_multi_sz = 7,
    reg_qword = 11
};

QString utf16_of(QByteArrayView data)
{
    // Qt would hand the null pointer of an empty view to memcpy.
    if (data.size() < 2)
        return QString();
    QString text(data.size() / 2, Qt::Uninitialized);
    qFromLittleEndian<quint16>(data.data(), text.size(), text.data());
    return text;
}

/// Such halves are no text that a table could hold.
typed_text without_lone_surrogates(QString text)
{
    typed_text result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (!text.at(i).isSurrogate())
            continue;
        const bool is_pair =
            text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (is_pair) {
            ++i;
            continue;
        }
        text[i] = QChar(QChar::ReplacementCharacter);
        result.has_replacements = true;
    }
    result.text = text;
    return result;
}

QString until_zero(const QString &text)
{
    const qsizetype end = text.indexOf(QChar::Null);
    return end < 0 ? text : text.left(end);
}

/// The list ends with an empty text, or with the data.
QString joined_texts(const QString &text)
{
    QStringList texts = text.split(QChar::Null);
    const qsizetype end = texts.indexOf(QString());
    return texts.mid(0, end).join("; "_L1);
}

/// Turns a number as the hive stores it into the machine's order.
template<typename number>
using byte_order_conversion = number (*)(number);

template<typename number>
std::optional<typed_text> decimal(QByteArrayView data, byte_order_conversion<number> converted)
{
    if (data.size() != qsizetype(sizeof(number)))
        return std::nullopt;
    return typed_text{QString::number(converted(qFromUnaligned<number>(data.data())))};
}

} // namespace

std::optional<typed_text> text_by_type(QByteArrayView data, int type)
{
    switch (type) {
    case reg_sz:
    case reg_expand_sz:
    case reg_link:
        return without_lone_surrogates(until_zero(utf16_of(data)));
    case reg_multi_sz:
        return without_lone_surrogates(joined_texts(utf16_of(data)));
    case reg_dword:
        return decimal<quint32>(data, qFromLittleEndian);
    case reg_dword_big_endian:
        return decimal<quint32>(data, qFromBigEndian);
    case reg_qword:
        return decimal<quint64>(data, qFromLittleEndian);
    default:
        return std::nullopt;
    }
}
