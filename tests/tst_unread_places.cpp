#include "application_keys.h"
#include "files.h"
#include "hive_damage.h"
#include "log_line.h"
#include "parse_hidden_desktop_icons.h"
#include "parse_installed_applications.h"
#include "parse_user_assist.h"
#include "test_main.h"
#include "worker_fixture.h"

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What a walk says of the places that it cannot read, and how an extraction logs it.
class tst_unread_places : public QObject
{
    Q_OBJECT

private slots:
    void hide_a_key_data();
    void hide_a_key();
    void lie_at_the_levels_that_are_listed_data();
    void lie_at_the_levels_that_are_listed();
    void are_counted_behind_the_first();
    void are_told_once_for_each_key();
    void have_values_whose_names_cannot_be_read();
    void have_subkeys_whose_names_cannot_be_read();
    void are_keys_below_themselves();
    void hide_the_name_of_an_icon();
    void are_cut_where_their_path_is_very_long();
    void are_those_of_the_last_walk();
    void are_none_in_large_intact_hives();
    void are_none_behind_an_early_end();

    void are_logged_on_request_only_data();
    void are_logged_on_request_only();
    void are_hives_that_do_not_open_data();
    void are_hives_that_do_not_open();
    void are_logged_for_the_backup_that_was_read();
    void are_logged_in_one_line();
};

namespace {

const auto lone_surrogate = hive_name::lone_surrogate();

template<typename walker_type>
QStringList sentences_of_walk(const QByteArray &hive, const QString &key_path, bool own_values)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"hive"_s);
    write_file(path, hive);
    walker_type walker;
    walker.start_registry_parse(path, key_path, own_values);
    return walker.unread().sentences();
}

/// The hive with more values of the key than its list has.
QByteArray with_unlisted_values(hive_builder &hive, const QList<hive_key *> &keys)
{
    for (hive_key *key : keys)
        key->text(u"value"_s, u"text"_s);
    hive_damage damage(hive.bytes());
    for (const hive_key *key : keys)
        damage.value_count(key->cells().key, 1000);
    return damage.bytes();
}

QString content_unlisted(const QString &key)
{
    return u"the content of %1 cannot be listed, so it is not read"_s.arg(key);
}

QString names_unread(const QString &key)
{
    return u"the content of %1 holds names that cannot be read, so part is not read"_s.arg(key);
}

} // namespace

void tst_unread_places::hide_a_key_data()
{
    QTest::addColumn<QString>("sibling_of_undecodable");
    QTest::addColumn<QString>("key_path");
    QTest::addColumn<QStringList>("sentences");
    const auto in = u"the keys in %1 cannot be listed, so A\\B\\C is not read"_s;
    QTest::newRow("readable key") << QString() << u"A\\B\\C"_s << QStringList();
    QTest::newRow("key of other letter case") << QString() << u"a\\b\\c"_s << QStringList();
    QTest::newRow("absent key") << QString() << u"A\\none\\C"_s << QStringList();
    QTest::newRow("undecodable name in the key, whose own values are read")
        << u"A\\B\\C\\D"_s << u"A\\B\\C"_s << QStringList();
    QTest::newRow("undecodable name next to the key's parent")
        << u"A\\B"_s << u"A\\B\\C"_s << QStringList{in.arg("A"_L1)};
    QTest::newRow("undecodable name next to the key")
        << u"A\\B\\C"_s << u"A\\B\\C"_s << QStringList{in.arg("A\\B"_L1)};
    QTest::newRow("undecodable name next to the first key")
        << u"A"_s << u"A\\B\\C"_s << QStringList{in.arg("the root key"_L1)};
    QTest::newRow("undecodable name elsewhere") << u"X\\Y"_s << u"A\\B\\C"_s << QStringList();
}

void tst_unread_places::hide_a_key()
{
    QFETCH(const QString, sibling_of_undecodable);
    QFETCH(const QString, key_path);
    QFETCH(const QStringList, sentences);
    hive_builder hive;
    if (!sibling_of_undecodable.isEmpty()) {
        const QString parent = sibling_of_undecodable.section(u'\\', 0, -2);
        (parent.isEmpty() ? hive.root() : hive.key(parent)).add_key(lone_surrogate);
        hive.key(sibling_of_undecodable);
    }
    hive.key(u"A\\B\\C"_s).text(u"value"_s, u"text"_s);
    QCOMPARE(sentences_of_walk<registry>(hive.bytes(), key_path, true), sentences);
}

