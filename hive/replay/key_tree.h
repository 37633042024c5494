#ifndef KEY_TREE_H
#define KEY_TREE_H

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <vector>

/// The keys of a hive and what tells whether one was changed, without the hive. Whatever of the
/// hive cannot be read is left out; each cell is read once, so that a forged hive has no more keys
/// than cells.
class key_tree
{
public:
    /// A key. Its subkeys have the numbers from `first_subkey` on.
    struct key
    {
        quint32 parent = 0;
        quint32 first_subkey = 0;
        quint32 subkey_count = 0;
        quint32 name_begin = 0; ///< in the names of all keys
        quint32 name_size = 0;
        quint64 last_write = 0; ///< a FILETIME
        quint64 values = 0;     ///< a hash of all values, their names, types and data
    };

    static constexpr quint32 root = 0;

    /// A tree without keys.
    key_tree() = default;

    /// Reads the hive file with these bytes.
    explicit key_tree(QByteArrayView hive);

    /// How many keys there are; they are numbered from the root on.
    quint32 count() const { return static_cast<quint32>(m_keys.size()); }
    const key &at(quint32 number) const { return m_keys[number]; }
    QString name_of(quint32 number) const;

    /// The path below the root, with backslashes between the names; empty for the root.
    QString path_of(quint32 number) const;

private:
    friend class key_tree_reader;

    std::vector<key> m_keys;
    QByteArray m_names; ///< of all keys, in UTF-8
};

#endif
