#ifndef KEY_CHECK_H
#define KEY_CHECK_H

#include <QList>
#include <QString>
#include <QStringList>

/// What is listed of one key: its subkeys down to some level, and the values of some levels. Level
/// 0 is the key itself.
struct listed_key
{
    QString key_path;      ///< below the root, "\" between keys
    int first_value_level; ///< from here on values are listed as well
    int last_level;        ///< nothing is listed below this

    static constexpr int all_levels = 1 << 20; ///< as last_level: no level is the last
};

/// Whether libhivex opens the regular file as a registry hive. The whole file is read.
bool opens_as_hive(const QString &hive_file);

/// What prevents the keys from being listed completely: a few findings for each key, none when
/// everything is readable or absent. One sister whose name cannot be decoded is enough to hide a
/// key. If a hive has the same lists read again and again, only its beginning is checked, because
/// the plug-in itself tells where it stops reading such a hive.
QStringList key_findings(const QString &hive_file, const QList<listed_key> &keys);

#endif
