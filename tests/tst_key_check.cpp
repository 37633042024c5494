#include "key_check.h"

#include "application_keys.h"
#include "files.h"
#include "hive_builder.h"
#include "hive_damage.h"
#include "host_tabs.h"
#include "hostile_hives.h"
#include "parse_hidden_desktop_icons.h"
#include "parse_installed_applications.h"
#include "parse_user_assist.h"
#include "regf_format.h"
#include "test_main.h"
#include "walk_budget.h"
#include "walk_limits.h"
#include "worker_fixture.h"

#include <QFileInfo>
#include <QSet>
#include <QTemporaryDir>
#include <QtEndian>
#include <algorithm>
#include <functional>
#include <optional>

using namespace Qt::StringLiterals;
using namespace test_support;

namespace {

const auto lone_surrogate = hive_name::lone_surrogate();

/// A hive as a file.
class checked_file
{
public:
    explicit checked_file(const QByteArray &hive) { write_file(m_path, hive); }

    QStringList findings(const listed_key &key) const { return key_findings(m_path, {key}); }

    const QString &path() const { return m_path; }

private:
    const QTemporaryDir m_folder;
    const QString m_path = m_folder.filePath(u"hive"_s);
};

const host_tab &host_tab_named(const QString &name)
{
    const auto &tabs = host_tabs();
    return *std::find_if(tabs.cbegin(), tabs.cend(),
                         [&name](const host_tab &tab) { return tab.name == name; });
}

/// Whether the plug-in's walk of a key ends with its budget.
bool walk_ends(registry &walker, const QString &path, const QString &key, bool read_key_values)
{
    walker.start_registry_parse(path, key, read_key_values);
    return walker.cost_of_last_walk() >= walk_budget::hive_lengths * QFileInfo(path).size();
}

/// The same of the keys that name the icons, of which a few are as good as all.
bool walk_of_any_name_ends(const parse_hidden_desktop_icons &icons, const QString &path)
{
    constexpr qsizetype most_names = 10;
    QSet<QString> names;
    for (const registry::struct_data &icon : icons.data_records) {
        if (names.size() < most_names)
            names.insert(icon.name);
    }
    return std::any_of(names.cbegin(), names.cend(), [&path](const QString &name) {
        parse_hidden_desktop_icons walker;
        return walk_ends(walker, path, parse_hidden_desktop_icons::name_space_key + name, true);
    });
}

/// Whether a walk of the plug-in ends early when it fills the tab.
bool any_walk_ends(const QString &path, const host_tab &tab)
{
    const QString &key = tab.key.key_path;
    if (key == user_assist_key) {
        parse_user_assist entries;
        return walk_ends(entries, path, key, false);
    }
    if (key == hide_desktop_icons_key) {
        parse_hidden_desktop_icons icons;
        return walk_ends(icons, path, key, false) || walk_of_any_name_ends(icons, path);
    }
    parse_installed_applications applications;
    const QString begin = key == registered_applications_key ? u"\\"_s : QString();
    return walk_ends(applications, path, begin + key, tab.key.first_value_level == 0);
}

/// A list of values, longer than any test needs, so that the hive's length does not depend on how
/// many of them the key claims: the one over and over, and the other as the last of the claimed.
void list_often(hive_damage &damage, const hive_key &key, qint64 value, int count,
                std::optional<qint64> last = std::nullopt)
{
    constexpr qsizetype longest_list = 30000;
    QList<quint32> entries(longest_list, qToLittleEndian(quint32(value - regf::first_bin)));
    if (last)
        entries[count - 1] = qToLittleEndian(quint32(*last - regf::first_bin));
    damage.add_last_cell({reinterpret_cast<const char *>(entries.constData()), 4 * longest_list});
    damage.value_list(key.cells().key, damage.last_cell())
        .value_count(key.cells().key, static_cast<quint32>(count));
}

/// The least number from which on the host finds something in the hives; 0 when there is none.
int first_told(const std::function<QByteArray(int)> &hive_of, const listed_key &key)
{
    int untold = 1;
    int told = 30000;
    const auto is_told = [&](int number) {
        return !checked_file(hive_of(number)).findings(key).isEmpty();
    };
    if (is_told(untold) || !is_told(told))
        return 0;
    while (told - untold > 1) {
        const int middle = (untold + told) / 2;
        (is_told(middle) ? told : untold) = middle;
    }
    return told;
}

/// A value that a key lists over and over, as tab and key tell.
struct repeated_value
{
    const char *what;
    QString tab;
    QString key;
    hive_name name;
    QByteArray data;
    std::function<void(hive_damage &, const value_cells &)> damage{};

