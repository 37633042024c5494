#include "host_test.h"
#include "result_database.h"
#include "test_main.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What looks like evidence and is not read is told, whether or not the run is like the suite's.
class tst_passed_over : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init() { begin_test(); }
    void tells_what_the_letter_case_hides_data();
    void tells_what_the_letter_case_hides();
    void says_nothing_of_what_it_reads_data();
    void says_nothing_of_what_it_reads();
    void tells_of_the_other_of_two_spellings();
    void says_nothing_of_two_accounts_that_are_read();
    void tells_of_a_missing_hive_once();
    void reads_no_file_for_two_accounts();
    void reads_the_accounts_of_both_spellings();
    void tells_of_other_layouts_data();
    void tells_of_other_layouts();
    void tells_what_stands_in_the_way_of_packages_data();
    void tells_what_stands_in_the_way_of_packages();
    void tells_of_packages_whose_names_are_not_utf_8();
    void tells_of_links_that_lead_nowhere();
    void tells_of_accounts_that_lead_nowhere_whatever_is_read();
    void tells_of_accounts_that_cannot_be_found_data();
    void tells_of_accounts_that_cannot_be_found();
    void says_nothing_of_the_folder_that_a_link_shows();
    void tells_of_names_that_forge_lines();
    void reads_nothing_that_a_name_in_other_letters_leads_out_to();

private:
    QStringList warnings(const evidence_volume &volume, const QStringList &options = {}) const;
};

namespace {

const auto like_the_suite = u"--like-the-suite"_s;
const auto differs = u": is not read: its letter case differs from "_s;
const auto some_accounts = u"; accounts in it that hold a hive or packages: "_s;

/// A volume with a software hive in its place, so that a run has something to read.
void begin(evidence_volume &volume)
{
    fill_software(volume.software());
}

} // namespace

void tst_passed_over::initTestCase()
{
    evidence_volume volume;
    volume.file(u"a"_s);
    if (QFile::exists(volume.path(u"A"_s)))
        QSKIP("this file system ignores letter case by itself");
}

QStringList tst_passed_over::warnings(const evidence_volume &volume,
                                      const QStringList &options) const
{
    QStringList lines = extract(volume, QStringList{u"--quiet"_s} + options).errors;
    for (QString &line : lines)
        line.remove(u"artifact_host: warning: "_s);
    return lines;
}

void tst_passed_over::tells_what_the_letter_case_hides_data()
{
    QTest::addColumn<QString>("hive");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("warning");
    const auto none = QString();
    QTest::newRow("a hive") << u"Users/ann/ntuser.dat"_s << none
                            << u"Users/ann/ntuser.dat"_s + differs + u"Users/ann/NTUSER.DAT"_s;
    QTest::newRow("the folder of the accounts")
        << u"users/ann/NTUSER.DAT"_s << none
        << u"users"_s + differs + u"Users"_s + some_accounts + u'1';
    QTest::newRow("the folder of the packages")
        << none << u"Users/ann/appdata/Local/Packages"_s
        << u"Users/ann/appdata/Local/Packages"_s + differs + u"Users/ann/AppData/Local/Packages"_s;
    QTest::newRow("the folder of the machine")
        << u"WINDOWS/System32/config/SOFTWARE"_s << none
        << u"WINDOWS/System32/config/SOFTWARE"_s + differs + software_file;
}

void tst_passed_over::tells_what_the_letter_case_hides()
{
    QFETCH(const QString, hive);
    QFETCH(const QString, folder);
    QFETCH(const QString, warning);
    evidence_volume volume;
    begin(volume);
    volume.folder(u"Users"_s);
    if (!hive.isEmpty())
        volume.hive(hive);
    if (!folder.isEmpty())
        volume.folder(folder);
    volume.write();
    QCOMPARE(warnings(volume, {like_the_suite}), QStringList{warning});
}

void tst_passed_over::says_nothing_of_what_it_reads_data()
{
    QTest::addColumn<QString>("users");
    QTest::newRow("Users") << u"users/ann/ntuser.dat"_s;
    QTest::newRow("of an older layout") << u"documents and settings/ann/ntuser.dat"_s;
}

