#include "host_tabs.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QString explorer_key(const QString &name)
{
    return u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\"_s + name;
}

listed_key values_of(const QString &key_path)
{
    return {key_path, 0, 0};
}

listed_key values_of_subkeys_of(const QString &key_path)
{
    return {key_path, 1, 1};
}

/// Class ids, whose own values count for nothing, and everything below their subkeys.
listed_key user_assist()
{
    return {explorer_key(u"UserAssist"_s), 2, listed_key::all_levels};
}

} // namespace

const QList<host_tab> &host_tabs()
{
    static const QList<host_tab> tabs{
        {u"install_apps_64"_s,
         tab_input::software_hive,
         {values_of_subkeys_of(u"Microsoft\\Windows\\CurrentVersion\\Uninstall"_s)}},
        {u"install_apps_32"_s,
         tab_input::software_hive,
         {values_of_subkeys_of(u"WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall"_s)}},
        {u"uninstall_apps"_s, tab_input::user_hive, {user_assist()}},
        {u"registered_apps"_s, tab_input::software_hive, {values_of(u"RegisteredApplications"_s)}},
        {u"metro_apps"_s, tab_input::package_folder, {}},
        {u"previously_executed_apps"_s, tab_input::user_hive, {user_assist()}},
        {u"third_party_applications"_s,
         tab_input::user_hive,
         {values_of(
             u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\AppCompatFlags\\Compatibility Assistant\\Store"_s)}},
        // The icons, and the keys that name them.
        {u"hidden_desktop_icons_app"_s,
         tab_input::user_hive,
         {values_of_subkeys_of(explorer_key(u"HideDesktopIcons"_s)),
          values_of_subkeys_of(explorer_key(u"Desktop\\NameSpace"_s))}},
    };
    return tabs;
}

QStringList host_tab_names()
{
    QStringList names;
    for (const host_tab &tab : host_tabs())
        names.append(tab.name);
    return names;
}

QList<host_tab> tabs_named(const QStringList &names)
{
    QList<host_tab> tabs;
    for (const host_tab &tab : host_tabs()) {
        if (names.contains(tab.name))
            tabs.append(tab);
    }
    return tabs;
}

bool any_reads(const QList<host_tab> &tabs, tab_input input)
{
    return std::any_of(tabs.begin(), tabs.end(),
                       [input](const host_tab &tab) { return tab.input == input; });
}
