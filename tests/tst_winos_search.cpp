#include "log_line.h"
#include "log_line_hook.h"
#include "test_main.h"
#include "worker_fixture.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

QStringList find_log(const QStringList &messages)
{
    return log_lines(u"windows_installed_applications_winos::find_source_file"_s, messages);
}

const QString find_starts = u"[find_source_file]---STARTS---"_s;
const QString find_ends = u"[find_source_file]---ENDS---"_s;

/// Writes the machine's two hives and, for each account, a hive and a package folder.
void write_volume(evidence_volume &volume, const QStringList &accounts)
{
    volume.system();
    volume.software();
    for (const QString &account : accounts) {
        volume.user(account);
        volume.package(account, u""_s);
    }
    volume.write();
}

/// Looks for the files of five accounts, of which the named file is missing, and cancels in the
/// line that says so.
void find_and_cancel_at(worker_fixture &fixture, const QString &missing)
{
    const QStringList accounts = {u"u1"_s, u"u2"_s, u"u3"_s, u"u4"_s, u"u5"_s};
    write_volume(fixture.volume, accounts);
    const QString path = fixture.volume.path(missing);
    QVERIFY(missing.endsWith(u'/') ? QDir().rmdir(path) : QFile::remove(path));
    fixture.set_source(fixture.volume.root(), accounts);
    const log_line_hook hook([&](const QString &line) {
        if (line.endsWith(path))
            fixture.worker.winos_cancel_extraction();
    });
    fixture.worker.find_source_file();
}

} // namespace

// How the worker finds the hives and folders of a source.
class tst_winos_search : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }
    void finds_the_hives_and_the_users_files();
    void logs_what_is_missing_data();
    void logs_what_is_missing();
    void leaves_the_backup_of_the_software_hive_alone();
    void takes_whatever_stands_at_the_place_of_a_hive();
    void takes_users_from_the_account_list_alone();
    void finds_users_of_every_script_and_odd_names();
    void leaves_upper_and_lower_case_to_the_file_system();
    void joins_its_paths_to_the_root_as_it_stands();
    void forgets_what_an_earlier_search_found();
    void forgets_the_accounts_of_an_earlier_source();
    void stops_before_the_first_account_when_cancelled();
    void stops_before_the_third_account_when_cancelled_in_the_second();
    void finishes_the_account_in_which_it_is_cancelled();
};

void tst_winos_search::finds_the_hives_and_the_users_files()
{
    worker_fixture fixture;
    write_volume(fixture.volume, {u"eve"_s, u"ann"_s});
    const evidence_volume &volume = fixture.volume;
    fixture.set_source(volume.root(), volume.accounts());
    fixture.worker.winos_find_artifacts_source();

    QCOMPARE(fixture.worker.hive_path_system, volume.system_path());
    QCOMPARE(fixture.worker.hive_path_software, volume.software_path());
    QCOMPARE(fixture.worker.ntuser_path_list,
             (QStringList{volume.ntuser_path(u"eve"_s), volume.ntuser_path(u"ann"_s)}));
    QCOMPARE(fixture.worker.packages_dir_list,
             (QStringList{volume.packages_path(u"eve"_s), volume.packages_path(u"ann"_s)}));
    QCOMPARE(fixture.log.lines(), find_log({find_starts, find_ends}));
}

void tst_winos_search::logs_what_is_missing_data()
{
    QTest::addColumn<QString>("missing");
    QTest::addColumn<QString>("line");
    QTest::newRow("the SYSTEM hive") << u"Windows/System32/config/SYSTEM"_s
                                     << u"[find_source_file] hivepath_sys -- FILE NOT EXISTS"_s;
    QTest::newRow("the SOFTWARE hive") << u"Windows/System32/config/SOFTWARE"_s
                                       << u"[find_source_file]  hivepath_soft -- FILE NOT EXISTS"_s;
    QTest::newRow("a user's hive")
        << u"Users/ann/NTUSER.DAT"_s << u"[find_source_file] ntuser_path -- FILE NOT EXISTS"_s;
    QTest::newRow("a user's package folder")
        << u"Users/ann/AppData/Local/Packages/"_s << u"[find_source_file]  -- FILE NOT EXISTS"_s;
}

