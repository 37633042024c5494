#include "recovered_keys.h"

#include <QObject>
#include <QVariant>

using namespace Qt::StringLiterals;

namespace {

struct tab_rule
{
    QLatin1StringView tab;
    bool is_of_keys;
    QLatin1StringView group_column;
    QLatin1StringView name_column;
    bool is_rotated;
};

constexpr tab_rule rules[] = {
    {"install_apps_64"_L1, true, {}, "parent_name"_L1, false},
    {"install_apps_32"_L1, true, {}, "parent_name"_L1, false},
    {"uninstall_apps"_L1, false, "class_id"_L1, "exename"_L1, true},
    {"registered_apps"_L1, false, {}, "key_name"_L1, false},
    {"previously_executed_apps"_L1, false, "class_id"_L1, "exename"_L1, true},
    {"third_party_applications"_L1, false, {}, "windows_path"_L1, false},
    {"hidden_desktop_icons_app"_L1, false, {}, {}, false},
};

const tab_rule *rule_of(const QString &tab)
{
    for (const tab_rule &rule : rules) {
        if (rule.tab == tab)
            return &rule;
    }
    return nullptr;
}

QList<wanted_key> keys_in(const QVariant &described)
{
    QList<wanted_key> keys;
    for (const QVariant &each : described.toList()) {
        const QVariantMap key = each.toMap();
        keys.append({key.value(u"path"_s).toString(), key.value(u"first_value_level"_s).toInt(),
                     key.value(u"last_level"_s).toInt()});
    }
    return keys;
}

/// Tabs that are filled from the same key have one entry.
void add(QList<recovered_key> &keys, const QString &tab, const tab_rule &rule,
         const QList<wanted_key> &described, bool is_of_users)
{
    if (described.isEmpty())
        return;
    for (recovered_key &known : keys) {
        if (known.is_of_users == is_of_users &&
            known.key.path.compare(described.first().path, Qt::CaseInsensitive) == 0) {
            known.tabs.append(tab);
            return;
        }
    }
    keys.append({described.first(),
                 described.mid(1),
                 {tab},
                 {rule.is_of_keys, rule.group_column, rule.name_column, rule.is_rotated},
                 is_of_users});
}

} // namespace

QList<recovered_key> recovered_keys(const QObject &plugin, const QStringList &tabs,
                                    bool with_installations_of_users)
{
    QList<recovered_key> keys;
    for (const QVariant &each : plugin.property("artifacts").toList()) {
        const QVariantMap described = each.toMap();
        const QString tab = described.value(u"name"_s).toString();
        const tab_rule *rule = rule_of(tab);
        if (rule == nullptr || !tabs.contains(tab))
            continue;
        const bool is_of_users = described.value(u"input"_s).toString() == "user_hives"_L1;
        add(keys, tab, *rule, keys_in(described.value(u"keys"_s)), is_of_users);
        if (with_installations_of_users)
            add(keys, tab, *rule, keys_in(described.value(u"keys_of_users"_s)), true);
    }
    return keys;
}

QList<wanted_key> wanted_of(const QList<recovered_key> &keys, bool is_of_users)
{
    QList<wanted_key> wanted;
    for (const recovered_key &each : keys) {
        if (each.is_of_users == is_of_users)
            wanted += each.lookups + QList{each.key};
    }
    return wanted;
}

QStringList tabs_of(const QList<recovered_key> &keys, QStringList tabs)
{
    QStringList of_keys;
    for (const recovered_key &key : keys)
        of_keys += key.tabs;
    tabs.removeIf([&](const QString &tab) { return !of_keys.contains(tab); });
    return tabs;
}
