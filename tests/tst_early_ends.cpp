#include "application_keys.h"
#include "files.h"
#include "hive_damage.h"
#include "host_process.h"
#include "test_main.h"
#include "worker_fixture.h"

#include <QDir>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// Where reading ends early, the log says so, and the reference host reports it to the examiner.
class tst_early_ends : public QObject
{
    Q_OBJECT

private slots:
    void are_logged_with_hive_and_key_data();
    void are_logged_with_hive_and_key();
    void are_logged_at_the_root_key_data();
    void are_logged_at_the_root_key();
    void leave_out_applications_that_were_not_read();
    void are_logged_for_each_hive();
    void are_logged_with_the_backup_that_was_read();
    void are_logged_while_icons_are_named();
    void are_logged_where_a_table_is_full_data();
    void are_logged_where_a_table_is_full();
    void are_logged_in_one_line_whatever_hive_and_key_are_called();
    void are_not_logged_of_shared_data_within_reason();
    void are_told_by_the_reference_host();
    void are_not_told_for_text_that_looks_like_one();
};

namespace {

const QString again = u"it has the same data read again and again; what follows is not read"_s;
const QString class_id = u"{CEBFF5CD-ACE2-4F4F-9178-9926F41749EA}"_s;

/// A table, and the key whose values fill it.
struct tab_key
{
    QString table;
    QString operation;
    bool is_users;
    QString key;
    QString value;
};

QList<tab_key> tab_keys()
{
    return {
        {u"install_apps_64"_s, u"extract_installed_applications"_s, false,
         uninstall_key + u"\\App"_s, u"DisplayName"_s},
        {u"install_apps_32"_s, u"extract_installed_applications_for_32"_s, false,
         uninstall_key_32 + u"\\App"_s, u"DisplayName"_s},
        {u"registered_apps"_s, u"extract_registered_apps"_s, false, registered_applications_key,
         u"App"_s},
        {u"uninstall_apps"_s, u"extract_uninstall_applications"_s, true,
         user_assist_key + u'\\' + class_id + u"\\Count"_s, u"havafgnyy"_s},
        {u"previously_executed_apps"_s, u"extract_previously_executed_programs"_s, true,
         user_assist_key + u'\\' + class_id + u"\\Count"_s, u"P:\\n.rkr"_s},
        {u"third_party_applications"_s, u"extract_third_party_applications"_s, true,
         compatibility_store_key, u"C:\\a.exe"_s},
        {u"hidden_desktop_icons_app"_s, u"extract_hidden_desktop_icons"_s, true,
         hide_desktop_icons_key + u"\\NewStartPanel"_s, class_id},
    };
}

/// Lets the key list one value of 1 MB as often as `count` says; the hive is laid out then.
QByteArray with_value_listed_often(hive_builder &hive, hive_key &key, const hive_name &name,
                                   int count)
{
    hive.minor_version(3); // data of any size in one cell
    key.binary(name, QByteArray(1000000, 'x'));
    for (int i = 1; i < count; ++i)
        key.binary(u"v"_s, {});
    hive_damage damage(hive.bytes());
    for (int i = 1; i < count; ++i)
        damage.offset_entry(key.cells().value_list, i, key.cells_of_value(0).value);
    return damage.bytes();
}

QByteArray hive_sharing_a_value(const QString &key_path, const hive_name &name, int count)
{
    hive_builder hive;
    return with_value_listed_often(hive, hive.key(key_path), name, count);
}

constexpr int too_often = 100; // the allowance is 64 MiB

/// A worker over a volume with empty hives, of which the tab's is to be replaced.
struct tab_fixture : worker_fixture
{
    explicit tab_fixture(const tab_key &tab)
    {
        volume.user(u"ann"_s);
        volume.software();
        find_files();
        hive_path = tab.is_users ? volume.ntuser_path(u"ann"_s) : volume.software_path();
    }

    QString hive_path;
};

QStringList whole_log_of(const tab_key &tab)
{
    QStringList log = whole_run_log(tab.operation);
    if (tab.table.startsWith("install_apps"_L1))
        log.first() = log.last(); // these two have no other opening
    return log;
}

QStringList log_with(const tab_key &tab, const QStringList &lines)
{
    QStringList log = whole_log_of(tab);
    for (const QString &line : lines)
        log.insert(log.size() - 1, line);
    return log;
}

} // namespace

void tst_early_ends::are_logged_with_hive_and_key_data()
{
    QTest::addColumn<int>("number");
    for (int number = 0; number < tab_keys().size(); ++number)
        QTest::newRow(qPrintable(tab_keys().at(number).table)) << number;
}

void tst_early_ends::are_logged_with_hive_and_key()
{
    QFETCH(const int, number);
    const tab_key tab = tab_keys().at(number);
    tab_fixture fixture(tab);
    const QString path = fixture.hive_path;
    write_file(path, hive_sharing_a_value(tab.key, tab.value, too_often));
    fixture.extract(tab.table);
    QCOMPARE(fixture.log.lines(),
             log_with(tab, {early_end_line(tab.operation, path, tab.key, again)}));
    QVERIFY(fixture.database().row_count(tab.table) < too_often);
}

