#include "hive_rows.h"
#include "noting_walker.h"
#include "regf_format.h"
#include "test_main.h"

#include <QFile>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

using make_path = void (*)(const QString &path);

class tst_registry_keys : public QObject
{
    Q_OBJECT

private slots:
    void refuses_empty_paths_data();
    void refuses_empty_paths();
    void refuses_what_is_no_hive_data();
    void refuses_what_is_no_hive();
    void refuses_a_file_longer_than_any_hive();
    void refuses_damaged_heads_data();
    void refuses_damaged_heads();
    void opens_a_hive_of_any_name_data();
    void opens_a_hive_of_any_name();
    void opens_a_hive_through_a_link();
    void follows_key_paths_data();
    void follows_key_paths();
    void finds_no_key_data();
    void finds_no_key();
    void descends_from_any_key();
    void finds_no_key_beside_a_name_that_cannot_be_decoded();
    void walks_subkeys_by_name_from_every_kind_of_list_data();
    void walks_subkeys_by_name_from_every_kind_of_list();
    void orders_names_by_code_unit();
    void lists_subkeys_with_their_handles();
    void keeps_the_last_of_equal_names();
    void reads_key_names_data();
    void reads_key_names();
    void leaves_out_subkeys_without_a_readable_name_data();
    void leaves_out_subkeys_without_a_readable_name();
    void reads_values_while_the_subkey_is_current();
    void keeps_the_name_of_the_last_subkey_in_hive_order();
    void lists_70000_subkeys();
    void lists_all_keys_beside_many_names_that_cannot_be_read();
    void lists_nothing_of_a_refused_list_data();
    void lists_nothing_of_a_refused_list();
};

namespace {

QByteArray small_hive()
{
    hive_builder hive;
    hive.key(u"a"_s).text(u"name"_s, u"A"_s);
    return hive.bytes();
}

} // namespace

void tst_registry_keys::refuses_empty_paths_data()
{
    QTest::addColumn<bool>("has_hive");
    QTest::addColumn<QString>("key_path");
    QTest::addRow("no hive path") << false << u"a"_s;
    QTest::addRow("no key path") << true << u""_s;
    QTest::addRow("neither") << false << u""_s;
}

void tst_registry_keys::refuses_empty_paths()
{
    QFETCH(const bool, has_hive);
    QFETCH(const QString, key_path);
    noted_hive noted;
    write_file(noted.path(), small_hive());
    const QString hive_path = has_hive ? noted.path() : QString();
    QCOMPARE(noted.walker.start_registry_parse(hive_path, key_path, true), -1);
    QVERIFY(noted.walker.data_records.isEmpty());
}

void tst_registry_keys::refuses_what_is_no_hive_data()
{
    QTest::addColumn<make_path>("make");
    const auto row = [](const char *name, make_path make) { QTest::addRow("%s", name) << make; };
    row("a missing file", [](const QString &) {});
    row("a file of no bytes", [](const QString &path) { write_file(path, {}); });
    row("a text",
        [](const QString &path) { write_file(path, QByteArray("text\n").repeated(9999)); });
    row("the signature alone", [](const QString &path) { write_file(path, "regf"); });
    row("a hive without its bins",
        [](const QString &path) { write_file(path, small_hive().first(4096)); });
    row("a hive of zero bytes",
        [](const QString &path) { write_file(path, QByteArray(8192, '\0')); });
    row("a folder", [](const QString &path) { make_folder(path); });
    row("a link to nothing", [](const QString &path) { QFile::link(u"nothing"_s, path); });
    row("a link to itself", [](const QString &path) { QFile::link(path, path); });
    row("a device", [](const QString &path) { QFile::link(u"/dev/zero"_s, path); });
    row("a pipe that nobody writes to", [](const QString &path) {
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    });
}