void tst_unread_places::lie_at_the_levels_that_are_listed_data()
{
    QTest::addColumn<bool>("own_values");
    QTest::addColumn<QString>("damaged");
    QTest::addColumn<bool>("is_told");
    QTest::newRow("values of the key itself") << true << u"A"_s << true;
    QTest::newRow("values of a subkey, which are not listed") << true << u"A\\B"_s << false;
    QTest::newRow("values of the key itself, which are not listed") << false << u"A"_s << false;
    QTest::newRow("values of a subkey with subkeys, which are not listed")
        << false << u"A\\B"_s << false;
    QTest::newRow("values of a subkey without subkeys") << false << u"A\\X"_s << true;
    QTest::newRow("values two keys below") << false << u"A\\B\\C"_s << true;
    QTest::newRow("values four keys below") << false << u"A\\B\\C\\D\\E"_s << true;
    QTest::newRow("values of another key") << false << u"B"_s << false;
}

void tst_unread_places::lie_at_the_levels_that_are_listed()
{
    QFETCH(const bool, own_values);
    QFETCH(const QString, damaged);
    QFETCH(const bool, is_told);
    hive_builder hive;
    hive.key(u"A\\B\\C\\D\\E"_s);
    hive.key(u"A\\X"_s);
    const QByteArray bytes = with_unlisted_values(hive, {&hive.key(damaged)});
    QCOMPARE(sentences_of_walk<registry>(bytes, u"A"_s, own_values),
             is_told ? QStringList{content_unlisted(damaged)} : QStringList());
}

void tst_unread_places::are_counted_behind_the_first()
{
    hive_builder hive;
    QList<hive_key *> keys;
    for (const QString &name : {u"one"_s, u"three"_s, u"two"_s})
        keys.append(&hive.key(u"A\\"_s + name));
    QCOMPARE(sentences_of_walk<parse_installed_applications>(with_unlisted_values(hive, keys),
                                                             u"A"_s, false),
             QStringList{content_unlisted(u"A\\one and of 2 more keys"_s)});
}

// The key's subkeys are listed twice: whether there are any, and to read them.
void tst_unread_places::are_told_once_for_each_key()
{
    hive_builder hive;
    const hive_key &key = hive.key(u"A\\B"_s);
    hive.key(u"A\\B\\C"_s);
    const QByteArray bytes = hive_damage(hive.bytes()).subkey_count(key.cells().key, 1000).bytes();
    QCOMPARE(sentences_of_walk<registry>(bytes, u"A"_s, false),
             QStringList{content_unlisted(u"A\\B"_s)});
}

void tst_unread_places::have_values_whose_names_cannot_be_read()
{
    hive_builder hive;
    hive.key(u"A"_s).text(lone_surrogate, u"text"_s);
    QCOMPARE(sentences_of_walk<registry>(hive.bytes(), u"A"_s, true),
             QStringList{names_unread(u"A"_s)});
}

void tst_unread_places::have_subkeys_whose_names_cannot_be_read()
{
    hive_builder hive;
    for (int i = 0; i < 5000; ++i)
        hive.key(u"A"_s).add_key(lone_surrogate);
    hive.key(u"A\\B"_s).add_key(lone_surrogate);
    QCOMPARE(sentences_of_walk<parse_user_assist>(hive.bytes(), u"A"_s, false),
             QStringList{names_unread(u"A and of 1 more keys"_s)});
}

void tst_unread_places::are_keys_below_themselves()
{
    hive_builder hive;
    const hive_key &application = hive.key(u"A\\App"_s);
    const hive_key &below = hive.key(u"A\\App\\1\\2"_s);
    hive.key(u"A\\App\\1\\2\\3"_s);
    hive_damage damage(hive.bytes());
    damage.share_subkeys(below.cells().key, application.cells().key);
    QCOMPARE(sentences_of_walk<registry>(damage.bytes(), u"A"_s, false),
             QStringList{u"A\\App\\1 is listed more than once, so part of it may not be read"_s});
}

