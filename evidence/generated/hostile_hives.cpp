#include "hostile_hives.h"

#include "application_keys.h"
#include "hive_builder.h"
#include "hive_damage.h"
#include "regf_format.h"

namespace evidence {

using namespace Qt::StringLiterals;

namespace {

const QString class_id = u"{20D04FE0-3AEA-1069-A2D8-08002B30309D}"_s;

constexpr qsizetype long_data_size = 7000000; // libhivex refuses 8,000,001 bytes
constexpr int long_value_list = 70000;        // as long as leaves room for the data in 10 MB
constexpr int longest_value_list = 110000;    // libhivex refuses more
constexpr int long_subkey_list = 60000;       // it refuses 70,001
constexpr int shared_value_count = 30000;

/// A key whose values are read, and a name of a value that becomes part of a record.
struct value_place
{
    const char *name;
    hive_kind kind;
    QString key;
    QString value;
};

QList<value_place> value_places()
{
    return {
        {"of an application", hive_kind::software, uninstall_key + u"\\App"_s, u"DisplayName"_s},
        {"of RegisteredApplications", hive_kind::software, registered_applications_key, u"App"_s},
        {"of UserAssist", hive_kind::user, user_assist_key + u'\\' + class_id + u"\\Count"_s,
         u"P:\\n.rkr"_s},
        {"of the Store", hive_kind::user, compatibility_store_key, u"C:\\a.exe"_s},
        {"of HideDesktopIcons", hive_kind::user, hide_desktop_icons_key + u"\\NewStartPanel"_s,
         class_id},
        {"of an icon's name", hive_kind::user, name_space_key + u'\\' + class_id, u""_s},
    };
}

/// The key, in a hive where an icon's name is looked up.
hive_key &place_in(hive_builder &hive, const value_place &place)
{
    hive.minor_version(3); // data of any size in one cell
    if (place.key.startsWith(name_space_key))
        hive.key(hide_desktop_icons_key + u"\\NewStartPanel"_s).dword(class_id, 1);
    return hive.key(place.key);
}

void list_first_value_everywhere(hive_damage &damage, const hive_key &key, int count)
{
    for (int i = 0; i < count; ++i)
        damage.offset_entry(key.cells().value_list, i, key.cells_of_value(0).value);
}

QByteArray one_long_value_listed_often(const value_place &place)
{
    hive_builder hive;
    hive_key &key = place_in(hive, place);
    key.binary(place.value, QByteArray(long_data_size, 'x'));
    for (int i = 1; i < long_value_list; ++i)
        key.binary(u"v"_s, {});
    hive_damage damage(hive.bytes());
    list_first_value_everywhere(damage, key, long_value_list);
    return damage.bytes();
}

QByteArray values_sharing_long_data(const value_place &place)
{
    hive_builder hive;
    hive_key &key = place_in(hive, place);
    key.binary(place.value, QByteArray(long_data_size, 'x'));
    for (int i = 1; i < shared_value_count; ++i)
        key.binary(place.value, {});
    hive_damage damage(hive.bytes());
    const qint64 data = key.cells_of_value(0).data;
    for (int i = 1; i < shared_value_count; ++i) {
        const qint64 value = key.cells_of_value(i).value;
        damage.data_size(value, static_cast<quint32>(long_data_size - i)).data_cell(value, data);
    }
    return damage.bytes();
}

/// The key gets `count` values whose data libhivex collects for megabytes and then refuses.
QByteArray with_broken_big_data(hive_builder &hive, hive_key &key, const QString &name, int count)
{
    hive.minor_version(5);
    key.binary(name, QByteArray(long_data_size, 'x'));
    for (int i = 1; i < count; ++i)
        key.binary(u"v"_s, {});
    hive_damage damage(hive.bytes());
    const value_cells cells = key.cells_of_value(0);
    damage.offset_entry(cells.block_list, cells.blocks.size() - 1, regf::first_bin + 4);
    list_first_value_everywhere(damage, key, count);
    return damage.bytes();
}

QByteArray values_sharing_broken_big_data(const value_place &place)
{
    hive_builder hive;
    return with_broken_big_data(hive, place_in(hive, place), place.value, long_value_list);
}

QByteArray one_long_name_listed_often(const value_place &place)
{
    hive_builder hive;
    hive_key &key = place_in(hive, place);
    key.binary(hive_name::raw(QByteArray(65535, '\xe9'), true), "data");
    for (int i = 1; i < longest_value_list; ++i)
        key.binary(u"v"_s, {});
    hive_damage damage(hive.bytes());
    list_first_value_everywhere(damage, key, longest_value_list);
    return damage.bytes();
}

/// The longer the hive, the more may be read again.
QByteArray padded(hive_damage &damage)
{
    constexpr qsizetype padded_length = 10000000;
    const qsizetype padding = padded_length - damage.bytes().size();
    return damage.add_last_cell(QByteArray(padding, 'p')).bytes();
}

/// The parent has very many subkeys, all of which have the values of the first.
QByteArray keys_sharing_values(const QString &parent, const QString &below, const QString &value)
{
    hive_builder hive;
    hive_key &first = hive.key(parent + u"\\0"_s + below);
    for (int i = 0; i < shared_value_count; ++i)
        first.binary(value, "data");
    QList<const hive_key *> others;
    for (int i = 1; i < long_subkey_list; ++i)
        others.append(&hive.key(parent).add_key(QString::number(i)));
    hive_damage damage(hive.bytes());
    const hive_key &top = hive.key(parent + u"\\0"_s);
    for (const hive_key *other : std::as_const(others)) {
        if (below.isEmpty())
            damage.value_list(other->cells().key, first.cells().value_list)
                .value_count(other->cells().key, shared_value_count);
        else
            damage.share_subkeys(other->cells().key, top.cells().key);
    }
    return damage.bytes();
}

QByteArray keys_sharing_subkeys()
{
    constexpr int keys = 40000; // there are two lists of them
    hive_builder hive;
    hive_key &parent = hive.key(user_assist_key);
    QList<const hive_key *> parts;
    for (int i = 0; i < keys; ++i)
        parts.append(&parent.add_key(QString::number(i)));
    for (int i = 0; i < keys; ++i)
        hive.key(user_assist_key + u"\\0"_s).add_key(QString::number(i));
    hive_damage damage(hive.bytes());
    for (const hive_key *part : std::as_const(parts))
        damage.share_subkeys(part->cells().key, parts.constFirst()->cells().key);
    return damage.bytes();
}

QByteArray one_key_listed_often(const QString &parent)
{
    hive_builder hive;
    hive_key &key = hive.key(parent);
    key.list_kind(subkey_list::li);
    for (int i = 0; i < long_subkey_list; ++i)
        key.add_key(u"k"_s).binary(u"DisplayName"_s, "data");
    hive_damage damage(hive.bytes());
    const hive_key &first = key.key(u"k"_s);
    damage.list_only(key.cells().subkey_list, first.cells().key);
    return damage.bytes();
}

QByteArray very_deep_tree()
{
    constexpr int depth = 80000;
    hive_builder hive;
    hive_key *key = &hive.key(user_assist_key + u'\\' + class_id);
    for (int level = 0; level < depth; ++level)
        key = &key->add_key(u"k"_s);
    key->binary(u"P:\\n.rkr"_s, "data");
    return hive.bytes();
}

/// Each level has two keys, and both have the keys of the next level: 2^60 ways down.
QByteArray keys_sharing_subkeys_at_each_level()
{
    constexpr int levels = 60;
    hive_builder hive;
    hive_key *key = &hive.key(user_assist_key + u'\\' + class_id);
    std::vector<std::pair<const hive_key *, const hive_key *>> pairs;
    for (int level = 0; level < levels; ++level) {
        const hive_key *second = &key->add_key(u"b"_s).binary(u"v"_s, "data");
        key = &key->add_key(u"a"_s).binary(u"v"_s, "data");
        pairs.emplace_back(key, second);
    }
    pairs.pop_back(); // those below have no subkeys to share
    hive_damage damage(hive.bytes());
    for (const auto &[first, second] : pairs)
        damage.share_subkeys(second->cells().key, first->cells().key);
    return damage.bytes();
}

/// Adds an index that lists one list in all its places.
qint64 add_index_of(hive_damage &damage, qint64 list, int places)
{
    return damage.add_list("ri", QList<qint64>(places, list)).last_cell();
}

/// Adds an index of many empty lists.
qint64 add_busy_index(hive_damage &damage)
{
    return add_index_of(damage, damage.add_list("li", {}).last_cell(), 999);
}

/// Adds an index of one key, which libhivex finds behind 68,931 empty lists: it reads 70,000.
qint64 add_slow_list(hive_damage &damage, qint64 busy_index, qint64 key)
{
    const qint64 list_of_key = damage.add_list("li", {key}).last_cell();
    return damage.add_list("ri", QList<qint64>(69, busy_index) << list_of_key).last_cell();
}

/// An index of indexes of indexes of empty lists: 1000^20 ways down, and no key anywhere.
QByteArray indexes_without_keys(const QString &parent)
{
    hive_builder hive;
    const hive_key &key = hive.key(parent);
    hive_damage damage(hive.bytes());
    qint64 list = damage.add_list("li", {}).last_cell();
    for (int level = 0; level < 20; ++level)
        list = add_index_of(damage, list, 1000);
    damage.subkey_list(key.cells().key, list).subkey_count(key.cells().key, 1);
    return damage.bytes();
}

/// Many keys share a long chain of keys, each of which stands behind empty lists.
QByteArray chain_behind_empty_lists()
{
    constexpr int keys = 500;
    constexpr int links = 1000;
    hive_builder hive;
    QList<const hive_key *> parents;
    for (int i = 0; i < keys; ++i)
        parents.append(&hive.key(user_assist_key).add_key(QString::number(i)));
    QList<const hive_key *> chain;
    for (int i = 0; i < links; ++i)
        chain.append(&hive.key(u"chain"_s).add_key(u"c"_s));
    hive_damage damage(hive.bytes());
    const qint64 busy_index = add_busy_index(damage);
    for (const hive_key *link : std::as_const(chain)) {
        const qint64 list = add_slow_list(damage, busy_index, link->cells().key);
        for (const hive_key *parent : std::as_const(parents))
            damage.subkey_list(parent->cells().key, list).subkey_count(parent->cells().key, 1);
        parents = {link};
    }
    return padded(damage);
}

void add_icons_with_a_name_each(hive_builder &hive, int icons)
{
    hive_key &hidden = hive.key(hide_desktop_icons_key + u"\\NewStartPanel"_s);
    hive_key &names = hive.key(name_space_key);
    for (int i = 0; i < icons; ++i) {
        const QString id = u"{20D04FE0-3AEA-1069-A2D8-%1}"_s.arg(i, 12, 10, QChar(u'0'));
        hidden.dword(id, 1);
        names.add_key(id).text(u""_s, u"x"_s);
    }
}

QByteArray icons_with_a_name_each()
{
    hive_builder hive;
    add_icons_with_a_name_each(hive, 35000);
    return hive.bytes();
}

/// libhivex looks at each cell whenever it opens the hive.
QByteArray icons_among_very_many_cells()
{
    constexpr int icons = 5000;
    constexpr int cells = 1100000;
    hive_builder hive;
    add_icons_with_a_name_each(hive, icons);
    hive_damage damage(hive.bytes());
    const QByteArray cell = QByteArray(4, '\0') + "\xf8\xff\xff\xff"; // ends one, begins the next
    damage.add_last_cell(cell.repeated(cells) + QByteArray(4, '\0'));
    return damage.cell_size(damage.last_cell(), 8).bytes();
}

QByteArray icons_sharing_many_names()
{
    hive_builder hive;
    hive_key &hidden = hive.key(hide_desktop_icons_key + u"\\NewStartPanel"_s);
    for (int i = 0; i < long_value_list; ++i)
        hidden.dword(class_id, 1);
    for (int i = 0; i < shared_value_count; ++i)
        hive.key(name_space_key + u'\\' + class_id).binary(u""_s, "name");
    return hive.bytes();
}

/// Each entry's row repeats the class id.
QByteArray entries_of_a_long_class_id()
{
    hive_builder hive;
    const auto name = hive_name::raw(QByteArray(65535, 'x'), true);
    hive_key &count = hive.key(user_assist_key).add_key(name).key(u"Count"_s);
    for (int i = 0; i < long_value_list; ++i)
        count.binary(u"n"_s, {});
    return hive.bytes();
}

/// Letters that take three bytes in a table, in as many rows as the hive can list.
QByteArray entries_of_a_chinese_class_id()
{
    constexpr int keys = 20;
    hive_builder hive;
    hive_key &parent = hive.key(user_assist_key).add_key(QString(255, u'中'));
    hive_key &first = parent.add_key(u"0"_s);
    for (int i = 0; i < longest_value_list; ++i)
        first.binary(u"n"_s, {});
    QList<const hive_key *> others;
    for (int i = 1; i < keys; ++i)
        others.append(&parent.add_key(QString::number(i)));
    hive_damage damage(hive.bytes());
    list_first_value_everywhere(damage, first, longest_value_list);
    for (const hive_key *other : std::as_const(others))
        damage.value_list(other->cells().key, first.cells().value_list)
            .value_count(other->cells().key, longest_value_list);
    return padded(damage);
}

/// The place of the source comes into the row once for each drive.
QByteArray programs_named_by_drives()
{
    constexpr int programs = 700;
    hive_builder hive;
    hive_key &store = hive.key(compatibility_store_key);
    store.binary(hive_name::raw(QByteArray("C:/").repeated(21845), true), {});
    for (int i = 1; i < programs; ++i)
        store.binary(u"n"_s, {});
    hive_damage damage(hive.bytes());
    list_first_value_everywhere(damage, store, programs);
    return padded(damage);
}

QByteArray icons_sharing_refused_names()
{
    hive_builder hive;
    hive_key &hidden = hive.key(hide_desktop_icons_key + u"\\NewStartPanel"_s);
    for (int i = 0; i < shared_value_count; ++i)
        hidden.dword(class_id, 1);
    hive_key &names = hive.key(name_space_key + u'\\' + class_id);
    return with_broken_big_data(hive, names, u""_s, shared_value_count);
}

/// Each byte that is no text becomes a letter of three bytes.
QByteArray icons_sharing_a_long_name(char letter)
{
    hive_builder hive;
    hive.minor_version(3); // data of any size in one cell
    hive_key &hidden = hive.key(hide_desktop_icons_key + u"\\NewStartPanel"_s);
    for (int i = 0; i < long_value_list; ++i)
        hidden.dword(class_id, 1);
    hive.key(name_space_key + u'\\' + class_id)
        .binary(u""_s, QByteArray(long_data_size / 2, letter));
    return hive.bytes();
}

QByteArray icons_whose_names_are_long_paths()
{
    hive_builder hive;
    hive_key &hidden = hive.key(hide_desktop_icons_key + u"\\NewStartPanel"_s);
    hidden.dword(hive_name::raw(QByteArray("a\\").repeated(32000), true), 1);
    for (int i = 1; i < longest_value_list; ++i)
        hidden.dword(u"v"_s, 1);
    hive.key(name_space_key + u"\\a"_s);
    hive_damage damage(hive.bytes());
    list_first_value_everywhere(damage, hidden, longest_value_list);
    return damage.bytes();
}

/// The names are the same 32,000 keys deep, each of which stands behind empty lists.
QByteArray icons_whose_names_are_paths_behind_empty_lists()
{
    constexpr int icons = 600;
    hive_builder hive;
    hive_key &hidden = hive.key(hide_desktop_icons_key + u"\\NewStartPanel"_s);
    hidden.dword(hive_name::raw(QByteArray("a\\").repeated(32000), true), 1);
    for (int i = 1; i < icons; ++i)
        hidden.dword(u"v"_s, 1);
    const hive_key &names = hive.key(name_space_key);
    const hive_key &name = hive.key(name_space_key + u"\\a"_s);
    hive_damage damage(hive.bytes());
    list_first_value_everywhere(damage, hidden, icons);
    const qint64 list = add_slow_list(damage, add_busy_index(damage), name.cells().key);
    for (const hive_key *key : {&names, &name})
        damage.subkey_list(key->cells().key, list).subkey_count(key->cells().key, 1);
    return padded(damage);
}

QList<hostile_hive> hives_with_hostile_values()
{
    using shape = QByteArray (*)(const value_place &);
    const QList<std::pair<const char *, shape>> shapes{
        {"one long value listed 70,000 times", one_long_value_listed_often},
        {"30,000 values with parts of the same long data", values_sharing_long_data},
        {"70,000 values with the same broken big data", values_sharing_broken_big_data},
        {"one long value name listed 110,000 times", one_long_name_listed_often},
    };
    QList<hostile_hive> hives;
    for (const auto &[name, make] : shapes) {
        for (const value_place &place : value_places())
            hives.append({QString::fromLatin1(name) + u' ' + QString::fromLatin1(place.name),
                          place.kind, [make = make, place] { return make(place); }});
    }
    return hives;
}

QList<hostile_hive> hives_with_hostile_keys()
{
    const hive_kind software = hive_kind::software;
    const hive_kind user = hive_kind::user;
    return {
        {u"60,000 applications share 30,000 values"_s, software,
         [] { return keys_sharing_values(uninstall_key, {}, u"DisplayName"_s); }},
        {u"60,000 UserAssist keys share a key with 30,000 values"_s, user,
         [] { return keys_sharing_values(user_assist_key, u"\\Count"_s, u"P:\\n.rkr"_s); }},
        {u"60,000 lists of icons share 30,000 values"_s, user,
         [] { return keys_sharing_values(hide_desktop_icons_key, {}, class_id); }},
        {u"40,000 UserAssist keys share 40,000 subkeys"_s, user, keys_sharing_subkeys},
        {u"one application listed 60,000 times"_s, software,
         [] { return one_key_listed_often(uninstall_key); }},
        {u"one UserAssist key listed 60,000 times"_s, user,
         [] { return one_key_listed_often(user_assist_key); }},
        {u"one list of icons listed 60,000 times"_s, user,
         [] { return one_key_listed_often(hide_desktop_icons_key); }},
        {u"80,000 UserAssist keys one below the other"_s, user, very_deep_tree},
        {u"two UserAssist keys at each level share all subkeys"_s, user,
         keys_sharing_subkeys_at_each_level},
        {u"500 UserAssist keys share 1,000 keys, each behind empty lists"_s, user,
         chain_behind_empty_lists},
        {u"an index of applications without an end"_s, software,
         [] { return indexes_without_keys(uninstall_key); }},
        {u"an index of UserAssist keys without an end"_s, user,
         [] { return indexes_without_keys(user_assist_key); }},
        {u"an index of icons without an end"_s, user,
         [] { return indexes_without_keys(name_space_key); }},
    };
}

} // namespace

QList<hostile_hive> hostile_hives()
{
    return hives_with_hostile_values() + hives_with_hostile_keys() +
           QList<hostile_hive>{
               {u"70,000 UserAssist entries of a class id of 65,535 letters"_s, hive_kind::user,
                entries_of_a_long_class_id},
               {u"35,000 icons with a name each"_s, hive_kind::user, icons_with_a_name_each},
               {u"70,000 icons share 30,000 names"_s, hive_kind::user, icons_sharing_many_names},
               {u"70,000 icons share a name of 3.5 MB"_s, hive_kind::user,
                [] { return icons_sharing_a_long_name('x'); }},
               {u"70,000 icons share a name of 3.5 MB that is no text"_s, hive_kind::user,
                [] { return icons_sharing_a_long_name('\xff'); }},
               {u"20 keys of a Chinese class id share 110,000 entries"_s, hive_kind::user,
                entries_of_a_chinese_class_id},
               {u"700 programs whose names are 21,845 drives"_s, hive_kind::user,
                programs_named_by_drives},
               {u"30,000 icons share 30,000 names of broken big data"_s, hive_kind::user,
                icons_sharing_refused_names},
               {u"110,000 icons whose names are paths of 32,000 keys"_s, hive_kind::user,
                icons_whose_names_are_long_paths},
               {u"600 icons whose names are paths of 32,000 keys behind empty lists"_s,
                hive_kind::user, icons_whose_names_are_paths_behind_empty_lists},
               {u"5,000 icons in a hive of 1,100,000 cells"_s, hive_kind::user,
                icons_among_very_many_cells},
           };
}

} // namespace evidence