void tst_registry_keys::refuses_what_is_no_hive()
{
    QFETCH(const make_path, make);
    noted_hive noted;
    make(noted.path());
    noted.walker.current_key_name = u"before"_s;
    QCOMPARE(noted.walker.start_registry_parse(noted.path(), u"a"_s, true), -1);
    QCOMPARE(noted.walker.start_registry_parse(noted.path(), u"a"_s, false), -1);
    QVERIFY(noted.walker.data_records.isEmpty());
    QVERIFY(noted.walker.values.isEmpty());
    QCOMPARE(noted.walker.current_key_name, u"before"_s);
}

void tst_registry_keys::refuses_a_file_longer_than_any_hive()
{
    noted_hive noted;
    write_file(noted.path(), small_hive());
    QFile file(noted.path());
    QVERIFY(file.resize((qint64(1) << 32) + 1));
    QCOMPARE(noted.walker.start_registry_parse(noted.path(), u"a"_s, true), -1);
}

void tst_registry_keys::refuses_damaged_heads_data()
{
    QTest::addColumn<damage_operation>("operation");
    add_damage_row("another signature",
                   [](hive_builder &, hive_damage &damage) { damage.set_32(0, 0); });
    add_damage_row("a root outside of the file", [](hive_builder &, hive_damage &damage) {
        damage.set_32(regf::base_block::root_cell, 0x7ffff000);
    });
    add_damage_row("a root that is no key", [](hive_builder &hive, hive_damage &damage) {
        damage.signature(hive_builder::offset_of(hive.root()), "vk");
    });
    add_damage_row("a file that ends within a bin",
                   [](hive_builder &, hive_damage &damage) { damage.truncate(5000); });
}

void tst_registry_keys::refuses_damaged_heads()
{
    QFETCH(const damage_operation, operation);
    noted_hive noted;
    noted.hive.key(u"a"_s);
    hive_damage damage = noted.damage();
    QCOMPARE(noted.walk(damage, u"a"_s, true), 0);
    operation(noted.hive, damage);
    QCOMPARE(noted.walk(damage, u"a"_s, true), -1);
    QCOMPARE(noted.walker.data_records.size(), 1);
}

void tst_registry_keys::opens_a_hive_of_any_name_data()
{
    QTest::addColumn<QString>("name");
    QTest::addRow("a blank") << u"NTUSER DAT"_s;
    QTest::addRow("letters beyond ASCII") << u"Über 漢字 \U0001F600.DAT"_s;
    QTest::addRow("a quote and a backslash") << u"it's\\a\"hive"_s;
}

void tst_registry_keys::opens_a_hive_of_any_name()
{
    QFETCH(const QString, name);
    const QTemporaryDir folder;
    write_file(folder.filePath(name), small_hive());
    noting_walker walker;
    QCOMPARE(walker.start_registry_parse(folder.filePath(name), u"a"_s, true), 0);
    QCOMPARE(walker.values, QStringList{u"a:name"_s});
}

void tst_registry_keys::opens_a_hive_through_a_link()
{
    const QTemporaryDir folder;
    write_file(folder.filePath(u"hive"_s), small_hive());
    QVERIFY(QFile::link(u"hive"_s, folder.filePath(u"link"_s)));
    noting_walker walker;
    QCOMPARE(walker.start_registry_parse(folder.filePath(u"link"_s), u"a"_s, true), 0);
    QCOMPARE(walker.values, QStringList{u"a:name"_s});
}