void tst_early_ends::are_logged_at_the_root_key_data()
{
    are_logged_with_hive_and_key_data();
}

/// The root lists a key of a long name again and again, before the keys on the way.
void tst_early_ends::are_logged_at_the_root_key()
{
    QFETCH(const int, number);
    const tab_key tab = tab_keys().at(number);
    tab_fixture fixture(tab);
    const QString path = fixture.hive_path;
    hive_builder hive;
    hive.root().list_kind(subkey_list::li);
    const hive_key &repeated = hive.root().add_key(hive_name::raw(QByteArray(65000, 'x'), true));
    for (int i = 1; i < 3000; ++i)
        hive.root().add_key(u"x"_s);
    hive.key(tab.key).dword(tab.value, 1);
    hive_damage damage(hive.bytes());
    for (int i = 1; i < 3000; ++i)
        damage.list_entry(hive.root().cells().subkey_list, i, repeated.cells().key);
    write_file(path, damage.bytes());
    fixture.extract(tab.table);
    QCOMPARE(fixture.log.lines(),
             log_with(tab, {early_end_line(tab.operation, path, u"the root key"_s, again)}));
}

// Else they would look as if they had no values.
void tst_early_ends::leave_out_applications_that_were_not_read()
{
    const tab_key tab = tab_keys().first();
    tab_fixture fixture(tab);
    hive_builder hive;
    hive.key(uninstall_key + u"\\a"_s).text(u"DisplayName"_s, u"Intact"_s);
    hive.key(uninstall_key + u"\\c"_s).text(u"DisplayName"_s, u"Behind"_s);
    hive_key &repeating = hive.key(uninstall_key + u"\\b"_s);
    write_file(fixture.hive_path,
               with_value_listed_often(hive, repeating, u"DisplayName"_s, too_often));
    fixture.extract(tab.table);
    QCOMPARE(fixture.database().column(tab.table, u"display_name"_s), QStringList{u"Intact"_s});
    QCOMPARE(fixture.log.lines().size(), 3);
}

void tst_early_ends::are_logged_for_each_hive()
{
    const tab_key tab = tab_keys().at(5);
    worker_fixture fixture;
    const QStringList accounts{u"ann"_s, u"bob"_s, u"eve"_s};
    for (const QString &account : accounts)
        fixture.volume.user(account).key(tab.key).binary(u"C:\\x.exe"_s, {});
    fixture.find_files();
    QStringList lines;
    for (const QString &account : {u"ann"_s, u"eve"_s}) {
        const QString path = fixture.volume.ntuser_path(account);
        write_file(path, hive_sharing_a_value(tab.key, tab.value, too_often));
        lines.append(early_end_line(tab.operation, path, tab.key, again));
    }
    fixture.extract(tab.table);
    QCOMPARE(fixture.log.lines(), log_with(tab, lines));
    QCOMPARE(fixture.database().column(tab.table, u"distinct system_account"_s), accounts);
}

void tst_early_ends::are_logged_with_the_backup_that_was_read()
{
    const tab_key tab = tab_keys().at(2);
    worker_fixture fixture;
    fixture.volume.file(u"Windows/System32/config/SOFTWARE"_s, "no hive");
    fixture.volume.reg_back_software();
    fixture.find_files();
    const QString path = fixture.volume.reg_back_path();
    write_file(path, hive_sharing_a_value(tab.key, tab.value, too_often));
    fixture.extract(tab.table);
    QCOMPARE(fixture.log.lines(),
             log_with(tab, {early_end_line(tab.operation, path, tab.key, again)}));
}

void tst_early_ends::are_logged_while_icons_are_named()
{
    const tab_key tab = tab_keys().last();
    tab_fixture fixture(tab);
    const QString path = fixture.hive_path;
    hive_builder hive;
    hive.key(hide_desktop_icons_key + u"\\NewStartPanel"_s).dword(class_id, 1);
    hive_key &names = hive.key(name_space_key + u'\\' + class_id);
    write_file(path, with_value_listed_often(hive, names, u""_s, too_often));
    fixture.extract(tab.table);
    const QString key = name_space_key + u'\\' + class_id;
    QCOMPARE(fixture.log.lines(), log_with(tab, {early_end_line(tab.operation, path, key, again)}));
    const qint64 rows = fixture.database().row_count(tab.table);
    QVERIFY(rows > 0 && rows < too_often);
}

void tst_early_ends::are_logged_where_a_table_is_full_data()
{
    are_logged_with_hive_and_key_data();
}

