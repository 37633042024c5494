#ifndef REBUILT_HIVE_H
#define REBUILT_HIVE_H

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

#include <deque>
#include <vector>

/// A registry hive made of recovered keys and values, so that a reader of hives can read them.
/// Windows does not use it. It has format version 1.3, in which data of any length stand in one
/// cell.
class rebuilt_hive
{
public:
    rebuilt_hive();

    /// Makes the key at the path below the root, unless it is there, and gives it the FILETIME.
    /// Keys above it that are not there are made too: without values, with the time 0.
    void add_key(const QStringList &path, quint64 last_write);

    /// Adds a value to the key at the path, which is made if it is not there.
    void add_value(const QStringList &path, const QString &name, quint32 type,
                   const QByteArray &data);

    /// Whether the key is there.
    bool has_key(const QStringList &path) const;

    /// The hive file, always the same bytes for the same content.
    QByteArray bytes() const;

private:
    friend class rebuilt_hive_writer;

    struct value
    {
        QString name;
        quint32 type;
        QByteArray data;
    };
    struct key
    {
        QString name;
        quint64 last_write = 0;
        size_t parent = 0;
        std::vector<size_t> subkeys;
        std::vector<value> values;
    };

    size_t key_at(const QStringList &path);

    std::deque<key> m_keys;           ///< the root first, parents before their subkeys
    QHash<QString, size_t> m_by_path; ///< by the names without letter case
};

#endif