void tst_unread_places::hide_the_name_of_an_icon()
{
    hive_builder hive;
    hive_key &first = hive.key(name_space_key + u"\\{1}"_s);
    hive.key(name_space_key + u"\\{2}"_s).text(u""_s, u"name"_s);
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"hive"_s);
    write_file(path, with_unlisted_values(hive, {&first}));
    QList<registry::struct_data> class_ids;
    for (const QString &name : {u"{1}"_s, u"{2}"_s, u"{absent}"_s, u"{1}"_s})
        class_ids.append({name, {}, {}});
    parse_hidden_desktop_icons walker;
    walker.look_up_icon_names(path, class_ids, [](qsizetype, unsigned long) { return true; });
    QCOMPARE(walker.unread().sentences(),
             QStringList{content_unlisted(name_space_key + u"\\{1}"_s)});
}

void tst_unread_places::are_cut_where_their_path_is_very_long()
{
    hive_builder hive;
    hive_key &key = hive.key(u"A"_s).add_key(hive_name::raw(QByteArray(65535, 'x'), true));
    const QStringList sentences =
        sentences_of_walk<registry>(with_unlisted_values(hive, {&key}), u"A"_s, false);
    QCOMPARE(sentences.size(), 1);
    QVERIFY(sentences.first().startsWith(u"the content of …"_s));
    QVERIFY(sentences.first().size() < 2000);
}

void tst_unread_places::are_those_of_the_last_walk()
{
    hive_builder hive;
    hive_key &damaged = hive.key(u"A\\B"_s);
    hive.key(u"C\\D"_s);
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"hive"_s);
    write_file(path, with_unlisted_values(hive, {&damaged}));
    registry walker;
    walker.start_registry_parse(path, u"A"_s, false);
    QCOMPARE(walker.unread().sentences().size(), 1);
    walker.start_registry_parse(path, u"C"_s, false);
    QCOMPARE(walker.unread().sentences(), QStringList());
}

// Hives of little else than what is listed, in as short records as Windows makes.
void tst_unread_places::are_none_in_large_intact_hives()
{
    constexpr int count = 20000;
    hive_builder hive;
    hive_key &entries = hive.key(user_assist_key).add_key(QString(255, u'中')).key(u"Count"_s);
    hive_key &long_list = hive.key(uninstall_key).list_kind(subkey_list::ri);
    for (int i = 0; i < count; ++i) {
        const QString number = QString::number(i);
        hive.key(registered_applications_key).text(number, u"\\a"_s);
        long_list.add_key(number).dword(u"v"_s, 1).text(u"DisplayName"_s, number);
        entries.binary(number, {});
    }
    const QByteArray bytes = hive.bytes();
    const QStringList none;
    QCOMPARE(sentences_of_walk<registry>(bytes, registered_applications_key, true), none);
    QCOMPARE(sentences_of_walk<parse_installed_applications>(bytes, uninstall_key, false), none);
    QCOMPARE(sentences_of_walk<parse_user_assist>(bytes, user_assist_key, false), none);
}

// The log has a line of its own for that.
void tst_unread_places::are_none_behind_an_early_end()
{
    hive_builder hive;
    hive_key &parent = hive.key(u"A"_s).list_kind(subkey_list::li);
    const hive_key &key = parent.add_key(hive_name::raw(QByteArray(65535, 'x'), true));
    for (int i = 1; i < 60000; ++i)
        parent.add_key(u"x"_s);
    hive_damage damage(hive.bytes());
    damage.list_only(parent.cells().subkey_list, key.cells().key);
    QCOMPARE(sentences_of_walk<registry>(damage.bytes(), u"A"_s, false), QStringList());
    QCOMPARE(sentences_of_walk<registry>(damage.bytes(), u"A\\B"_s, false), QStringList());
}

namespace {

/// A worker that is asked to report, or not.
struct reporting_fixture : worker_fixture
{
    explicit reporting_fixture(bool is_asked)
    {
        extraction_options options;
        options.report_unread = is_asked;
        worker.winos_set_extraction_options(options);
    }

