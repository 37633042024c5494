#include "unread_keys.h"

#include "hive_precheck.h"
#include "key_check.h"
#include "row_counter.h"

using namespace Qt::StringLiterals;

namespace {

QStringList names_of(const QList<host_tab> &tabs, tab_input input)
{
    QStringList names;
    for (const host_tab &tab : tabs) {
        if (tab.input == input)
            names.append(tab.name);
    }
    return names;
}

QStringList key_paths_of(const QStringList &tab_names)
{
    QStringList key_paths;
    for (const host_tab &tab : tabs_named(tab_names))
        key_paths.append(tab.key_path);
    return key_paths;
}

void append_unread_keys(const source_volume &volume, const QString &hive_path,
                        const QStringList &tab_names, const QString &database_file,
                        QStringList &warnings)
{
    // Rows name their file by its path in the volume.
    const QStringList empty = tables_without_rows(database_file, tab_names, u'/' + hive_path);
    const QString hive_file = volume.root() + hive_path;
    if (empty.isEmpty() || !check_hive_file(hive_file).readable)
        return;
    for (const QString &finding : key_findings(hive_file, key_paths_of(empty)))
        warnings.append(hive_path + ": "_L1 + finding);
}

} // namespace

QStringList unread_key_warnings(const source_volume &volume, const QStringList &accounts,
                                const QList<host_tab> &tabs, const QString &database_file)
{
    QStringList warnings;
    append_unread_keys(volume, software_hive_path, names_of(tabs, tab_input::software_hive),
                       database_file, warnings);
    for (const QString &account : accounts)
        append_unread_keys(volume, user_hive_path(account), names_of(tabs, tab_input::user_hive),
                           database_file, warnings);
    return warnings;
}
