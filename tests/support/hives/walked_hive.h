#ifndef WALKED_HIVE_H
#define WALKED_HIVE_H

#include "files.h"
#include "hive_builder.h"
#include "hive_damage.h"

#include <QFile>
#include <QTemporaryDir>
#include <hivex.h>
#include <memory>

namespace test_support {

using unique_hive = std::unique_ptr<hive_h, int (*)(hive_h *)>;

/// The handle by which libhivex knows a key.
inline unsigned long node_of(const evidence::hive_key &key)
{
    return static_cast<unsigned long>(key.cells().key);
}

/// The handle by which libhivex knows what lies in a cell.
inline unsigned long handle_at(qint64 cell)
{
    return static_cast<unsigned long>(cell);
}

/// The same as node_of(), as the walkers carry it.
inline int handle_of(const evidence::hive_key &key)
{
    return static_cast<int>(key.cells().key);
}

/// A hive under construction together with the walker that walks it.
template<typename walker_type>
class walked_hive
{
public:
    evidence::hive_builder hive;
    walker_type walker;

    /// Where the hive is written for a walk.
    QString path() const { return m_folder.filePath(QStringLiteral("hive")); }

    /// The hive's bytes as they are now, to be damaged.
    evidence::hive_damage damage() { return evidence::hive_damage(hive.bytes()); }

    /// Writes the hive and walks it; returns what start_registry_parse() returns.
    int walk(const QString &key_path, bool read_key_values)
    {
        return walk(damage(), key_path, read_key_values);
    }

    /// Walks the damaged hive instead.
    int walk(const evidence::hive_damage &damaged, const QString &key_path, bool read_key_values)
    {
        evidence::write_file(path(), damaged.bytes());
        return walker.start_registry_parse(path(), key_path, read_key_values);
    }

    /// Writes the hive and opens it, for operations that are called by hand.
    unique_hive opened()
    {
        hive.write_to(path());
        return {hivex_open(QFile::encodeName(path()).constData(), HIVEX_OPEN_WRITE), hivex_close};
    }

private:
    QTemporaryDir m_folder;
};

} // namespace test_support

#endif