void tst_passed_over::says_nothing_of_what_it_reads()
{
    QFETCH(const QString, users);
    evidence_volume volume;
    fill_software(volume.hive(u"WINDOWS/system32/config/software"_s));
    fill_user(volume.hive(users));
    volume.write();
    QCOMPARE(warnings(volume), QStringList());
    QCOMPARE(result_database(database_path()).row_count(u"previously_executed_apps"_s), 2);
    QCOMPARE(result_database(database_path()).row_count(u"install_apps_64"_s), 2);
}

void tst_passed_over::tells_of_the_other_of_two_spellings()
{
    evidence_volume volume;
    begin(volume);
    fill_user(volume.user(u"ann"_s));
    volume.hive(u"WINDOWS/System32/config/SOFTWARE"_s);
    volume.hive(u"Users/ann/ntuser.dat"_s);
    volume.write();
    const QStringList both{u"WINDOWS/System32/config/SOFTWARE"_s + differs + software_file,
                           u"Users/ann/ntuser.dat"_s + differs + u"Users/ann/NTUSER.DAT"_s};
    QCOMPARE(warnings(volume), both);
    QCOMPARE(warnings(volume, {like_the_suite}), both);
}

void tst_passed_over::says_nothing_of_two_accounts_that_are_read()
{
    evidence_volume volume;
    begin(volume);
    fill_user(volume.user(u"ann"_s));
    fill_user(volume.user(u"Ann"_s));
    volume.write();
    QCOMPARE(warnings(volume), QStringList());
    QCOMPARE(warnings(volume, {like_the_suite}), QStringList());
    QCOMPARE(result_database(database_path()).column(u"uninstall_apps"_s, u"system_account"_s),
             (QStringList{u"Ann"_s, u"ann"_s}));
}

void tst_passed_over::tells_of_a_missing_hive_once()
{
    evidence_volume volume;
    volume.hive(u"Windows/System32/config/software"_s);
    volume.hive(u"Users/ann/ntuser.dat"_s);
    volume.package(u"ann"_s, u"Calculator"_s).write();
    const auto missing = u": not found, and %1 beside it is not read: its letter case differs"_s;
    QCOMPARE(
        warnings(volume, {like_the_suite}),
        (QStringList{software_file + missing.arg("software"_L1), backup_file + ": not found"_L1,
                     "Users/ann/NTUSER.DAT"_L1 + missing.arg("ntuser.dat"_L1)}));
}

// Each of the two leads to the other's file where it has none of its own.
void tst_passed_over::reads_no_file_for_two_accounts()
{
    evidence_volume volume;
    begin(volume);
    fill_user(volume.user(u"ann"_s));
    volume.package(u"Ann"_s, u"Calculator"_s).write();
    QCOMPARE(warnings(volume), QStringList());
    const result_database database(database_path());
    QCOMPARE(database.column(u"uninstall_apps"_s, u"system_account"_s), QStringList{u"ann"_s});
    QCOMPARE(database.column(u"metro_apps"_s, u"system_account"_s), QStringList{u"Ann"_s});
}

void tst_passed_over::reads_the_accounts_of_both_spellings()
{
    evidence_volume volume;
    begin(volume);
    fill_user(volume.user(u"ann"_s));
    fill_user(volume.hive(u"users/bob/NTUSER.DAT"_s));
    volume.write();
    QCOMPARE(warnings(volume), QStringList());
    QCOMPARE(result_database(database_path()).column(u"uninstall_apps"_s, u"source_file"_s),
             (QStringList{u"/Users/ann/NTUSER.DAT"_s, u"/users/bob/NTUSER.DAT"_s}));
    QCOMPARE(warnings(volume, {like_the_suite}),
             QStringList{u"users"_s + differs + u"Users"_s + some_accounts + u'1'});
}

