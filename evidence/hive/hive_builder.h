#ifndef HIVE_BUILDER_H
#define HIVE_BUILDER_H

#include "hive_key.h"

#include <QByteArray>
#include <QString>
#include <deque>

namespace evidence {

/// Writes a registry hive file byte by byte, without the library that reads it. Keys and values
/// are listed in the order in which they were added, unless sort_subkeys() is called.
///
/// A hive, and one that claims more values than it has:
///
///     hive_builder hive;
///     hive_key &editor = hive.key(u"Microsoft\\Windows\\CurrentVersion\\Uninstall\\Editor"_s);
///     editor.text(u"DisplayName"_s, u"Editor 2.1"_s).dword(u"NoModify"_s, 1);
///     editor.value(hive_name::utf16(u"Odd"_s), 99, "any bytes").last_write_unix(1700000000);
///     hive.key(u"RegisteredApplications"_s).text(u"Editor"_s, u"Software\\Editor"_s);
///     hive.root().list_kind(subkey_list::li).add_key(hive_name::lone_surrogate());
///     hive.write_to(folder.filePath(u"SOFTWARE"_s));
///     hive_damage damage(hive.bytes());
///     damage.value_count(hive_builder::offset_of(editor), 4);
///     write_file(folder.filePath(u"DAMAGED"_s), damage.bytes());
class hive_builder
{
public:
    hive_builder();
    hive_builder(const hive_builder &) = delete;
    hive_builder &operator=(const hive_builder &) = delete;

    /// The root key, which every hive has.
    hive_key &root() { return m_keys.front(); }

    /// Makes the key at `path` below the root unless it is there, see hive_key::key.
    hive_key &key(const QString &path) { return root().key(path); }

    /// Sets the format's minor version (5 by default); below 4 there are no "db" records and long
    /// data stand in one cell.
    hive_builder &minor_version(quint32 version);

    /// Lists the subkeys of the keys there are by now as Windows does: by upper-case name.
    hive_builder &sort_subkeys();

    /// The hive file. Each call lays it out anew, always to the same bytes for the same content.
    QByteArray bytes();

    /// Writes bytes() to a file; throws std::runtime_error when that fails.
    void write_to(const QString &path);

    /// The file offset of the key's cell, as of the last bytes().
    static qint64 offset_of(const hive_key &key) { return key.cells().key; }

private:
    std::deque<hive_key> m_keys;
    quint32 m_minor_version = 5;
};

} // namespace evidence

#endif
