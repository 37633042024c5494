#include "key_check.h"

#include "application_keys.h"
#include "files.h"
#include "hive_builder.h"
#include "hive_damage.h"
#include "plugin_tabs.h"
#include "test_main.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace evidence;
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

/// Adds values, or subkeys with one, to the keys of a tab that the tests of this file do not name.
void add_parts_of_unknown_keys(hive_builder &hive, const host_tab &tab, int count)
{
    static const QStringList known{uninstall_key,           uninstall_key_32,
                                   user_assist_key,         registered_applications_key,
                                   compatibility_store_key, hide_desktop_icons_key,
                                   name_space_key};
    for (const listed_key &key : tab.keys) {
        for (int i = 0; i < count && !known.contains(key.key_path); ++i) {
            hive_key &parent = hive.key(key.key_path);
            hive_key &place =
                key.first_value_level == 0 ? parent : parent.add_key(QString::number(i));
            place.text(QString::number(i), u"\\a"_s);
        }
    }
}

/// A list of one key again and again, which the budget of a walk ends.
QByteArray hive_with_endless_list(const QString &beside)
{
    hive_builder hive;
    hive_key &parent = hive.key(u"A"_s).list_kind(subkey_list::li);
    const hive_key &key = parent.add_key(hive_name::raw(QByteArray(65535, 'x'), true));
    for (int i = 1; i < 60000; ++i)
        parent.add_key(u"x"_s);
    const hive_key &refused = hive.key(beside).text(u"value"_s, u"text"_s);
    hive_damage damage(hive.bytes());
    damage.list_only(parent.cells().subkey_list, key.cells().key);
    damage.value_count(refused.cells().key, 1000);
    return damage.bytes();
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
    void finds_nothing_in_large_intact_hives();
    void tells_what_hides_the_name_of_an_icon();
    void says_nothing_of_lists_that_are_read_again_and_again();
    void looks_at_each_key_anew();
    void takes_an_intact_index_as_it_is();
    void tells_of_keys_that_are_listed_again();
    void takes_names_that_libhivex_refuses_as_intact();
    void names_eight_levels_of_a_deep_place_data();
    void names_eight_levels_of_a_deep_place();
    void names_no_place_beyond_measure_data();
    void names_no_place_beyond_measure();
    void tells_when_the_hive_does_not_open();
};

void tst_key_check::tells_what_hides_a_key_data()
{
    QTest::addColumn<QString>("sibling_of_undecodable");
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
    QFETCH(QString, sibling_of_undecodable);
    QFETCH(QString, key_path);
    QFETCH(QStringList, findings);
    hive_builder hive;
    if (!sibling_of_undecodable.isEmpty()) {
        const QString parent = sibling_of_undecodable.section(u'\\', 0, -2);
        (parent.isEmpty() ? hive.root() : hive.key(parent)).add_key(lone_surrogate);
        hive.key(sibling_of_undecodable);
    }
    hive.key(u"A\\B\\C"_s).text(u"value"_s, u"text"_s);
    const QTemporaryDir folder;
    hive.write_to(folder.filePath(u"hive"_s));
    QCOMPARE(key_findings(folder.filePath(u"hive"_s), {{key_path, 0, 1}}), findings);
}

void tst_key_check::tells_each_reason_once()
{
    hive_builder hive;
    hive_key &first = hive.key(u"A"_s).text(u"value"_s, u"text"_s);
    hive_key &second = hive.key(u"B"_s).text(u"value"_s, u"text"_s);
    hive_damage damage(hive.bytes());
    damage.value_count(first.cells().key, 1000).value_count(second.cells().key, 1000);
    const checked_file file(damage.bytes());
    QCOMPARE(key_findings(file.path(), {{u"A"_s, 0, 1}, {u"B"_s, 0, 1}, {u"A"_s, 0, 1}}),
             (QStringList{u"the content of A cannot be listed, so it is not read"_s,
                          u"the content of B cannot be listed, so it is not read"_s}));
}