void tst_passed_over::tells_of_other_layouts_data()
{
    QTest::addColumn<QString>("hive");
    QTest::addColumn<bool>("has_newer");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("warning");
    const auto accounts = u"Documents and Settings/ann/NTUSER.DAT"_s;
    const auto older_accounts =
        u"Documents and Settings: is not read: it is the folder of an older layout"_s +
        some_accounts + u'1';
    const auto machine = u"WINNT/System32/config/SOFTWARE"_s;
    const auto older_machine = machine + u": is not read: it is the hive of an older layout"_s;
    QTest::newRow("accounts beside Users") << accounts << true << QStringList() << older_accounts;
    QTest::newRow("accounts without Users like the suite")
        << accounts << false << QStringList{like_the_suite} << older_accounts;
    QTest::newRow("a machine's hive beside Windows")
        << machine << true << QStringList() << older_machine;
    QTest::newRow("a machine's hive like the suite")
        << machine << true << QStringList{like_the_suite} << older_machine;
}

void tst_passed_over::tells_of_other_layouts()
{
    QFETCH(const QString, hive);
    QFETCH(const bool, has_newer);
    QFETCH(const QStringList, options);
    QFETCH(const QString, warning);
    evidence_volume volume;
    begin(volume);
    if (has_newer)
        volume.user(u"bob"_s);
    volume.hive(hive);
    volume.write();
    QCOMPARE(warnings(volume, options), QStringList{warning});
}

void tst_passed_over::tells_what_stands_in_the_way_of_packages_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("place");
    QTest::addColumn<QString>("finding");
    const auto no_folder = u"is no folder, so no packages are read there"_s;
    const auto nowhere = u"a link leads nowhere, so it is not read"_s;
    const auto packages = u"AppData/Local/Packages"_s;
    QTest::newRow("a pipe") << u"pipe"_s << packages << no_folder;
    QTest::newRow("a file") << u"file"_s << packages << no_folder;
    QTest::newRow("a link to itself") << u"link"_s << packages << nowhere;
    QTest::newRow("a file above them") << u"file"_s << u"AppData/Local"_s << no_folder;
    QTest::newRow("a link to itself above them") << u"link"_s << u"AppData"_s << nowhere;
}

void tst_passed_over::tells_what_stands_in_the_way_of_packages()
{
    QFETCH(const QString, kind);
    QFETCH(const QString, place);
    QFETCH(const QString, finding);
    const QString path = u"Users/ann/"_s + place;
    evidence_volume volume;
    begin(volume);
    volume.user(u"ann"_s);
    volume.write();
    if (kind == "pipe"_L1)
        volume.fifo(path);
    else if (kind == "file"_L1)
        volume.file(path);
    else
        volume.link(path, path.section(u'/', -1));
    QCOMPARE(warnings(volume), QStringList{path + ": "_L1 + finding});
    QCOMPARE(warnings(volume, {like_the_suite}), QStringList{path + ": "_L1 + finding});
}

void tst_passed_over::tells_of_packages_whose_names_are_not_utf_8()
{
    evidence_volume volume;
    begin(volume);
    volume.user(u"ann"_s);
    volume.package(u"ann"_s, u"Calculator"_s).write();
    volume.raw_folder("Users/ann/AppData/Local/Packages/b\xe9la");
    const QStringList expected{u"Users/ann/AppData/Local/Packages: names that are not valid UTF-8 "
                               "and are not read: 1, one of them b\ufffdla"_s};
    QCOMPARE(warnings(volume), expected);
    QCOMPARE(warnings(volume, {like_the_suite}), expected);
    QCOMPARE(result_database(database_path()).column(u"metro_apps"_s, u"filename"_s),
             QStringList{u"Calculator"_s});
}

void tst_passed_over::tells_of_links_that_lead_nowhere()
{
    evidence_volume volume;
    begin(volume);
    volume.write();
    volume.link(u"Users/ann"_s, u"ann"_s).link(u"Users/bob/NTUSER.DAT"_s, u"nowhere"_s);
    volume.file(u"Users/desktop.ini"_s);
    const QStringList expected{u"Users/bob/NTUSER.DAT: a link leads nowhere, so it is not read"_s,
                               u"Users/ann: a link leads nowhere, so it is not read"_s};
    QCOMPARE(warnings(volume), expected);
    QCOMPARE(warnings(volume, {like_the_suite}), expected);
}