void tst_registry_keys::follows_key_paths_data()
{
    QTest::addColumn<QString>("key_path");
    QTest::addColumn<QString>("key_name");
    QTest::addRow("a backslash is the root key") << u"\\"_s << u"ROOT"_s;
    QTest::addRow("backslashes alone are the root key") << u"\\\\\\"_s << u"ROOT"_s;
    QTest::addRow("one key") << u"Top"_s << u"Top"_s;
    QTest::addRow("keys on end") << u"Top\\Middle\\Low"_s << u"Low"_s;
    QTest::addRow("a leading backslash") << u"\\Top\\Middle\\Low"_s << u"Low"_s;
    QTest::addRow("a trailing backslash") << u"Top\\Middle\\Low\\"_s << u"Low"_s;
    QTest::addRow("doubled backslashes") << u"\\\\Top\\\\Middle\\\\\\Low\\\\"_s << u"Low"_s;
    QTest::addRow("other letter case") << u"tOP\\MIDDLE\\low"_s << u"Low"_s;
    QTest::addRow("blanks and slashes") << u"Top\\with / and blank "_s << u"with / and blank "_s;
    QTest::addRow("Latin-1") << u"Top\\Grüße"_s << u"Grüße"_s;
    QTest::addRow("UTF-16") << u"Top\\Grüße\\漢字 \U0001F600"_s << u"漢字 \U0001F600"_s;
    QTest::addRow("an ASCII name in UTF-16") << u"Top\\wide"_s << u"Wide"_s;
}

void tst_registry_keys::follows_key_paths()
{
    QFETCH(const QString, key_path);
    noted_hive noted;
    noted.hive.key(u"Top\\Middle\\Low"_s);
    noted.hive.key(u"Top\\with / and blank "_s);
    noted.hive.key(u"Top\\Grüße\\漢字 \U0001F600"_s);
    noted.hive.key(u"Top"_s).add_key(hive_name::utf16(u"Wide"_s));
    noted.hive.key(key_path).text(u"name"_s, u"found"_s);

    QCOMPARE(noted.walk(key_path, true), 0);
    QTEST(noted.walker.current_key_name, "key_name");
    QCOMPARE(noted.walker.records(), QStringList{u"found||"_s});
}

void tst_registry_keys::finds_no_key_data()
{
    QTest::addColumn<QString>("key_path");
    QTest::addRow("a missing key") << u"none"_s;
    QTest::addRow("a missing key in the middle") << u"a\\none\\beta"_s;
    QTest::addRow("a missing key at the end") << u"a\\beta\\none"_s;
    QTest::addRow("a value instead of a key") << u"a\\name"_s;
    QTest::addRow("the beginning of a name") << u"a\\bet"_s;
    QTest::addRow("slashes instead of backslashes") << u"a/beta"_s;
    QTest::addRow("letters beyond ASCII in other case") << u"a\\Ü"_s;
}

void tst_registry_keys::finds_no_key()
{
    QFETCH(const QString, key_path);
    noted_hive noted;
    noted.hive.key(u"a\\beta"_s).text(u"name"_s, u"B"_s).key(u"c"_s);
    noted.hive.key(u"a"_s).text(u"name"_s, u"A"_s).key(u"ü"_s);
    noted.walker.current_key_name = u"before"_s;

    QCOMPARE(noted.walk(key_path, false), 0);
    QVERIFY(noted.walker.data_records.isEmpty());
    QCOMPARE(noted.walk(key_path, true), 0);
    QCOMPARE(noted.walker.records(), QStringList{u"||"_s});
    QCOMPARE(noted.walker.current_key_name, QString());
    QVERIFY(noted.walker.values.isEmpty());
}

void tst_registry_keys::descends_from_any_key()
{
    noted_hive noted;
    const hive_key &b = noted.hive.key(u"a\\b"_s);
    const unique_hive hive = noted.opened();
    const unsigned long root = node_of(noted.hive.root());
    const unsigned long a = node_of(noted.hive.key(u"a"_s));
    registry &walker = noted.walker;
    QCOMPARE(walker.get_user_node_handle(hive.get(), u"\\"_s, a), a);
    QCOMPARE(walker.get_user_node_handle(hive.get(), u""_s, a), a);
    QCOMPARE(walker.get_user_node_handle(hive.get(), u"b"_s, a), node_of(b));
    QCOMPARE(walker.get_user_node_handle(hive.get(), u"A\\B"_s, root), node_of(b));
    QCOMPARE(walker.get_user_node_handle(hive.get(), u"b"_s, root), 0UL);
    QCOMPARE(walker.get_user_node_handle(hive.get(), u"a\\c\\b"_s, root), 0UL);
    QCOMPARE(walker.get_user_node_handle(hive.get(), u"a"_s, 0), 0UL);
    QCOMPARE(walker.get_user_node_handle(hive.get(), u"\\"_s, 0), 0UL);
}