    QByteArray hive_listing(int count) const
    {
        hive_builder hive;
        hive_key &listing = hive.key(key).binary(name, data);
        hive_damage damaged(hive.bytes());
        if (damage)
            damage(damaged, listing.cells_of_value(0));
        list_often(damaged, listing, listing.cells_of_value(0).value, count);
        return damaged.bytes();
    }
};

QList<repeated_value> repeated_values()
{
    const QString &apps = registered_applications_key;
    const QString of_class_id = user_assist_key + u"\\%1\\Count"_s;
    const auto broken_block = [](hive_damage &damage, const value_cells &cells) {
        damage.offset_entry(cells.block_list, cells.blocks.size() - 1, regf::first_bin + 4);
    };
    const auto sized = [](quint32 size) {
        return [size](hive_damage &damage, const value_cells &cells) {
            damage.data_size(cells.value, size);
        };
    };
    const auto nowhere = [](hive_damage &damage, const value_cells &cells) {
        damage.data_cell(cells.value, cells.data + 4);
    };
    const QByteArray data(1000, 'x');
    const QByteArray big_data(20000, 'x');
    return {
        {"data of an application's value", u"registered_apps"_s, apps, u"v"_s, data},
        {"big data", u"registered_apps"_s, apps, u"v"_s, big_data},
        {"big data that are refused", u"registered_apps"_s, apps, u"v"_s, big_data, broken_block},
        {"data that are longer than allowed", u"registered_apps"_s, apps, u"v"_s, data,
         sized(8000001)},
        {"data that claim more than their cell", u"registered_apps"_s, apps, u"v"_s, data,
         sized(100000)},
        {"data that are in no cell", u"registered_apps"_s, apps, u"v"_s, data, nowhere},
        {"data within the value", u"registered_apps"_s, apps, u"v"_s, "data"},
        {"a long name", u"registered_apps"_s, apps, QString(1000, u'é'), "data"},
        {"data of an installed application", u"install_apps_64"_s, uninstall_key + u"\\App"_s,
         u"DisplayName"_s, data},
        {"data of a hidden icon", u"hidden_desktop_icons_app"_s,
         hide_desktop_icons_key + u"\\NewStartPanel"_s, u"{}"_s, data},
        {"data of a program", u"third_party_applications"_s, compatibility_store_key,
         u"C:\\a.exe"_s, data},
        {"a program on two drives",
         u"third_party_applications"_s,
         compatibility_store_key,
         u"C:\\a.exe C:/b.exe"_s,
         {}},
        {"data of an entry", u"previously_executed_apps"_s, of_class_id.arg("{}"_L1), u"v"_s, data},
        {"entries of a class id",
         u"previously_executed_apps"_s,
         of_class_id.arg(QString(255, u'中')),
         u"v"_s,
         {}},
        {"entries of a class id that is too long",
         u"previously_executed_apps"_s,
         of_class_id.arg(QString(300, u'x')),
         u"v"_s,
         {}},
        {"entries deep below a class id",
         u"uninstall_apps"_s,
         of_class_id.arg(QString(300, u'x')) + u"\\a\\b"_s,
         u"v"_s,
         {}},
    };
}

/// Icons of one name, and one more behind them, whose names stand in their keys.
struct repeated_icon
{
    const char *what;
    QString name;
    int rows; ///< of each
    QByteArray name_shown;

    static constexpr qsizetype padding = 500000;

