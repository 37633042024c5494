#include "host_tabs.h"

#include <QObject>
#include <QVariant>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

std::optional<tab_input> input_named(const QString &name)
{
    if (name == "software_hive"_L1)
        return tab_input::software_hive;
    if (name == "user_hives"_L1)
        return tab_input::user_hive;
    if (name == "package_folders"_L1)
        return tab_input::package_folder;
    return std::nullopt;
}

std::optional<host_tab> tab_of(const QVariantMap &description)
{
    const QString name = description.value(u"name"_s).toString();
    const auto input = input_named(description.value(u"input"_s).toString());
    if (name.isEmpty() || !input)
        return std::nullopt;
    return host_tab{name, *input, !description.value(u"keys_of_users"_s).toList().isEmpty()};
}

} // namespace

QList<host_tab> tabs_of(const QObject &plugin)
{
    return described_tabs(plugin.property("artifacts").toList());
}

QList<host_tab> described_tabs(const QVariantList &descriptions)
{
    QList<host_tab> tabs;
    for (const QVariant &description : descriptions) {
        const auto tab = tab_of(description.toMap());
        if (!tab)
            return {};
        tabs.append(*tab);
    }
    return tabs;
}

QStringList names_of(const QList<host_tab> &tabs)
{
    QStringList names;
    for (const host_tab &tab : tabs)
        names.append(tab.name);
    return names;
}

QList<host_tab> tabs_named(const QList<host_tab> &tabs, const QStringList &names)
{
    QList<host_tab> named;
    for (const host_tab &tab : tabs) {
        if (names.contains(tab.name))
            named.append(tab);
    }
    return named;
}

QList<host_tab> without_installations_of_users(QList<host_tab> tabs)
{
    for (host_tab &tab : tabs)
        tab.may_read_user_hives = false;
    return tabs;
}

bool reads_user_hives(const QList<host_tab> &tabs)
{
    return std::any_of(tabs.begin(), tabs.end(), [](const host_tab &tab) {
        return tab.input == tab_input::user_hive || tab.may_read_user_hives;
    });
}

bool any_reads(const QList<host_tab> &tabs, tab_input input)
{
    return std::any_of(tabs.begin(), tabs.end(),
                       [input](const host_tab &tab) { return tab.input == input; });
}
