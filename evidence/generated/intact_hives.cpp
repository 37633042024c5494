#include "intact_hives.h"

#include "application_keys.h"
#include "hive_builder.h"
#include "hive_damage.h"
#include "user_assist.h"

namespace evidence {

using namespace Qt::StringLiterals;

namespace {

const QString class_id = u"{CEBFF5CD-ACE2-4F4F-9178-9926F41749EA}"_s;
const QString count_key = user_assist_key + u'\\' + class_id + u"\\Count"_s;
const QString start_panel_key = hide_desktop_icons_key + u"\\NewStartPanel"_s;

constexpr int longest_name = 16383; // that Windows allows a value

QString icon_id(int number)
{
    return u"{20D04FE0-3AEA-1069-A2D8-%1}"_s.arg(number, 12, 10, QChar(u'0'));
}

/// A value of each table that a user's hive fills.
void add_user_findings(hive_builder &hive, const QString &name)
{
    hive.key(count_key).binary(rotated_name(name),
                               user_assist_data(7, filetime_of_unix(1600000000)));
    hive.key(compatibility_store_key).binary(u"C:\\"_s + name, "data");
    hive.key(start_panel_key).dword(name, 1);
    hive.key(name_space_key).key(name).text(u""_s, u"Icon of "_s + name);
}

QByteArray icons_behind_dummies()
{
    hive_builder hive;
    hive_key &dummies = hive.key(hide_desktop_icons_key + u"\\!"_s);
    for (int i = 0; i < 60000; ++i)
        dummies.dword(icon_id(i), 1);
    hive.key(start_panel_key).dword(u"{this}"_s, 1);
    hive.key(name_space_key + u"\\{this}"_s).text(u""_s, u"This PC"_s);
    return hive.bytes();
}

QByteArray icons_in_two_lists()
{
    hive_builder hive;
    for (int i = 0; i < 20000; ++i) {
        hive.key(hide_desktop_icons_key + u"\\ClassicStartMenu"_s).dword(icon_id(i), 0);
        hive.key(start_panel_key).dword(icon_id(i), 1);
        hive.key(name_space_key).add_key(icon_id(i)).text(u""_s, u"Icon "_s + QString::number(i));
    }
    return hive.bytes();
}

/// Many lists of icons name the same one, which has many names.
QByteArray lists_of_one_icon()
{
    hive_builder hive;
    for (int i = 0; i < 5000; ++i)
        hive.key(hide_desktop_icons_key).add_key(QString::number(i)).dword(class_id, 1);
    for (int i = 0; i < 50; ++i)
        hive.key(name_space_key + u'\\' + class_id)
            .text(QString::number(i), u"name "_s + QString::number(i));
    return hive.bytes();
}

QByteArray programs_behind_drives()
{
    hive_builder hive;
    hive_key &store = hive.key(compatibility_store_key);
    for (int i = 0; i < 32; ++i)
        store.binary(u"C:\\"_s.repeated(longest_name / 3 - i), "data");
    for (int i = 0; i < 300; ++i)
        store.binary(u"C:\\a%1 C:\\b C:/c"_s.arg(i), "data");
    for (int i = 0; i < 54; ++i)
        store.binary(u"C:\\Program Files\\Program %1.exe"_s.arg(i), "data");
    return hive.bytes();
}

/// The values have no data, but say that these stand elsewhere.
QByteArray empty_values(const QString &key_path, quint32 stored_offset)
{
    hive_builder hive;
    hive_key &key = hive.key(key_path);
    constexpr int values = 60000;
    for (int i = 0; i < values; ++i)
        key.binary(u"Value "_s + QString::number(i), {});
    hive_damage damage(hive.bytes());
    for (int i = 0; i < values; ++i)
        damage.data_size(key.cells_of_value(i).value, 0)
            .data_cell(key.cells_of_value(i).value, qint64(stored_offset) + 0x1000);
    return damage.bytes();
}

/// Each application stands in a list of its own, and the lists in an index of indexes.
QByteArray applications_in_single_lists()
{
    constexpr int keys = 5000;
    constexpr int lists_of_an_index = 500;
    hive_builder hive;
    hive_key &parent = hive.key(uninstall_key);
    QList<const hive_key *> applications;
    for (int i = 0; i < keys; ++i)
        applications.append(
            &parent.add_key(QString::number(i)).text(u"DisplayName"_s, QString::number(i)));
    hive_damage damage(hive.bytes());
    QList<qint64> lists;
    QList<qint64> indexes;
    for (const hive_key *application : std::as_const(applications)) {
        lists.append(damage.add_list("li", {application->cells().key}).last_cell());
        if (lists.size() == lists_of_an_index) {
            indexes.append(damage.add_list("ri", lists).last_cell());
            lists.clear();
        }
    }
    damage.subkey_list(parent.cells().key, damage.add_list("ri", indexes).last_cell());
    return damage.bytes();
}

QByteArray values_of_one_cell()
{
    hive_builder hive;
    hive_key &key = hive.key(registered_applications_key);
    constexpr int values = 20000;
    key.text(u"0"_s, QString(499, u't'));
    for (int i = 1; i < values; ++i)
        key.text(QString::number(i), u"own data"_s);
    hive_damage damage(hive.bytes());
    for (int i = 1; i < values; ++i)
        damage.data_size(key.cells_of_value(i).value, 1000)
            .data_cell(key.cells_of_value(i).value, key.cells_of_value(0).data);
    return damage.bytes();
}

QByteArray very_many_applications()
{
    hive_builder hive;
    hive_key &parent = hive.key(uninstall_key_32);
    for (int i = 0; i < 65000; ++i)
        parent.add_key(u"{%1}"_s.arg(i))
            .last_write_unix(1500000000 + i)
            .text(u"DisplayName"_s, u"Application %1"_s.arg(i))
            .text(u"DisplayVersion"_s, QString::number(i));
    return hive.bytes();
}

QByteArray very_many_entries()
{
    hive_builder hive;
    for (int i = 0; i < 60000; ++i)
        hive.key(count_key).binary(
            rotated_name(u"P:\\%1.exe"_s.arg(i)),
            user_assist_data(static_cast<quint32>(i), filetime_of_unix(1600000000 + i)));
    return hive.bytes();
}

QByteArray very_many_programs()
{
    hive_builder hive;
    for (int i = 0; i < 60000; ++i)
        hive.key(compatibility_store_key).binary(u"D:\\%1.exe"_s.arg(i), "data");
    return hive.bytes();
}

QByteArray longest_names(QChar letter)
{
    hive_builder hive;
    for (int i = 0; i < 300; ++i) {
        const QString number = QString::number(i);
        add_user_findings(hive, QString(longest_name - number.size(), letter) + number);
    }
    return hive.bytes();
}

/// Key names of 255 letters, each entry's row repeating one.
QByteArray entries_of_long_class_ids()
{
    hive_builder hive;
    for (int i = 0; i < 20; ++i) {
        hive_key &count = hive.key(user_assist_key)
                              .add_key(QString(253, u'中') + QString::number(i))
                              .key(u"Count"_s);
        for (int entry = 0; entry < 2000; ++entry)
            count.binary(QString::number(entry), {});
    }
    return hive.bytes();
}

QByteArray large_data(quint32 minor_version)
{
    hive_builder hive;
    hive.minor_version(minor_version);
    for (int i = 0; i < 20; ++i)
        hive.key(registered_applications_key)
            .text(QString::number(i), QString(500000 + i, QChar(u'a' + i)));
    return hive.bytes();
}

QByteArray deep_tree()
{
    hive_builder hive;
    hive_key *key = &hive.key(count_key);
    for (int level = 0; level < 30000; ++level)
        key = &key->add_key(u"k"_s).binary(QString::number(level), "12345678");
    return hive.bytes();
}

QByteArray wide_trees()
{
    hive_builder hive;
    for (int i = 0; i < 30; ++i) {
        for (int j = 0; j < 30; ++j) {
            hive_key &key = hive.key(count_key + u"\\%1\\%2"_s.arg(i).arg(j));
            for (int value = 0; value < 20; ++value)
                key.binary(QString::number(value), "12345678");
        }
    }
    return hive.bytes();
}

QByteArray of_every_list_kind(quint32 minor_version)
{
    hive_builder hive;
    hive.minor_version(minor_version);
    const QList<subkey_list> kinds{subkey_list::li, subkey_list::lf, subkey_list::lh,
                                   subkey_list::ri};
    for (const subkey_list kind : kinds) {
        hive_key &key =
            hive.key(count_key).add_key(QString::number(static_cast<int>(kind))).list_kind(kind);
        for (int i = 0; i < 3000; ++i)
            key.add_key(QString::number(i)).binary(QString::number(i), QByteArray(i, 'x'));
    }
    return hive.bytes();
}

QList<intact_hive> shapes_of_software()
{
    const hive_kind software = hive_kind::software;
    const QString registered = u"registered_apps"_s;
    const auto empty = [](quint32 offset) {
        return [offset] { return empty_values(registered_applications_key, offset); };
    };
    return {
        {u"5,000 applications, each in a list of its own"_s, software, u"install_apps_64"_s,
         applications_in_single_lists},
        {u"65,000 applications"_s, software, u"install_apps_32"_s, very_many_applications},
        {u"60,000 empty values at offset 0"_s, software, registered, empty(0)},
        {u"60,000 empty values at no offset"_s, software, registered, empty(0xffffffff)},
        {u"20,000 values that share 1,000 bytes"_s, software, registered, values_of_one_cell},
        {u"values of 1 MB in one cell, version 1.3"_s, software, registered,
         [] { return large_data(3); }},
        {u"values of 1 MB in blocks, version 1.4"_s, software, registered,
         [] { return large_data(4); }},
        {u"values of 1 MB in blocks, version 1.5"_s, software, registered,
         [] { return large_data(5); }},
        {u"values of 1 MB in blocks, version 1.6"_s, software, registered,
         [] { return large_data(6); }},
    };
}

QList<intact_hive> shapes_of_users()
{
    const hive_kind user = hive_kind::user;
    const QString entries = u"previously_executed_apps"_s;
    const QString programs = u"third_party_applications"_s;
    const QString icons = u"hidden_desktop_icons_app"_s;
    QList<intact_hive> shapes{
        {u"an icon behind 60,000 dummies"_s, user, icons, icons_behind_dummies},
        {u"20,000 icons in two lists"_s, user, icons, icons_in_two_lists},
        {u"5,000 lists of one icon with 50 names"_s, user, icons, lists_of_one_icon},
        {u"programs behind names made of drives"_s, user, programs, programs_behind_drives},
        {u"60,000 programs"_s, user, programs, very_many_programs},
        {u"60,000 empty programs at offset 0"_s, user, programs,
         [] { return empty_values(compatibility_store_key, 0); }},
        {u"60,000 empty entries at no offset"_s, user, entries,
         [] { return empty_values(count_key, 0xffffffff); }},
        {u"60,000 entries"_s, user, entries, very_many_entries},
        {u"entries of long class ids"_s, user, entries, entries_of_long_class_ids},
        {u"30,000 keys one below the other"_s, user, entries, deep_tree},
        {u"trees of keys"_s, user, entries, wide_trees},
    };
    for (const QString &table : {entries, programs, icons}) {
        shapes.append({u"the longest names in one byte a letter, "_s + table, user, table,
                       [] { return longest_names(u'é'); }});
        shapes.append({u"the longest names in two bytes a letter, "_s + table, user, table,
                       [] { return longest_names(u'中'); }});
    }
    for (const quint32 version : {3U, 4U, 5U, 6U})
        shapes.append({u"lists of every kind in a hive of version 1.%1"_s.arg(version), user,
                       entries, [version] { return of_every_list_kind(version); }});
    return shapes;
}

} // namespace

QList<intact_hive> intact_hives()
{
    return shapes_of_software() + shapes_of_users();
}

} // namespace evidence
