#ifndef REGISTRY_DATA_H
#define REGISTRY_DATA_H

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace evidence {

/// The value types that Windows defines; a hive may hold any other number.
enum registry_type : quint32
{
    reg_none = 0,
    reg_sz = 1,
    reg_expand_sz = 2,
    reg_binary = 3,
    reg_dword = 4,
    reg_dword_big_endian = 5,
    reg_link = 6,
    reg_multi_sz = 7,
    reg_qword = 11
};

/// The text's UTF-16 code units in little-endian order, lone surrogates included, no terminator.
QByteArray utf16le(const QString &text);

/// The text of such bytes; an odd last byte is dropped.
QString from_utf16le(const QByteArray &bytes);

/// The data of a text value: UTF-16LE with its terminator.
QByteArray registry_text(const QString &text);

/// The data of a REG_MULTI_SZ value: every text with its terminator, and one more at the end.
QByteArray registry_multi_text(const QStringList &texts);

/// The data of a number: little-endian, 4 or 8 bytes.
QByteArray registry_dword(quint32 number);
QByteArray registry_qword(quint64 number);

/// The FILETIME (100 ns intervals since 1601-01-01 UTC) of a time in Unix seconds.
qint64 filetime_of_unix(qint64 seconds);

} // namespace evidence

#endif
