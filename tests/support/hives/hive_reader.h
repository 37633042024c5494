#ifndef HIVE_READER_H
#define HIVE_READER_H

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <hivex.h>
#include <memory>

namespace test_support {

/// A value as libhivex reads it.
struct read_value
{
    QString name;
    quint32 type;
    QByteArray data;

    bool operator==(const read_value &other) const
    {
        return name == other.name && type == other.type && data == other.data;
    }
};

/// Reads a hive file through libhivex, opened as the plug-in opens it, to check hives against.
class hive_reader
{
public:
    explicit hive_reader(const QString &path);

    /// False when libhivex refused the file; every other operation then finds nothing.
    bool is_open() const { return m_hive != nullptr; }

    /// The node handle of a key below the root; 0 when there is none. The empty path is the root.
    size_t node(const QString &path) const;

    /// The names of a key's subkeys in the hive's order; empty when libhivex refuses the list.
    QStringList subkeys(const QString &path) const;

    /// The handles of a key's subkeys in the hive's order.
    QList<size_t> subkey_nodes(size_t node) const;

    /// The name of a key.
    QString name(size_t node) const;

    /// The key's values in the hive's order; empty when libhivex refuses them.
    QList<read_value> values(const QString &path) const;

    /// The handles of a key's values in the hive's order.
    QList<size_t> value_handles(size_t node) const;

    /// The key's last-write time as a FILETIME; -1 when libhivex refuses it.
    qint64 last_write(const QString &path) const;

private:
    read_value value(size_t handle) const;

    std::unique_ptr<hive_h, int (*)(hive_h *)> m_hive;
};

} // namespace test_support

#endif