void tst_registry_keys::finds_no_key_beside_a_name_that_cannot_be_decoded()
{
    noted_hive noted;
    noted.hive.root().add_key(QString(QChar(0xd800)));
    noted.hive.key(u"a"_s).text(u"name"_s, u"A"_s);
    QCOMPARE(noted.walk(u"a"_s, true), 0);
    QCOMPARE(noted.walker.records(), QStringList{u"||"_s});
}

void tst_registry_keys::walks_subkeys_by_name_from_every_kind_of_list_data()
{
    QTest::addColumn<subkey_list>("kind");
    QTest::addRow("li") << subkey_list::li;
    QTest::addRow("lf") << subkey_list::lf;
    QTest::addRow("lh") << subkey_list::lh;
    QTest::addRow("ri") << subkey_list::ri;
}

void tst_registry_keys::walks_subkeys_by_name_from_every_kind_of_list()
{
    QFETCH(const subkey_list, kind);
    noted_hive noted;
    hive_key &start = noted.hive.key(u"start"_s).list_kind(kind);
    for (const QString &name : {u"b"_s, u"A"_s, u"a"_s})
        start.add_key(name).text(u"name"_s, name);
    QCOMPARE(noted.walk(u"start"_s, false), 0);
    QCOMPARE(noted.walker.records(), (QStringList{u"A||"_s, u"a||"_s, u"b||"_s}));
}

void tst_registry_keys::orders_names_by_code_unit()
{
    noted_hive noted;
    const QStringList names{u"\uffee"_s, u"\U0001F600"_s, u"é"_s, u"z"_s, u"10"_s, u"9"_s, u"_"_s};
    for (const QString &name : names)
        noted.hive.root().add_key(name);
    const unique_hive hive = noted.opened();
    const QMap<QString, int> children =
        noted.walker.prepare_the_node_key_child(hive.get(), node_of(noted.hive.root()), false);
    QCOMPARE(children.keys(),
             (QStringList{u"10"_s, u"9"_s, u"_"_s, u"z"_s, u"é"_s, u"\U0001F600"_s, u"\uffee"_s}));
}

void tst_registry_keys::lists_subkeys_with_their_handles()
{
    noted_hive noted;
    const hive_key &a = noted.hive.key(u"top\\a"_s).text(u"name"_s, u"A"_s);
    const hive_key &b = noted.hive.key(u"top\\b"_s);
    noted.hive.key(u"top\\b\\below"_s);
    const unique_hive hive = noted.opened();
    const unsigned long top = node_of(noted.hive.key(u"top"_s));
    const QMap<QString, int> expected{{u"a"_s, handle_of(a)}, {u"b"_s, handle_of(b)}};
    QCOMPARE(noted.walker.prepare_the_node_key_child(hive.get(), top, false), expected);
    QVERIFY(noted.walker.values.isEmpty());
    QVERIFY(noted.walker.prepare_the_node_key_child(hive.get(), node_of(a), false).isEmpty());
}

void tst_registry_keys::keeps_the_last_of_equal_names()
{
    noted_hive noted;
    noted.hive.root().add_key(u"same"_s).dword(u"first"_s, 1);
    const hive_key &last = noted.hive.root().add_key(u"same"_s).dword(u"last"_s, 1);
    const unique_hive hive = noted.opened();
    const QMap<QString, int> expected{{u"same"_s, handle_of(last)}};
    QCOMPARE(noted.walker.prepare_the_node_key_child(hive.get(), node_of(noted.hive.root()), true),
             expected);
    QCOMPARE(noted.walker.values, (QStringList{u"same:first"_s, u"same:last"_s}));
}

