#include "hive_name.h"

#include "registry_data.h"

#include <algorithm>

namespace evidence {

namespace {

bool fits_latin1(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.unicode() <= 0xff; });
}

} // namespace

hive_name::hive_name(const QString &text)
    : hive_name(fits_latin1(text) ? text.toLatin1() : utf16le(text), fits_latin1(text))
{
}

hive_name::hive_name(const QByteArray &stored, bool compressed)
    : m_stored(stored), m_compressed(compressed)
{
}

hive_name hive_name::utf16(const QString &text)
{
    return {utf16le(text), false};
}

hive_name hive_name::raw(const QByteArray &stored, bool compressed)
{
    return {stored, compressed};
}

hive_name hive_name::lone_surrogate()
{
    return raw(QByteArray("\x00\xd8", 2), false);
}

QString hive_name::text() const
{
    return m_compressed ? QString::fromLatin1(m_stored) : from_utf16le(m_stored);
}

quint32 hive_name::utf16_size() const
{
    return static_cast<quint32>(m_compressed ? 2 * m_stored.size() : m_stored.size());
}

} // namespace evidence