void tst_passed_over::tells_of_accounts_that_lead_nowhere_whatever_is_read()
{
    evidence_volume volume;
    begin(volume);
    volume.write();
    volume.link(u"Users/ann"_s, u"nowhere"_s);
    const QStringList expected{u"Users/ann: a link leads nowhere, so it is not read"_s};
    for (const auto &tab : {u"install_apps_64"_s, u"metro_apps"_s})
        QCOMPARE(warnings(volume, {u"--tab"_s, u"install_apps_64"_s, u"--tab"_s, tab}), expected);
    QCOMPARE(warnings(volume, {u"--tab"_s, u"registered_apps"_s}), QStringList());
}

void tst_passed_over::tells_of_accounts_that_cannot_be_found_data()
{
    QTest::addColumn<QString>("target"); // of a link Users, if there is one
    QTest::addColumn<QString>("warning");
    QTest::addColumn<int>("exit_code");
    QTest::newRow("a link to nothing")
        << u"nowhere"_s << u"Users: a link leads nowhere, so no accounts are read there"_s << 6;
    QTest::newRow("no folder") << QString() << u"Users: not found, so no accounts are read"_s << 0;
}

void tst_passed_over::tells_of_accounts_that_cannot_be_found()
{
    QFETCH(const QString, target);
    QFETCH(const QString, warning);
    QFETCH(const int, exit_code);
    evidence_volume volume;
    begin(volume);
    volume.write();
    if (!target.isEmpty())
        volume.link(u"Users"_s, target);
    const auto expected = QStringList{u"artifact_host: warning: "_s + warning};
    for (const QStringList &options : {QStringList{}, QStringList{like_the_suite}}) {
        const host_result result = extract(volume, QStringList{u"--quiet"_s} + options);
        QCOMPARE(result.errors, expected);
        QCOMPARE(result.exit_code, exit_code);
    }
    QCOMPARE(warnings(volume, {u"--tab"_s, u"registered_apps"_s}), QStringList());
}

void tst_passed_over::says_nothing_of_the_folder_that_a_link_shows()
{
    evidence_volume volume;
    begin(volume);
    fill_user(volume.hive(u"Documents and Settings/ann/NTUSER.DAT"_s));
    volume.write();
    volume.link(u"Users"_s, u"Documents and Settings"_s);
    QCOMPARE(warnings(volume), QStringList());
    QCOMPARE(warnings(volume, {like_the_suite}), QStringList());
    QCOMPARE(result_database(database_path()).row_count(u"uninstall_apps"_s), 1);
}

void tst_passed_over::tells_of_names_that_forge_lines()
{
    evidence_volume volume;
    begin(volume);
    volume.user(u"ann\n[2024]\r"_s);
    volume.write();
    const QStringList expected{
        u"Users/ann\\x0a[2024]\\x0d: its name holds line breaks, which may look like lines of "
        "their own in the debug log"_s};
    QCOMPARE(warnings(volume), expected);
    QCOMPARE(warnings(volume, {like_the_suite}), expected);
}

void tst_passed_over::reads_nothing_that_a_name_in_other_letters_leads_out_to()
{
    const auto outside = small_volume();
    evidence_volume volume;
    volume.user(u"bob"_s);
    volume.write();
    volume.link(u"WINDOWS"_s, outside->path(u"Windows"_s));
    volume.link(u"users/ann"_s, outside->path(u"Users/ann"_s));
    QCOMPARE(warnings(volume),
             (QStringList{u"users/ann: a link leads out of the source; account ann is left out"_s,
                          u"WINDOWS/System32/config/SOFTWARE: a link leads out of the source; the "
                          "tabs of the software hive are left out"_s}));
    QCOMPARE(result_database(database_path()).row_count(u"uninstall_apps"_s), 0);
}

TEST_MAIN(tst_passed_over)
#include "tst_passed_over.moc"