    /// The lines of the tab's log that say what is unread, without the mark.
    QStringList reported(const QString &tab)
    {
        extract(tab);
        QStringList lines = log.messages().filter(u"---UNREAD---"_s);
        for (QString &line : lines)
            line = line.section(u"---UNREAD--- "_s, 1);
        return lines;
    }
};

struct unlisted_key
{
    QString tab;
    QString key;
    bool is_users;
};

const QList<unlisted_key> &unlisted_keys()
{
    static const QList<unlisted_key> keys = {
        {u"install_apps_64"_s, uninstall_key + u"\\App"_s, false},
        {u"install_apps_32"_s, uninstall_key_32 + u"\\App"_s, false},
        {u"registered_apps"_s, registered_applications_key, false},
        {u"uninstall_apps"_s, user_assist_key + u"\\{1}\\Count"_s, true},
        {u"previously_executed_apps"_s, user_assist_key + u"\\{1}\\Count"_s, true},
        {u"third_party_applications"_s, compatibility_store_key, true},
        {u"hidden_desktop_icons_app"_s, hide_desktop_icons_key + u"\\NewStartPanel"_s, true}};
    return keys;
}

} // namespace

void tst_unread_places::are_logged_on_request_only_data()
{
    QTest::addColumn<int>("number");
    for (int number = 0; number < unlisted_keys().size(); ++number)
        QTest::newRow(qPrintable(unlisted_keys().at(number).tab)) << number;
}

void tst_unread_places::are_logged_on_request_only()
{
    QFETCH(const int, number);
    const unlisted_key unlisted = unlisted_keys().at(number);
    for (const bool is_asked : {false, true}) {
        reporting_fixture fixture(is_asked);
        fixture.volume.user(u"ann"_s);
        fixture.volume.software();
        fixture.find_files();
        const QString path = unlisted.is_users ? fixture.volume.ntuser_path(u"ann"_s)
                                               : fixture.volume.software_path();
        hive_builder hive;
        write_file(path, with_unlisted_values(hive, {&hive.key(unlisted.key)}));
        QCOMPARE(fixture.reported(unlisted.tab),
                 is_asked ? QStringList{path + u": "_s + content_unlisted(unlisted.key)}
                          : QStringList());
    }
}

void tst_unread_places::are_hives_that_do_not_open_data()
{
    QTest::addColumn<QString>("tab");
    for (const unlisted_key &unlisted : unlisted_keys())
        QTest::newRow(qPrintable(unlisted.tab)) << unlisted.tab;
}

void tst_unread_places::are_hives_that_do_not_open()
{
    QFETCH(const QString, tab);
    reporting_fixture fixture(true);
    fixture.volume.user(u"ann"_s);
    fixture.volume.software();
    fixture.find_files();
    write_file(fixture.volume.ntuser_path(u"ann"_s), "no hive");
    write_file(fixture.volume.software_path(), "no hive");
    const bool is_users = std::any_of(
        unlisted_keys().begin(), unlisted_keys().end(),
        [&tab](const unlisted_key &known) { return known.tab == tab && known.is_users; });
    const QString path =
        is_users ? fixture.volume.ntuser_path(u"ann"_s) : fixture.volume.software_path();
    QCOMPARE(fixture.reported(tab),
             QStringList{path + u": cannot be opened as a registry hive, so it is not read"_s});
}

void tst_unread_places::are_logged_for_the_backup_that_was_read()
{
    reporting_fixture fixture(true);
    fixture.volume.file(u"Windows/System32/config/SOFTWARE"_s, "no hive");
    fixture.volume.reg_back_software().key(uninstall_key).add_key(lone_surrogate);
    fixture.find_files();
    QCOMPARE(fixture.reported(u"install_apps_64"_s),
             QStringList{fixture.volume.path(u"Windows/System32/config/RegBack/SOFTWARE"_s) +
                         u": "_s + names_unread(uninstall_key)});
}

void tst_unread_places::are_logged_in_one_line()
{
    reporting_fixture fixture(true);
    fixture.volume.software().key(uninstall_key).add_key(u"a\nb"_s).text(lone_surrogate, u"text"_s);
    fixture.find_files();
    QCOMPARE(fixture.reported(u"install_apps_64"_s),
             QStringList{fixture.volume.software_path() + u": "_s +
                         names_unread(uninstall_key + u"\\a?b"_s)});
}

TEST_MAIN(tst_unread_places)
#include "tst_unread_places.moc"