    QByteArray hive_listing(int count) const
    {
        hive_builder hive;
        hive_key &hidden = hive.key(hide_desktop_icons_key + u"\\NewStartPanel"_s);
        hidden.dword(name, 1).dword(u"last"_s, 1);
        for (int i = 0; i < rows; ++i)
            hive.key(name_space_key + u'\\' + name).binary(u""_s, name_shown);
        hive.key(name_space_key + u"\\last"_s).binary(u""_s, name_shown);
        hive_damage damage(hive.bytes());
        damage.add_last_cell(QByteArray(padding, 'p')); // else listing alone would be too much
        list_often(damage, hidden, hidden.cells_of_value(0).value, count,
                   hidden.cells_of_value(1).value);
        return damage.bytes();
    }
};

QList<repeated_icon> repeated_icons()
{
    return {
        {"many rows", u"id"_s, 1000, "x"},
        {"rows of long names", u"id"_s, 10, QByteArray(10000, 'x')},
        {"keys that are absent", u"a\\"_s.repeated(300), 0, "x"},
    };
}

/// Whether the plug-in leaves out icons of the hive of `count` icons.
bool is_any_icon_lost(const repeated_icon &icon, int count)
{
    const QString table = u"hidden_desktop_icons_app"_s;
    worker_fixture fixture;
    fixture.volume.user(u"ann"_s);
    fixture.find_files();
    write_file(fixture.volume.ntuser_path(u"ann"_s), icon.hive_listing(count));
    fixture.extract(table);
    return fixture.database().row_count(table) < icon.rows * (count - 1) + 1;
}

template<typename list_type>
void add_each_of(const list_type &hives)
{
    QTest::addColumn<int>("number");
    for (qsizetype number = 0; number < hives.size(); ++number)
        QTest::newRow(hives.at(number).what) << static_cast<int>(number);
}

} // namespace

class tst_key_check : public QObject
{
    Q_OBJECT

private slots:
    void tells_what_hides_a_key_data();
    void tells_what_hides_a_key();
    void tells_each_reason_once();
    void looks_at_the_levels_that_are_listed_data();
    void looks_at_the_levels_that_are_listed();
    void counts_all_keys_of_which_it_names_the_first();
    void tells_of_a_value_whose_name_cannot_be_read();
    void tells_wherever_the_plug_in_ends_a_walk_data();
    void tells_wherever_the_plug_in_ends_a_walk();
    void tells_from_the_value_on_that_ends_a_walk_data();
    void tells_from_the_value_on_that_ends_a_walk();
    void tells_from_the_icon_on_that_is_lost_data();
    void tells_from_the_icon_on_that_is_lost();
    void counts_bytes_as_the_plug_in_does();
    void finds_nothing_in_large_intact_hives();
    void tells_what_hides_the_name_of_an_icon();
    void ends_where_one_long_name_is_listed_often();
    void ends_at_an_index_that_no_intact_hive_has_data();
    void ends_at_an_index_that_no_intact_hive_has();
    void takes_an_intact_index_as_it_is();
    void tells_of_keys_that_are_listed_again();
    void takes_names_that_libhivex_refuses_as_intact();
    void names_no_place_beyond_measure();
    void tells_when_the_hive_does_not_open();
};

void tst_key_check::tells_what_hides_a_key_data()
{
    QTest::addColumn<QString>("sister_of_undecodable");
    QTest::addColumn<QString>("key_path");
    QTest::addColumn<QStringList>("findings");
    const auto in = u"the keys in %1 cannot be listed, so A\\B\\C is not read"_s;
    QTest::newRow("readable key") << QString() << u"A\\B\\C"_s << QStringList();
    QTest::newRow("key of other letter case") << QString() << u"a\\b\\c"_s << QStringList();
    QTest::newRow("absent key") << QString() << u"A\\none\\C"_s << QStringList();
    QTest::newRow("undecodable name in the key")
        << u"A\\B\\C\\D"_s << u"A\\B\\C"_s
        << QStringList{
               u"the content of A\\B\\C holds names that cannot be read, so part is not read"_s};
    QTest::newRow("undecodable name beside the key's parent")
        << u"A\\B"_s << u"A\\B\\C"_s << QStringList{in.arg("A"_L1)};
    QTest::newRow("undecodable name beside the first key")
        << u"A"_s << u"A\\B\\C"_s << QStringList{in.arg("the root key"_L1)};
    QTest::newRow("undecodable name elsewhere") << u"X\\Y"_s << u"A\\B\\C"_s << QStringList();
}

void tst_key_check::tells_what_hides_a_key()
{
    QFETCH(QString, sister_of_undecodable);
    QFETCH(QString, key_path);
    QFETCH(QStringList, findings);
    hive_builder hive;
    if (!sister_of_undecodable.isEmpty()) {
        const QString parent = sister_of_undecodable.section(u'\\', 0, -2);
        (parent.isEmpty() ? hive.root() : hive.key(parent)).add_key(lone_surrogate);
        hive.key(sister_of_undecodable);
    }
    hive.key(u"A\\B\\C"_s).text(u"value"_s, u"text"_s);
    const QTemporaryDir folder;
    hive.write_to(folder.filePath(u"hive"_s));
    QCOMPARE(key_findings(folder.filePath(u"hive"_s), {{key_path, 0, 1}}), findings);
}

