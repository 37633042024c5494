#ifndef HIVE_NAME_H
#define HIVE_NAME_H

#include <QByteArray>
#include <QString>

namespace evidence {

/// The name of a registry key or value together with the way it is stored in the hive.
class hive_name
{
public:
    /// Stored as Windows stores it: in Latin-1 when every character fits, else in UTF-16LE.
    hive_name(const QString &text);

    /// Stored in UTF-16LE even when Latin-1 would do.
    static hive_name utf16(const QString &text);

    /// Stored as the given bytes, valid or not; `compressed` is what the flag says: Latin-1.
    static hive_name raw(const QByteArray &stored, bool compressed);

    /// Half of a surrogate pair, which Windows takes and libhivex refuses.
    static hive_name lone_surrogate();

    /// The bytes of the name, and whether they are flagged as Latin-1.
    const QByteArray &stored() const { return m_stored; }
    bool compressed() const { return m_compressed; }

    /// The name as text, read back from the stored bytes.
    QString text() const;

    /// The size in bytes that the name has, or would have, in UTF-16.
    quint32 utf16_size() const;

private:
    hive_name(const QByteArray &stored, bool compressed);

    QByteArray m_stored;
    bool m_compressed;
};

} // namespace evidence

#endif