void tst_winos_search::logs_what_is_missing()
{
    QFETCH(const QString, missing);
    QFETCH(const QString, line);
    worker_fixture fixture;
    write_volume(fixture.volume, {u"ann"_s, u"bob"_s});
    const QString path = fixture.volume.path(missing);
    QVERIFY(missing.endsWith(u'/') ? QDir().rmdir(path) : QFile::remove(path));
    fixture.set_source(fixture.volume.root(), {u"ann"_s, u"bob"_s});
    fixture.worker.find_source_file();

    QCOMPARE(fixture.log.lines(), find_log({find_starts, line + path, find_ends}));
    QStringList found = {fixture.worker.hive_path_system, fixture.worker.hive_path_software};
    found += fixture.worker.ntuser_path_list + fixture.worker.packages_dir_list;
    found.removeAll(u""_s);
    QStringList expected = {
        fixture.volume.system_path(),           fixture.volume.software_path(),
        fixture.volume.ntuser_path(u"ann"_s),   fixture.volume.ntuser_path(u"bob"_s),
        fixture.volume.packages_path(u"ann"_s), fixture.volume.packages_path(u"bob"_s)};
    expected.removeAll(path);
    QCOMPARE(found, expected);
}

void tst_winos_search::leaves_the_backup_of_the_software_hive_alone()
{
    worker_fixture fixture;
    fixture.volume.reg_back_software();
    fixture.find_files();
    QCOMPARE(fixture.worker.hive_path_software, QString());
}

void tst_winos_search::takes_whatever_stands_at_the_place_of_a_hive()
{
    worker_fixture fixture;
    fixture.volume.folder(u"Windows/System32/config/SYSTEM"_s);
    fixture.volume.file(u"Windows/System32/config/SOFTWARE"_s, "no hive");
    fixture.volume.folder(u"Users/ann/NTUSER.DAT"_s);
    fixture.volume.file(u"Users/bob/NTUSER.DAT"_s);
    fixture.volume.folder(u"Users/bob/AppData/Local/Packages"_s);
    fixture.set_source(fixture.volume.root(), {u"ann"_s, u"bob"_s});
    fixture.worker.find_source_file();
    QCOMPARE(fixture.worker.hive_path_system, fixture.volume.system_path());
    QCOMPARE(fixture.worker.hive_path_software, fixture.volume.software_path());
    QCOMPARE(fixture.worker.ntuser_path_list, (QStringList{fixture.volume.ntuser_path(u"ann"_s),
                                                           fixture.volume.ntuser_path(u"bob"_s)}));
    QCOMPARE(fixture.worker.packages_dir_list, QStringList{fixture.volume.packages_path(u"bob"_s)});
}

void tst_winos_search::takes_users_from_the_account_list_alone()
{
    worker_fixture fixture;
    write_volume(fixture.volume, {u"ann"_s});
    fixture.set_source(fixture.volume.root(), {});
    fixture.worker.find_source_file();
    QCOMPARE(fixture.worker.ntuser_path_list, QStringList());
    QCOMPARE(fixture.worker.packages_dir_list, QStringList());
    QCOMPARE(fixture.log.lines(), find_log({find_starts, find_ends}));
}

void tst_winos_search::finds_users_of_every_script_and_odd_names()
{
    const QStringList accounts = {u"Żółć"_s,    u"山田太郎"_s,   u"مريم"_s,   u"user\U0001F600"_s,
                                  u" blank "_s, u"per%20cent"_s, u"o'neil"_s, u"a;b\"c"_s};
    worker_fixture fixture;
    write_volume(fixture.volume, accounts);
    fixture.set_source(fixture.volume.root(), accounts);
    fixture.worker.find_source_file();
    QStringList hives;
    QStringList folders;
    for (const QString &account : accounts) {
        hives.append(fixture.volume.ntuser_path(account));
        folders.append(fixture.volume.packages_path(account));
    }
    QCOMPARE(fixture.worker.ntuser_path_list, hives);
    QCOMPARE(fixture.worker.packages_dir_list, folders);
}

void tst_winos_search::leaves_upper_and_lower_case_to_the_file_system()
{
    worker_fixture fixture;
    fixture.volume.file(u"windows/system32/CONFIG/software"_s);
    const bool same_to_the_file_system =
        QFileInfo::exists(fixture.volume.path(u"WINDOWS/SYSTEM32/config/SOFTWARE"_s));
    fixture.find_files();
    QCOMPARE(fixture.worker.hive_path_software,
             same_to_the_file_system ? fixture.volume.software_path() : QString());
}