void tst_key_check::tells_each_reason_once()
{
    hive_builder hive;
    hive_key &key = hive.key(u"A"_s).text(u"value"_s, u"text"_s);
    hive.bytes();
    const QByteArray damaged = hive_damage(hive.bytes()).value_count(key.cells().key, 1000).bytes();
    const QTemporaryDir folder;
    write_file(folder.filePath(u"hive"_s), damaged);
    QCOMPARE(key_findings(folder.filePath(u"hive"_s), {{u"A"_s, 0, 1}, {u"A"_s, 0, 1}}),
             QStringList{u"the content of A cannot be listed, so it is not read"_s});
}

void tst_key_check::looks_at_the_levels_that_are_listed_data()
{
    QTest::addColumn<int>("first_value_level");
    QTest::addColumn<int>("last_level");
    QTest::addColumn<QString>("damaged");
    QTest::addColumn<bool>("is_told");
    QTest::newRow("values of the key itself") << 0 << 0 << u"A"_s << true;
    QTest::newRow("values of a subkey, which are not listed") << 0 << 0 << u"A\\B"_s << false;
    QTest::newRow("values of a subkey") << 1 << 1 << u"A\\B"_s << true;
    QTest::newRow("values of the key itself, which are not listed") << 1 << 1 << u"A"_s << false;
    QTest::newRow("values two keys below") << 2 << listed_key::all_levels << u"A\\B\\C"_s << true;
    QTest::newRow("values four keys below")
        << 2 << listed_key::all_levels << u"A\\B\\C\\D\\E"_s << true;
    QTest::newRow("values of another key") << 0 << listed_key::all_levels << u"B"_s << false;
}

void tst_key_check::looks_at_the_levels_that_are_listed()
{
    QFETCH(int, first_value_level);
    QFETCH(int, last_level);
    QFETCH(QString, damaged);
    QFETCH(bool, is_told);
    hive_builder hive;
    hive.key(u"A\\B\\C\\D\\E"_s);
    hive_key &key = hive.key(damaged).text(u"value"_s, u"text"_s);
    hive.bytes();
    checked_file file(hive_damage(hive.bytes()).value_count(key.cells().key, 1000).bytes());
    const QStringList told{u"the content of %1 cannot be listed, so it is not read"_s.arg(damaged)};
    QCOMPARE(file.findings({u"A"_s, first_value_level, last_level}),
             is_told ? told : QStringList());
}

void tst_key_check::counts_all_keys_of_which_it_names_the_first()
{
    hive_builder hive;
    QList<const hive_key *> keys;
    for (const QString &name : {u"one"_s, u"three"_s, u"two"_s})
        keys.append(&hive.key(u"A\\"_s + name).text(u"value"_s, u"text"_s));
    hive.bytes();
    hive_damage damage(hive.bytes());
    for (const hive_key *key : std::as_const(keys))
        damage.value_count(key->cells().key, 1000);
    checked_file file(damage.bytes());
    QCOMPARE(
        file.findings({u"A"_s, 1, 1}),
        QStringList{
            u"the content of A\\one and of 2 more keys cannot be listed, so it is not read"_s});
}

void tst_key_check::tells_of_a_value_whose_name_cannot_be_read()
{
    hive_builder hive;
    hive.key(u"A"_s).text(lone_surrogate, u"text"_s);
    checked_file file(hive.bytes());
    QCOMPARE(
        file.findings({u"A"_s, 0, 0}),
        QStringList{u"the content of A holds names that cannot be read, so part is not read"_s});
}

void tst_key_check::tells_wherever_the_plug_in_ends_a_walk_data()
{
    QTest::addColumn<int>("number");
    const QList<hostile_hive> hives = hostile_hives();
    for (int number = 0; number < hives.size(); ++number)
        QTest::newRow(qPrintable(hives.at(number).name)) << number;
}

void tst_key_check::tells_wherever_the_plug_in_ends_a_walk()
{
    QFETCH(int, number);
    const hostile_hive hive = hostile_hives().at(number);
    const auto input =
        hive.kind == hive_kind::software ? tab_input::software_hive : tab_input::user_hive;
    const checked_file file(hive.make());
    for (const host_tab &tab : host_tabs()) {
        if (tab.input != input)
            continue;
        const QStringList findings = file.findings(tab.key);
        QVERIFY(findings.size() <= 2);
        QVERIFY2(!findings.isEmpty() || !any_walk_ends(file.path(), tab), qPrintable(tab.name));
    }
}

