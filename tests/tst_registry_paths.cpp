#include "hive_test_data.h"
#include "noting_walker.h"
#include "regf_format.h"
#include "test_main.h"

#include <QFile>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

using make_path = void (*)(const QString &path);

namespace {

QByteArray small_hive()
{
    hive_builder hive;
    hive.key(u"a"_s).text(u"name"_s, u"A"_s);
    return hive.bytes();
}

} // namespace

// Which hives are opened, and how a key is found by its path.
class tst_registry_paths : public QObject
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
};

void tst_registry_paths::refuses_empty_paths_data()
{
    QTest::addColumn<bool>("has_hive");
    QTest::addColumn<QString>("key_path");
    QTest::addRow("no hive path") << false << u"a"_s;
    QTest::addRow("no key path") << true << u""_s;
    QTest::addRow("neither") << false << u""_s;
}

void tst_registry_paths::refuses_empty_paths()
{
    QFETCH(const bool, has_hive);
    QFETCH(const QString, key_path);
    noted_hive noted;
    write_file(noted.path(), small_hive());
    const QString hive_path = has_hive ? noted.path() : QString();
    QCOMPARE(noted.walker.start_registry_parse(hive_path, key_path, true), -1);
    QVERIFY(noted.walker.data_records.isEmpty());
}

void tst_registry_paths::refuses_what_is_no_hive_data()
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

void tst_registry_paths::refuses_what_is_no_hive()
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

void tst_registry_paths::refuses_a_file_longer_than_any_hive()
{
    noted_hive noted;
    write_file(noted.path(), small_hive());
    QFile file(noted.path());
    QVERIFY(file.resize((qint64(1) << 32) + 1));
    QCOMPARE(noted.walker.start_registry_parse(noted.path(), u"a"_s, true), -1);
}

void tst_registry_paths::refuses_damaged_heads_data()
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

void tst_registry_paths::refuses_damaged_heads()
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

void tst_registry_paths::opens_a_hive_of_any_name_data()
{
    QTest::addColumn<QString>("name");
    QTest::addRow("a blank") << u"NTUSER DAT"_s;
    QTest::addRow("letters beyond ASCII") << u"Über 漢字 \U0001F600.DAT"_s;
    QTest::addRow("a quote and a backslash") << u"it's\\a\"hive"_s;
}

void tst_registry_paths::opens_a_hive_of_any_name()
{
    QFETCH(const QString, name);
    const QTemporaryDir folder;
    write_file(folder.filePath(name), small_hive());
    noting_walker walker;
    QCOMPARE(walker.start_registry_parse(folder.filePath(name), u"a"_s, true), 0);
    QCOMPARE(walker.values, QStringList{u"a:name"_s});
}

void tst_registry_paths::opens_a_hive_through_a_link()
{
    const QTemporaryDir folder;
    write_file(folder.filePath(u"hive"_s), small_hive());
    QVERIFY(QFile::link(u"hive"_s, folder.filePath(u"link"_s)));
    noting_walker walker;
    QCOMPARE(walker.start_registry_parse(folder.filePath(u"link"_s), u"a"_s, true), 0);
    QCOMPARE(walker.values, QStringList{u"a:name"_s});
}

void tst_registry_paths::follows_key_paths_data()
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

void tst_registry_paths::follows_key_paths()
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

void tst_registry_paths::finds_no_key_data()
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

void tst_registry_paths::finds_no_key()
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

void tst_registry_paths::descends_from_any_key()
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

void tst_registry_paths::finds_no_key_beside_a_name_that_cannot_be_decoded()
{
    noted_hive noted;
    noted.hive.root().add_key(QString(QChar(0xd800)));
    noted.hive.key(u"a"_s).text(u"name"_s, u"A"_s);
    QCOMPARE(noted.walk(u"a"_s, true), 0);
    QCOMPARE(noted.walker.records(), QStringList{u"||"_s});
}

TEST_MAIN(tst_registry_paths)
#include "tst_registry_paths.moc"
