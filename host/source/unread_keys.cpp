#include "unread_keys.h"

#include "hive_precheck.h"
#include "key_check.h"

using namespace Qt::StringLiterals;

namespace {

/// The keys that the tabs list, each once: two tabs may list the same.
QList<listed_key> keys_of(const QList<host_tab> &tabs, tab_input input)
{
    QList<listed_key> keys;
    QStringList paths;
    for (const host_tab &tab : tabs) {
        for (const listed_key &key : tab.keys) {
            if (tab.input != input || paths.contains(key.key_path))
                continue;
            paths.append(key.key_path);
            keys.append(key);
        }
    }
    return keys;
}

QStringList warnings_about(const source_volume &volume, const QString &hive_path,
                           const QList<listed_key> &keys)
{
    const QString hive_file = volume.root() + hive_path;
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
    const QList<listed_key> software_keys = keys_of(tabs, tab_input::software_hive);
    if (!software_keys.isEmpty())
        warnings += warnings_about(volume, software_hive_to_read(volume), software_keys);
    const QList<listed_key> users_keys = keys_of(tabs, tab_input::user_hive);
    for (const QString &account : accounts)
        warnings += warnings_about(volume, user_hive_path(account), users_keys);
    return warnings;
}
