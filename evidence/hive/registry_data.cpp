#include "registry_data.h"

#include "byte_fields.h"

namespace evidence {

namespace {

constexpr qint64 filetime_of_unix_epoch = 116444736000000000;
constexpr qint64 filetime_per_second = 10000000;

} // namespace

QByteArray utf16le(const QString &text)
{
    QByteArray bytes(2 * text.size(), '\0');
    for (qsizetype i = 0; i < text.size(); ++i)
        put_16(bytes, 2 * i, text.at(i).unicode());
    return bytes;
}

QString from_utf16le(const QByteArray &bytes)
{
    QString text(bytes.size() / 2, u'\0');
    for (qsizetype i = 0; i < text.size(); ++i)
        text[i] = QChar(get_16(bytes, 2 * i));
    return text;
}

QByteArray registry_text(const QString &text)
{
    return utf16le(text + u'\0');
}

QByteArray registry_multi_text(const QStringList &texts)
{
    QByteArray data;
    for (const QString &text : texts)
        data += registry_text(text);
    return data + registry_text({});
}

QByteArray registry_dword(quint32 number)
{
    QByteArray data(sizeof number, '\0');
    put_32(data, 0, number);
    return data;
}

QByteArray registry_qword(quint64 number)
{
    QByteArray data(sizeof number, '\0');
    put_64(data, 0, number);
    return data;
}

qint64 filetime_of_unix(qint64 seconds)
{
    return seconds * filetime_per_second + filetime_of_unix_epoch;
}

} // namespace evidence
