#include "sample_rows.h"

#include "application_keys.h"
#include "user_assist.h"

#include <QVariantMap>

namespace evidence {

using namespace Qt::StringLiterals;

namespace {

struct sample
{
    QString account; ///< where the artefact is a user's
    QString name;
};

const sample samples[] = {
    {u"ann"_s, u"one"_s},
    {u"ann"_s, u"two"_s},
    {u"bob"_s, u"three"_s},
};
static_assert(std::size(samples) == sample_row_count);

void add_user_assist_entry(hive_builder &hive, const QString &name)
{
    hive.key(user_assist_key + u"\\{CEBFF5CD-ACE2-4F4F-9178-9926F41749EA}\\Count"_s)
        .binary(rotated_name(name + u"\\uninstall.exe"_s),
                user_assist_data(5, filetime_of_unix(1600000000)));
}

void add_icon(hive_builder &hive, const QString &name)
{
    const QString class_id = u'{' + name + u'}';
    hive.key(hide_desktop_icons_key + u"\\NewStartPanel"_s).dword(class_id, 1);
    hive.key(name_space_key + u'\\' + class_id).text(u""_s, name);
}

/// A value of the key that is read, or of a key that many levels below it.
void add_value(hive_builder &hive, const QVariantMap &key, const QString &name)
{
    QString path = key.value(u"path"_s).toString();
    const int level = key.value(u"first_value_level"_s).toInt();
    for (int above = 0; above < level; ++above)
        path += u'\\' + name;
    hive.key(path).text(level == 0 ? name : u"DisplayName"_s, name);
}

void add_record(hive_builder &hive, const QString &table, const QVariantMap &key,
                const QString &name)
{
    const QString path = key.value(u"path"_s).toString();
    if (path == user_assist_key && table != "previously_executed_apps"_L1)
        return; // its entries serve two tables
    if (path == user_assist_key)
        add_user_assist_entry(hive, name);
    else if (path == compatibility_store_key)
        hive.key(path).binary(u"C:\\"_s + name + u".exe"_s, "data");
    else if (path == hide_desktop_icons_key)
        add_icon(hive, name);
    else
        add_value(hive, key, name);
}

} // namespace

void add_sample_rows(evidence_volume &volume, const QVariantList &artifacts)
{
    for (const QVariant &description : artifacts) {
        const QVariantMap artifact = description.toMap();
        const QString input = artifact.value(u"input"_s).toString();
        const QString table = artifact.value(u"name"_s).toString();
        const QVariantMap key = artifact.value(u"keys"_s).toList().value(0).toMap();
        for (const auto &[account, name] : samples) {
            if (input == "package_folders"_L1)
                volume.package(account, name);
            else
                add_record(input == "user_hives"_L1 ? volume.user(account) : volume.software(),
                           table, key, name);
        }
    }
}

} // namespace evidence