void tst_winos_search::joins_its_paths_to_the_root_as_it_stands()
{
    worker_fixture fixture;
    write_volume(fixture.volume, {u"ann"_s});
    const QString root = fixture.volume.root().chopped(1);
    fixture.set_source(root, {u"ann"_s});
    fixture.worker.find_source_file();
    QCOMPARE(fixture.log.lines(),
             find_log({find_starts,
                       u"[find_source_file] hivepath_sys -- FILE NOT EXISTS"_s + root +
                           u"Windows/System32/config/SYSTEM"_s,
                       u"[find_source_file]  hivepath_soft -- FILE NOT EXISTS"_s + root +
                           u"Windows/System32/config/SOFTWARE"_s,
                       u"[find_source_file] ntuser_path -- FILE NOT EXISTS"_s + root +
                           u"Users/ann/NTUSER.DAT"_s,
                       u"[find_source_file]  -- FILE NOT EXISTS"_s + root +
                           u"Users/ann/AppData/Local/Packages/"_s,
                       find_ends}));
    QCOMPARE(fixture.worker.hive_path_software, QString());
    QCOMPARE(fixture.worker.ntuser_path_list, QStringList());
}

void tst_winos_search::forgets_what_an_earlier_search_found()
{
    worker_fixture fixture;
    write_volume(fixture.volume, {u"ann"_s});
    fixture.find_files();
    QCOMPARE(fixture.worker.ntuser_path_list.size(), 1);
    fixture.worker.find_source_file();
    QCOMPARE(fixture.worker.ntuser_path_list.size(), 1);
    QCOMPARE(fixture.worker.packages_dir_list.size(), 1);

    const evidence_volume empty;
    fixture.set_source(empty.root(), {u"ann"_s});
    fixture.worker.find_source_file();
    QCOMPARE(fixture.worker.hive_path_system, QString());
    QCOMPARE(fixture.worker.hive_path_software, QString());
    QCOMPARE(fixture.worker.ntuser_path_list, QStringList());
    QCOMPARE(fixture.worker.packages_dir_list, QStringList());
}

void tst_winos_search::forgets_the_accounts_of_an_earlier_source()
{
    worker_fixture fixture;
    write_volume(fixture.volume, {u"ann"_s, u"bob"_s});
    fixture.set_source(fixture.volume.root(), {u"ann"_s});
    fixture.set_source(fixture.volume.root(), {u"bob"_s});
    fixture.worker.find_source_file();
    QCOMPARE(fixture.worker.ntuser_path_list, QStringList{fixture.volume.ntuser_path(u"bob"_s)});
}

void tst_winos_search::stops_before_the_first_account_when_cancelled()
{
    worker_fixture fixture;
    write_volume(fixture.volume, {u"ann"_s});
    fixture.worker.winos_cancel_extraction();
    fixture.set_source(fixture.volume.root(), {u"ann"_s});
    fixture.worker.find_source_file();
    QCOMPARE(fixture.worker.hive_path_software, fixture.volume.software_path());
    QCOMPARE(fixture.worker.ntuser_path_list, QStringList());
    QCOMPARE(fixture.log.lines(), find_log({find_starts}));
}

void tst_winos_search::stops_before_the_third_account_when_cancelled_in_the_second()
{
    worker_fixture fixture;
    const QString missing = u"Users/u2/AppData/Local/Packages/"_s;
    find_and_cancel_at(fixture, missing);
    QCOMPARE(fixture.worker.ntuser_path_list, (QStringList{fixture.volume.ntuser_path(u"u1"_s),
                                                           fixture.volume.ntuser_path(u"u2"_s)}));
    QCOMPARE(fixture.worker.packages_dir_list, QStringList{fixture.volume.packages_path(u"u1"_s)});
    QCOMPARE(fixture.log.lines(),
             find_log({find_starts, u"[find_source_file]  -- FILE NOT EXISTS"_s +
                                        fixture.volume.path(missing)}));
}

void tst_winos_search::finishes_the_account_in_which_it_is_cancelled()
{
    worker_fixture fixture;
    const QString missing = u"Users/u3/NTUSER.DAT"_s;
    find_and_cancel_at(fixture, missing);
    QCOMPARE(fixture.worker.ntuser_path_list, (QStringList{fixture.volume.ntuser_path(u"u1"_s),
                                                           fixture.volume.ntuser_path(u"u2"_s)}));
    QCOMPARE(
        fixture.worker.packages_dir_list,
        (QStringList{fixture.volume.packages_path(u"u1"_s), fixture.volume.packages_path(u"u2"_s),
                     fixture.volume.packages_path(u"u3"_s)}));
    QCOMPARE(fixture.log.lines(),
             find_log({find_starts, u"[find_source_file] ntuser_path -- FILE NOT EXISTS"_s +
                                        fixture.volume.path(missing)}));
}

TEST_MAIN(tst_winos_search)
#include "tst_winos_search.moc"