void tst_registry_keys::reads_key_names_data()
{
    add_stored_name_rows();
}

void tst_registry_keys::reads_key_names()
{
    QFETCH(const hive_name, stored);
    QFETCH(const QString, name);
    noted_hive noted;
    const hive_key &key = noted.hive.root().add_key(stored).dword(u"v"_s, 1);
    const unique_hive hive = noted.opened();
    const QMap<QString, int> children =
        noted.walker.prepare_the_node_key_child(hive.get(), node_of(noted.hive.root()), true);
    QCOMPARE(children, (QMap<QString, int>{{name, handle_of(key)}}));
    QCOMPARE(noted.walker.values, QStringList{name + u":v"_s});
}

void tst_registry_keys::leaves_out_subkeys_without_a_readable_name_data()
{
    QTest::addColumn<damage_operation>("operation");
    add_damage_row("a lone surrogate", [](hive_builder &hive, hive_damage &damage) {
        const qint64 key = hive.key(u"start\\bad"_s).cells().key;
        damage.set_16(key + regf::nk::flags, 0).set_16(key + regf::nk::name, 0xd800);
        damage.key_name_size(key, 2);
    });
    add_damage_row("an odd number of bytes in UTF-16", [](hive_builder &hive, hive_damage &damage) {
        damage.set_16(hive.key(u"start\\bad"_s).cells().key + regf::nk::flags, 0);
    });
    add_damage_row("a name longer than its cell", [](hive_builder &hive, hive_damage &damage) {
        damage.key_name_size(hive.key(u"start\\bad"_s).cells().key, 60000);
    });
    add_damage_row("a cell too small for a key", [](hive_builder &hive, hive_damage &damage) {
        damage.shrink_cell(hive.key(u"start\\bad"_s).cells().key, 24);
    });
    add_damage_row(
        "a key in the last 8 bytes of the file", [](hive_builder &hive, hive_damage &damage) {
            damage.add_last_cell("nk\x20\0"_ba);
            damage.list_entry(hive.key(u"start"_s).cells().subkey_list, 1, damage.last_cell());
        });
}

void tst_registry_keys::leaves_out_subkeys_without_a_readable_name()
{
    QFETCH(const damage_operation, operation);
    noted_hive noted;
    for (const QString &name : {u"a"_s, u"bad"_s, u"c"_s})
        noted.hive.key(u"start"_s).add_key(name).text(u"name"_s, name);
    hive_damage damage = noted.damage();
    operation(noted.hive, damage);
    QCOMPARE(noted.walk(damage, u"start"_s, false), 0);
    QCOMPARE(noted.walker.records(), (QStringList{u"a||"_s, u"c||"_s}));
}

void tst_registry_keys::reads_values_while_the_subkey_is_current()
{
    noted_hive noted;
    noted.hive.key(u"b"_s).dword(u"1"_s, 1).dword(u"2"_s, 1);
    noted.hive.key(u"a"_s).dword(u"3"_s, 1);
    const unique_hive hive = noted.opened();
    noted.walker.prepare_the_node_key_child(hive.get(), node_of(noted.hive.root()), true);
    QCOMPARE(noted.walker.values, (QStringList{u"b:1"_s, u"b:2"_s, u"a:3"_s}));
}

void tst_registry_keys::keeps_the_name_of_the_last_subkey_in_hive_order()
{
    noted_hive noted;
    noted.hive.key(u"z"_s);
    noted.hive.key(u"a"_s);
    unique_hive hive = noted.opened();
    noted.walker.prepare_the_node_key_child(hive.get(), node_of(noted.hive.root()), false);
    QCOMPARE(noted.walker.current_key_name, u"a"_s);

    noted.hive.root().add_key(QString(QChar(0xdc00)));
    hive = noted.opened();
    noted.walker.prepare_the_node_key_child(hive.get(), node_of(noted.hive.root()), false);
    QCOMPARE(noted.walker.current_key_name, QString());
}