void tst_key_check::tells_from_the_value_on_that_ends_a_walk_data()
{
    add_each_of(repeated_values());
}

void tst_key_check::tells_from_the_value_on_that_ends_a_walk()
{
    QFETCH(int, number);
    const repeated_value value = repeated_values().at(number);
    const host_tab &tab = host_tab_named(value.tab);
    const auto hive_of = [&value](int count) { return value.hive_listing(count); };
    const int count = first_told(hive_of, tab.key);
    QVERIFY(count > 0);
    QVERIFY(any_walk_ends(checked_file(hive_of(count)).path(), tab));
    QVERIFY(!any_walk_ends(checked_file(hive_of(count - 1)).path(), tab));
}

void tst_key_check::tells_from_the_icon_on_that_is_lost_data()
{
    add_each_of(repeated_icons());
}

void tst_key_check::tells_from_the_icon_on_that_is_lost()
{
    QFETCH(int, number);
    const repeated_icon icon = repeated_icons().at(number);
    const int count = first_told([&icon](int icons) { return icon.hive_listing(icons); },
                                 host_tab_named(u"hidden_desktop_icons_app"_s).key);
    QVERIFY(count > 2);
    QVERIFY(is_any_icon_lost(icon, count + 1)); // what the last one costs is no loss
    QVERIFY(!is_any_icon_lost(icon, count - 1));
}

void tst_key_check::counts_bytes_as_the_plug_in_does()
{
    QCOMPARE(walk_limits::hive_lengths, walk_budget::hive_lengths);
    QCOMPARE(walk_limits::refusals, walk_budget::refusals);
    QCOMPARE(walk_limits::refused_bytes_per_byte, walk_budget::refused_bytes_per_byte);
    QCOMPARE(walk_limits::indexed_list_cost, walk_budget::indexed_list_cost);
}

// Hives of little else than what the tabs list, in as short records as Windows makes.
void tst_key_check::finds_nothing_in_large_intact_hives()
{
    constexpr int count = 20000;
    hive_builder hive;
    hive_key &entries = hive.key(user_assist_key).add_key(QString(255, u'中')).key(u"Count"_s);
    for (int i = 0; i < count; ++i) {
        const QString number = QString::number(i);
        hive.key(registered_applications_key).text(number, u"\\a"_s);
        hive.key(uninstall_key).add_key(number).dword(u"v"_s, 1).text(u"DisplayName"_s, number);
        hive.key(compatibility_store_key).binary(u"C:\\"_s + number, "data");
        entries.binary(number, {});
    }
    for (int i = 0; i < 100; ++i) {
        const QString id = u"{20D04FE0-3AEA-1069-A2D8-%1}"_s.arg(i);
        hive.key(hide_desktop_icons_key + u"\\NewStartPanel"_s).dword(id, 1);
        hive.key(name_space_key + u'\\' + id).text(u""_s, u"Recycle Bin"_s);
    }
    const checked_file file(hive.bytes());
    for (const host_tab &tab : host_tabs())
        QCOMPARE(file.findings(tab.key), QStringList());
}

void tst_key_check::tells_what_hides_the_name_of_an_icon()
{
    hive_builder hive;
    hive_key &hidden = hive.key(hide_desktop_icons_key + u"\\NewStartPanel"_s);
    hidden.dword(u"{1}"_s, 1).dword(u"{2}"_s, 1).dword(u"{absent}"_s, 1).dword(u""_s, 1);
    hive_key &first = hive.key(name_space_key + u"\\{1}"_s).text(u""_s, u"name"_s);
    hive.key(name_space_key + u"\\{2}"_s).text(u""_s, u"name"_s);
    const listed_key key = host_tab_named(u"hidden_desktop_icons_app"_s).key;
    QCOMPARE(checked_file(hive.bytes()).findings(key), QStringList());
    hive_damage damage(hive.bytes());
    damage.value_count(first.cells().key, 1000);
    QCOMPARE(checked_file(damage.bytes()).findings(key),
             QStringList{u"the content of %1\\{1} cannot be listed, so it is not read"_s.arg(
                 name_space_key)});
}

