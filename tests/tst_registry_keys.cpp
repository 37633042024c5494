#include "hive_test_data.h"
#include "noting_walker.h"
#include "regf_format.h"
#include "test_main.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// How the subkeys of a key are listed and walked.
class tst_registry_keys : public QObject
{
    Q_OBJECT

private slots:
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