void tst_registry_keys::lists_70000_subkeys()
{
    noted_hive noted;
    for (int i = 0; i < 70000; ++i)
        noted.hive.root().add_key(QString::number(i)).dword(u"v"_s, 1);
    QCOMPARE(noted.walk(u"\\"_s, false), 0);
    QCOMPARE(noted.walker.data_records.size(), 70000);
    QCOMPARE(noted.walker.values.size(), 70000);
}

// Windows takes half of a surrogate pair in a name; libhivex refuses each such name.
void tst_registry_keys::lists_all_keys_beside_many_names_that_cannot_be_read()
{
    noted_hive noted;
    for (int i = 0; i < 10000; ++i)
        noted.hive.key(u"a"_s).add_key(hive_name::lone_surrogate()).text(u"v"_s, u"text"_s);
    noted.hive.key(u"a\\last"_s).text(u"v"_s, u"text"_s);
    QCOMPARE(noted.walk(u"a"_s, false), 0);
    QCOMPARE(noted.walker.values, QStringList{u"last:v"_s});
}

void tst_registry_keys::lists_nothing_of_a_refused_list_data()
{
    QTest::addColumn<damage_operation>("operation");
    add_damage_row("more subkeys than the list holds", [](hive_builder &hive, hive_damage &damage) {
        damage.subkey_count(hive.key(u"start"_s).cells().key, 3);
    });
    add_damage_row("fewer subkeys than the list holds",
                   [](hive_builder &hive, hive_damage &damage) {
                       damage.subkey_count(hive.key(u"start"_s).cells().key, 1);
                   });
    add_damage_row("70,001 subkeys", [](hive_builder &hive, hive_damage &damage) {
        for (int i = 2; i < 70001; ++i)
            hive.key(u"start"_s).add_key(QString::number(i));
        damage = hive_damage(hive.bytes());
    });
    add_damage_row("a list outside of the file", [](hive_builder &hive, hive_damage &damage) {
        damage.subkey_list(hive.key(u"start"_s).cells().key, 0x7ffff000);
    });
    add_damage_row("a subkey outside of the file", [](hive_builder &hive, hive_damage &damage) {
        damage.list_entry(hive.key(u"start"_s).cells().subkey_list, 1, 0x7ffff000);
    });
    add_damage_row("a subkey between two cells", [](hive_builder &hive, hive_damage &damage) {
        damage.list_entry(hive.key(u"start"_s).cells().subkey_list, 1,
                          hive.key(u"start\\b"_s).cells().key + 8);
    });
    add_damage_row("a list longer than its cell", [](hive_builder &hive, hive_damage &damage) {
        damage.list_count(hive.key(u"start"_s).cells().subkey_list, 0xffff);
    });
    add_damage_row("a subkey that is no key", [](hive_builder &hive, hive_damage &damage) {
        damage.signature(hive.key(u"start\\b"_s).cells().key, "vk");
    });
    add_damage_row("a cell that is no list", [](hive_builder &hive, hive_damage &damage) {
        damage.subkey_list(hive.key(u"start"_s).cells().key, hive.key(u"start\\a"_s).cells().key);
    });
}

void tst_registry_keys::lists_nothing_of_a_refused_list()
{
    QFETCH(const damage_operation, operation);
    noted_hive noted;
    noted.hive.key(u"start\\a"_s).dword(u"v"_s, 1);
    noted.hive.key(u"start\\b"_s).dword(u"v"_s, 1);
    hive_damage damage = noted.damage();
    QCOMPARE(noted.walk(damage, u"start"_s, false), 0);
    QCOMPARE(noted.walker.data_records.size(), 2);

    operation(noted.hive, damage);
    QCOMPARE(noted.walk(damage, u"start"_s, false), 0);
    QCOMPARE(noted.walker.data_records.size(), 2);
}

TEST_MAIN(tst_registry_keys)
#include "tst_registry_keys.moc"