void tst_key_check::ends_where_one_long_name_is_listed_often()
{
    hive_builder hive;
    hive_key &parent = hive.key(u"A"_s).list_kind(subkey_list::li);
    const hive_key &key = parent.add_key(hive_name::raw(QByteArray(65535, 'x'), true));
    for (int i = 1; i < 60000; ++i)
        parent.add_key(u"x"_s);
    hive.bytes();
    checked_file file(
        hive_damage(hive.bytes()).list_only(parent.cells().subkey_list, key.cells().key).bytes());
    QCOMPARE(
        file.findings({u"A\\B"_s, 0, 0}),
        QStringList{
            u"A\\B lists more than a hive of this size can hold, so part of it may not be read"_s});
}

void tst_key_check::ends_at_an_index_that_no_intact_hive_has_data()
{
    QTest::addColumn<int>("empty_lists");
    QTest::addColumn<bool>("is_index_of_indexes");
    QTest::newRow("more lists than keys") << 1 << false;
    QTest::newRow("an index of an index") << 0 << true;
}

void tst_key_check::ends_at_an_index_that_no_intact_hive_has()
{
    QFETCH(int, empty_lists);
    QFETCH(bool, is_index_of_indexes);
    hive_builder hive;
    const hive_key &below = hive.key(u"A\\B"_s);
    hive_damage damage(hive.bytes());
    const qint64 empty_list = damage.add_list("li", {}).last_cell();
    qint64 list = damage.add_list("li", {below.cells().key}).last_cell();
    if (is_index_of_indexes)
        list = damage.add_list("ri", {list}).last_cell();
    damage.add_list("ri", QList<qint64>(empty_lists, empty_list) << list);
    damage.subkey_list(hive.key(u"A"_s).cells().key, damage.last_cell());
    QCOMPARE(
        checked_file(damage.bytes()).findings({u"A"_s, 1, 1}),
        QStringList{
            u"A lists more than a hive of this size can hold, so part of it may not be read"_s});
}

void tst_key_check::takes_an_intact_index_as_it_is()
{
    hive_builder hive;
    for (int i = 0; i < 3000; ++i)
        hive.key(u"A"_s).add_key(QString::number(i));
    hive.key(u"B"_s).list_kind(subkey_list::ri).add_key(u"only"_s);
    const checked_file file(hive.bytes());
    QCOMPARE(file.findings({u"A"_s, 1, 1}), QStringList());
    QCOMPARE(file.findings({u"B"_s, 1, 1}), QStringList());
}

void tst_key_check::tells_of_keys_that_are_listed_again()
{
    hive_builder hive;
    const hive_key &first = hive.key(u"A\\1"_s);
    hive.key(u"A\\1\\Count"_s);
    const hive_key &second = hive.key(u"A\\2"_s);
    hive_damage damage(hive.bytes());
    damage.share_subkeys(second.cells().key, first.cells().key);
    QCOMPARE(checked_file(damage.bytes()).findings({u"A"_s, 2, listed_key::all_levels}),
             QStringList{u"A lists a key more than once, so part of it may not be read"_s});
}

void tst_key_check::takes_names_that_libhivex_refuses_as_intact()
{
    hive_builder hive;
    for (int i = 0; i < 5000; ++i)
        hive.key(u"A"_s).add_key(lone_surrogate);
    QCOMPARE(
        checked_file(hive.bytes()).findings({u"A"_s, 1, 1}),
        QStringList{u"the content of A holds names that cannot be read, so part is not read"_s});
}

void tst_key_check::names_no_place_beyond_measure()
{
    hive_builder hive;
    hive_key &key = hive.key(u"A"_s).add_key(hive_name::raw(QByteArray(65535, 'x'), true));
    key.text(u"value"_s, u"text"_s);
    hive.bytes();
    checked_file file(hive_damage(hive.bytes()).value_count(key.cells().key, 1000).bytes());
    QCOMPARE(file.findings({u"A"_s, 1, 1}),
             QStringList{u"the content of A\\"_s + QString(498, u'x') +
                         u"… cannot be listed, so it is not read"_s});
}

void tst_key_check::tells_when_the_hive_does_not_open()
{
    const QTemporaryDir folder;
    write_file(folder.filePath(u"hive"_s), "no hive");
    QVERIFY(!opens_as_hive(folder.filePath(u"hive"_s)));
    QCOMPARE(key_findings(folder.filePath(u"hive"_s), {{u"A"_s, 0, 0}}),
             QStringList{u"cannot be opened as a registry hive, so it is not read"_s});
}

TEST_MAIN(tst_key_check)

#include "tst_key_check.moc"
