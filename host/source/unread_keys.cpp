#include "unread_keys.h"

#include "hive_precheck.h"
#include "key_check.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// Each key once, with all the levels at which one of the tabs lists it.
QList<listed_key> each_once(const QList<listed_key> &keys)
{
    QList<listed_key> once;
    for (const listed_key &key : keys) {
        const auto same = std::find_if(once.begin(), once.end(), [&key](const listed_key &other) {
            return other.key_path == key.key_path;
        });
        if (same == once.end()) {
            once.append(key);
            continue;
        }
        same->first_value_level = std::min(same->first_value_level, key.first_value_level);
        same->last_level = std::max(same->last_level, key.last_level);
    }
    return once;
}

/// The keys of the machine's hive that the tabs list.
QList<listed_key> software_keys_of(const QList<host_tab> &tabs)
{
    QList<listed_key> keys;
    for (const host_tab &tab : tabs) {
        if (tab.input == tab_input::software_hive)
            keys += tab.keys;
    }
    return each_once(keys);
}

/// The keys of each user's hive that the tabs list.
QList<listed_key> user_keys_of(const QList<host_tab> &tabs)
{
    QList<listed_key> keys;
    for (const host_tab &tab : tabs) {
        if (tab.input == tab_input::user_hive)
            keys += tab.keys;
        keys += tab.keys_of_users;
    }
    return each_once(keys);
}

QStringList warnings_about(const source_volume &volume, const QString &hive_path,
                           const QList<listed_key> &keys)
{
    const QString hive_file = volume.file_of(hive_path);
    if (keys.isEmpty() || !check_hive_file(hive_file).readable)
        return {};
    QStringList warnings = key_findings(hive_file, keys);
    for (QString &warning : warnings)
        warning.prepend(hive_path + ": "_L1);
    return warnings;
}

} // namespace

QStringList unread_key_warnings(const source_volume &volume, const QStringList &accounts,
                                const QList<host_tab> &tabs)
{
    QStringList warnings;
    const QList<listed_key> software_keys = software_keys_of(tabs);
    if (!software_keys.isEmpty())
        warnings += warnings_about(volume, software_hive_to_read(volume), software_keys);
    const QList<listed_key> users_keys = user_keys_of(tabs);
    for (const QString &account : accounts)
        warnings += warnings_about(volume, volume.user_hive(account), users_keys);
    return warnings;
}
