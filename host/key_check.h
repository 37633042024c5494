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

    /// What each row repeats that is made from a value.
    enum class repetition
    {
        none,
        first_key,     ///< the name of the value's key of level 1
        further_drives ///< the place of the source, for each drive in the value's name but one
    };

    repetition repeated = repetition::none;

    /// A key of which each value names a key below, whose own values are listed as well; none when
    /// empty.
    QString key_of_named_keys{};

    static constexpr int all_levels = 1 << 20; ///< as last_level: no level is the last
};

/// Whether libhivex opens the regular file as a registry hive. The whole file is read.
bool opens_as_hive(const QString &hive_file);

/// What keeps the keys from being listed as a whole: a few findings for each, none when everything
/// is readable or absent. One name among its sisters that cannot be decoded is enough to hide a
/// key. Wherever the plug-in ends a walk of a key before its end, there is a finding. Takes no
/// longer than the plug-in's own walks of these keys.
QStringList key_findings(const QString &hive_file, const QList<listed_key> &keys);

#endif