void tst_early_ends::are_logged_where_a_table_is_full()
{
    QFETCH(const int, number);
    const tab_key tab = tab_keys().at(number);
    worker_fixture fixture;
    fixture.worker.most_output = {3, 1000000};
    hive_builder &hive = tab.is_users ? fixture.volume.user(u"ann"_s) : fixture.volume.software();
    const bool is_key_a_row = tab.table.startsWith("install_apps"_L1);
    const QString listing = is_key_a_row ? tab.key.section(u'\\', 0, -2) : tab.key;
    for (int i = 0; i < 5; ++i) {
        const QString name = is_key_a_row ? QString::number(i) : tab.value + QString::number(i);
        if (is_key_a_row)
            hive.key(listing).add_key(name);
        else
            hive.key(listing).dword(name, 1);
        for (int icon = 0; icon < 100; ++icon)
            hive.key(name_space_key + u'\\' + name).text(u""_s, u"name"_s);
    }
    fixture.find_files();
    fixture.extract(tab.table);
    const bool is_icons = tab.table == "hidden_desktop_icons_app"_L1;
    QCOMPARE(fixture.database().row_count(tab.table), is_icons ? 5 * 64 : 3);
    const QString path =
        tab.is_users ? fixture.volume.ntuser_path(u"ann"_s) : fixture.volume.software_path();
    const QString key_of_table = fixture.database().column(tab.table, u"reg_path"_s).first();
    QCOMPARE(fixture.log.lines(),
             log_with(tab, {early_end_line(tab.operation, path, key_of_table,
                                           u"the table takes 3 rows and 1000000 bytes of text from "
                                           "a hive; further rows are left out"_s)}));
}

void tst_early_ends::are_logged_in_one_line_whatever_hive_and_key_are_called()
{
    const tab_key tab = tab_keys().at(4);
    const QString name = u"a\nb\x1b[2J\u202e\u2028c 中é😀"_s;
    worker_fixture fixture;
    const QString account = u"an\nn"_s;
    fixture.volume.user(account);
    fixture.find_files();
    QString path = fixture.volume.ntuser_path(account);
    write_file(path, hive_sharing_a_value(user_assist_key + u'\\' + name + u"\\Count"_s, u"v"_s,
                                          too_often));
    fixture.extract(tab.table);
    const QString shown = user_assist_key + u"\\a?b?[2J??c 中é😀\\Count"_s;
    path.replace(u'\n', u'?');
    QCOMPARE(fixture.log.lines(),
             log_with(tab, {early_end_line(tab.operation, path, shown, again)}));
}

void tst_early_ends::are_not_logged_of_shared_data_within_reason()
{
    const tab_key tab = tab_keys().at(5);
    worker_fixture fixture;
    fixture.volume.user(u"ann"_s);
    fixture.find_files();
    write_file(fixture.volume.ntuser_path(u"ann"_s), hive_sharing_a_value(tab.key, tab.value, 60));
    fixture.extract(tab.table);
    QCOMPARE(fixture.database().row_count(tab.table), 60);
    QCOMPARE(fixture.log.lines(), whole_log_of(tab));
}

void tst_early_ends::are_told_by_the_reference_host()
{
    evidence_volume volume;
    volume.file(u"Users/ann/NTUSER.DAT"_s,
                hive_sharing_a_value(compatibility_store_key, u"C:\\a.exe"_s, too_often));
    volume.file(
        u"Users/bob/NTUSER.DAT"_s,
        hive_sharing_a_value(hide_desktop_icons_key + u"\\NewStartPanel"_s, class_id, too_often));
    const QTemporaryDir results;
    host_process host;
    const host_result result = host.run({u"extract"_s, volume.root(), u"--result"_s, results.path(),
                                         u"--quiet"_s, u"--tab"_s, u"third_party_applications"_s,
                                         u"--tab"_s, u"hidden_desktop_icons_app"_s});
    const QString told = u"artifact_host: ended early: "_s + QDir(volume.root()).canonicalPath() +
                         u"/Users/%1/NTUSER.DAT, key %2: "_s + again;
    QCOMPARE(
        result.errors,
        (QStringList{told.arg(u"ann"_s, compatibility_store_key),
                     told.arg(u"bob"_s, hide_desktop_icons_key + u"\\NewStartPanel"_s),
                     u"artifact_host: readings that ended early, so that rows are missing: 2"_s}));
    QCOMPARE(result.exit_code, 6);
}

// The account's folder bears what the plug-in writes before a path.
void tst_early_ends::are_not_told_for_text_that_looks_like_one()
{
    evidence_volume volume;
    volume.folder(u"Users/x]---ENDS EARLY--- y/AppData/Local/Packages"_s);
    const QTemporaryDir results;
    host_process host;
    const host_result result =
        host.run({u"extract"_s, volume.root(), u"--result"_s, results.path(), u"--quiet"_s});
    for (const QString &line : result.errors)
        QVERIFY2(!line.contains("ended early"_L1), qPrintable(line));
}

TEST_MAIN(tst_early_ends)
#include "tst_early_ends.moc"