void tst_key_check::looks_at_the_levels_that_are_listed_data()
{
    QTest::addColumn<int>("first_value_level");
    QTest::addColumn<int>("last_level");
    QTest::addColumn<QString>("damaged");
    QTest::addColumn<bool>("is_reported");
    QTest::newRow("values of the key itself") << 0 << 0 << u"A"_s << true;
    QTest::newRow("values of a subkey, which are not listed") << 0 << 0 << u"A\\B"_s << false;
    QTest::newRow("values of a subkey") << 1 << 1 << u"A\\B"_s << true;
    QTest::newRow("values of the key itself, which are not listed") << 1 << 1 << u"A"_s << false;
    QTest::newRow("values of a subkey above those that are listed")
        << 2 << listed_key::all_levels << u"A\\B"_s << false;
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
    QFETCH(bool, is_reported);
    hive_builder hive;
    hive.key(u"A\\B\\C\\D\\E"_s);
    hive_key &key = hive.key(damaged).text(u"value"_s, u"text"_s);
    hive.bytes();
    checked_file file(hive_damage(hive.bytes()).value_count(key.cells().key, 1000).bytes());
    const QStringList reported{
        u"the content of %1 cannot be listed, so it is not read"_s.arg(damaged)};
    QCOMPARE(file.findings({u"A"_s, first_value_level, last_level}),
             is_reported ? reported : QStringList());
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
    for (const host_tab &tab : plugin_tabs())
        add_parts_of_unknown_keys(hive, tab, count);
    const checked_file file(hive.bytes());
    for (const host_tab &tab : plugin_tabs())
        QCOMPARE(key_findings(file.path(), tab.keys), QStringList());
}

void tst_key_check::tells_what_hides_the_name_of_an_icon()
{
    hive_builder hive;
    hive_key &hidden = hive.key(hide_desktop_icons_key + u"\\NewStartPanel"_s);
    hidden.dword(u"{1}"_s, 1).dword(u"{2}"_s, 1).dword(u"{absent}"_s, 1).dword(u""_s, 1);
    hive_key &first = hive.key(name_space_key + u"\\{1}"_s).text(u""_s, u"name"_s);
    hive.key(name_space_key + u"\\{2}"_s).text(u""_s, u"name"_s);
    const QList<listed_key> keys =
        tabs_named(plugin_tabs(), {u"hidden_desktop_icons_app"_s}).first().keys;
    QCOMPARE(key_findings(checked_file(hive.bytes()).path(), keys), QStringList());
    hive_damage damage(hive.bytes());
    damage.value_count(first.cells().key, 1000);
    QCOMPARE(key_findings(checked_file(damage.bytes()).path(), keys),
             QStringList{u"the content of %1\\{1} cannot be listed, so it is not read"_s.arg(
                 name_space_key)});
}

// The plug-in says where it stops reading such a key. What stands behind is not looked at.
void tst_key_check::says_nothing_of_lists_that_are_read_again_and_again()
{
    const checked_file file(hive_with_endless_list(u"B"_s));
    QCOMPARE(file.findings({u"A\\B"_s, 0, 0}), QStringList());
    QCOMPARE(file.findings({u"A"_s, 1, 1}), QStringList());
}

void tst_key_check::looks_at_each_key_anew()
{
    const checked_file file(hive_with_endless_list(u"B"_s));
    QCOMPARE(key_findings(file.path(), {{u"A"_s, 1, 1}, {u"B"_s, 0, 0}}),
             QStringList{u"the content of B cannot be listed, so it is not read"_s});
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

void tst_key_check::names_eight_levels_of_a_deep_place_data()
{
    QTest::addColumn<QString>("below");
    QTest::newRow("eight levels") << u"\\1\\2\\3\\4\\5\\6\\7\\8"_s;
    QTest::newRow("nine levels") << u"\\1\\2\\3\\4\\5\\6\\7\\8\\9"_s;
}

void tst_key_check::names_eight_levels_of_a_deep_place()
{
    QFETCH(const QString, below);
    hive_builder hive;
    const hive_key &key = hive.key(u"A"_s + below).text(u"value"_s, u"text"_s);
    checked_file file(hive_damage(hive.bytes()).value_count(key.cells().key, 1000).bytes());
    QCOMPARE(file.findings({u"A"_s, 0, listed_key::all_levels}),
             QStringList{u"the content of A\\1\\2\\3\\4\\5\\6\\7\\8 cannot be listed, "
                         "so it is not read"_s});
}

void tst_key_check::names_no_place_beyond_measure_data()
{
    QTest::addColumn<int>("name_length");
    QTest::addColumn<QString>("shown_name");
    QTest::newRow("the longest that is shown whole") << 498 << QString(498, u'x');
    QTest::newRow("one letter more") << 499 << QString(498, u'x') + u'…';
    QTest::newRow("the longest") << 65535 << QString(498, u'x') + u'…';
}

void tst_key_check::names_no_place_beyond_measure()
{
    QFETCH(const int, name_length);
    QFETCH(const QString, shown_name);
    hive_builder hive;
    hive_key &key = hive.key(u"A"_s).add_key(hive_name::raw(QByteArray(name_length, 'x'), true));
    key.text(u"value"_s, u"text"_s);
    hive.bytes();
    checked_file file(hive_damage(hive.bytes()).value_count(key.cells().key, 1000).bytes());
    QCOMPARE(file.findings({u"A"_s, 1, 1}), QStringList{u"the content of A\\"_s + shown_name +
                                                        u" cannot be listed, so it is not read"_s});
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
