#ifndef TYPED_TEXT_H
#define TYPED_TEXT_H

#include <QByteArrayView>
#include <QString>

#include <optional>

/// Data of a value decoded as its registry type says.
struct typed_text
{
    QString text;
    bool has_replacements = false; ///< whether half of a surrogate pair became U+FFFD
};

/// Decodes the data of a value of the registry type code `type`:
/// - REG_SZ, REG_EXPAND_SZ and REG_LINK are UTF-16LE up to the first zero unit; an odd last byte is
///   dropped;
/// - REG_MULTI_SZ is a list of such texts, which ends with an empty one and is joined by "; ";
/// - REG_DWORD, REG_DWORD_BIG_ENDIAN and REG_QWORD of their own length are decimal numbers.
/// Nothing for any other type or length.
std::optional<typed_text> text_by_type(QByteArrayView data, int type);

#endif
