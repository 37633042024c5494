#include "application_keys.h"
#include "extraction_options.h"
#include "files.h"
#include "registry_data.h"
#include "test_main.h"
#include "user_assist.h"
#include "worker_fixture.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What each option of a host adds to the rows.
class tst_extraction_options_effects : public QObject
{
    Q_OBJECT

private slots:
    void letter_case_of_files_is_ignored();
    void letter_case_of_the_backup_is_ignored();
    void letter_case_of_store_programs_is_ignored_data();
    void letter_case_of_store_programs_is_ignored();
    void letter_case_counts_by_default();
    void choice_between_two_spellings_is_logged();

    void texts_are_decoded_by_their_type_data();
    void texts_are_decoded_by_their_type();
    void half_of_a_surrogate_pair_is_logged();
    void early_user_assist_entries_are_read_data();
    void early_user_assist_entries_are_read();

    void installations_of_users_follow_those_of_the_machine();
    void installations_of_users_need_no_software_hive();
    void installations_of_users_stop_when_cancelled();

    void accounts_of_the_old_layout_are_found();
    void users_folder_comes_before_the_old_layout();
    void old_layout_is_ignored_by_default();

    void copies_are_read_in_the_place_of_hives();
    void copy_that_is_no_hive_is_as_a_hive_that_is_none_data();
    void copy_that_is_no_hive_is_as_a_hive_that_is_none();

    void all_options_work_together();
};

namespace {

const QString software_file = u"Windows/System32/config/SOFTWARE"_s;

/// A worker with the options, in front of a volume that was written as it stands.
struct option_fixture : worker_fixture
{
    extraction_options options;

    void find()
    {
        worker.winos_set_extraction_options(options);
        volume.write();
        set_source(volume.root(), accounts);
        log.clear();
        worker.find_source_file();
    }

    QList<QStringList> columns(const QString &tab, const QStringList &names)
    {
        extract(tab);
        return database().rows(tab, names);
    }

    QStringList accounts = {u"ann"_s};
};

QByteArray hive_with_application(const QString &name, const QString &display_name)
{
    hive_builder hive;
    hive.key(uninstall_key).key(name).text(u"DisplayName"_s, display_name);
    hive.key(registered_applications_key).text(name, display_name);
    return hive.bytes();
}

const QStringList name_and_source = {u"display_name"_s, u"source_file"_s};

} // namespace

void tst_extraction_options_effects::letter_case_of_files_is_ignored()
{
    option_fixture fixture;
    fixture.options.ignore_letter_case = true;
    fixture.volume.file(u"WINDOWS/system32/CONFIG/software"_s,
                        hive_with_application(u"app"_s, u"App"_s));
    hive_builder user;
    user.key(compatibility_store_key).binary(u"C:\\x.exe"_s, "data");
    fixture.volume.file(u"users/Ann/ntuser.dat"_s, user.bytes());
    fixture.volume.folder(u"users/Ann/appdata/local/PACKAGES/Some.App"_s);
    fixture.find();
    QCOMPARE(fixture.columns(u"install_apps_64"_s, name_and_source),
             (QList<QStringList>{{u"App"_s, u"/WINDOWS/system32/CONFIG/software"_s}}));
    QCOMPARE(
        fixture.columns(u"third_party_applications"_s, {u"system_account"_s, u"source_file"_s}),
        (QList<QStringList>{{u"Ann"_s, u"/users/Ann/ntuser.dat"_s}}));
    QCOMPARE(
        fixture.columns(u"metro_apps"_s, {u"system_account"_s, u"filename"_s, u"source_file"_s}),
        (QList<QStringList>{{u"Ann"_s, u"Some.App"_s, u"/users/Ann/appdata/local/PACKAGES/"_s}}));
}

void tst_extraction_options_effects::letter_case_of_the_backup_is_ignored()
{
    option_fixture fixture;
    fixture.options.ignore_letter_case = true;
    fixture.volume.file(software_file, "no hive");
    fixture.volume.file(u"Windows/System32/config/regback/Software"_s,
                        hive_with_application(u"app"_s, u"App"_s));
    fixture.find();
    QCOMPARE(fixture.columns(u"install_apps_64"_s, name_and_source),
             (QList<QStringList>{{u"App"_s, u'/' + software_file}}));
}

void tst_extraction_options_effects::letter_case_of_store_programs_is_ignored_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("file_path");
    QTest::addColumn<bool>("has_time");
    QTest::newRow("as it is spelt")
        << u"C:\\Program Files\\App.exe"_s << u"/Program Files/App.exe"_s << true;
    QTest::newRow("in other letters")
        << u"C:\\PROGRAM FILES\\APP.EXE"_s << u"/Program Files/App.exe"_s << true;
    QTest::newRow("a drive in other letters")
        << u"c:\\program files\\app.exe"_s << u"/Program Files/App.exe"_s << true;
    QTest::newRow("a program that is gone")
        << u"C:\\gone\\APP.EXE"_s << u"/gone/APP.EXE"_s << false;
    QTest::newRow("a path that leads out")
        << u"C:\\..\\program files\\app.exe"_s << u"/../program files/app.exe"_s << false;
}

void tst_extraction_options_effects::letter_case_of_store_programs_is_ignored()
{
    QFETCH(const QString, name);
    option_fixture fixture;
    fixture.options.ignore_letter_case = true;
    fixture.volume.file(u"Program Files/App.exe"_s, {}, 1600000000);
    fixture.volume.user(u"ann"_s).key(compatibility_store_key).binary(name, "data");
    fixture.find();
    const auto rows =
        fixture.columns(u"third_party_applications"_s,
                        {u"windows_path"_s, u"file_path"_s, u"modification_timestamp"_s});
    QCOMPARE(rows.size(), 1);
    QCOMPARE(rows.first().at(0), name);
    QTEST(rows.first().at(1), "file_path");
    QFETCH(const bool, has_time);
    QCOMPARE(rows.first().at(2), has_time ? u"1600000000"_s : u"0"_s);
}

void tst_extraction_options_effects::letter_case_counts_by_default()
{
    option_fixture fixture;
    fixture.volume.file(u"windows/system32/config/software"_s,
                        hive_with_application(u"app"_s, u"App"_s));
    if (QFileInfo::exists(fixture.volume.path(software_file)))
        QSKIP("this file system ignores letter case by itself");
    fixture.find();
    QCOMPARE(fixture.columns(u"install_apps_64"_s, name_and_source), QList<QStringList>());
}

void tst_extraction_options_effects::choice_between_two_spellings_is_logged()
{
    option_fixture fixture;
    fixture.volume.folder(u"WINDOWS/System32/config"_s);
    fixture.volume.file(u"windows/System32/config/SOFTWARE"_s,
                        hive_with_application(u"app"_s, u"App"_s));
    if (QFileInfo::exists(fixture.volume.path(u"WiNdOwS"_s)))
        QSKIP("this file system ignores letter case by itself");
    fixture.options.ignore_letter_case = true;
    fixture.find();
    QCOMPARE(fixture.log.messages().filter(u"letter case"_s),
             QStringList{u"[letter case] "_s + fixture.volume.root() +
                         u": 2 names differ from Windows in their letter case alone; WINDOWS comes "
                         "first"_s});
    QCOMPARE(fixture.columns(u"install_apps_64"_s, name_and_source),
             (QList<QStringList>{{u"App"_s, u"/windows/System32/config/SOFTWARE"_s}}));
}

void tst_extraction_options_effects::texts_are_decoded_by_their_type_data()
{
    QTest::addColumn<QString>("text");
    for (const QString &text : {u"Büro für Müller"_s, u"Яндекс Браузер"_s, u"微信"_s, u"برنامج"_s,
                                u"Ελληνικά"_s, u"plain"_s})
        QTest::newRow(qUtf8Printable(text)) << text;
}

void tst_extraction_options_effects::texts_are_decoded_by_their_type()
{
    QFETCH(const QString, text);
    option_fixture fixture;
    fixture.options.decode_by_type = true;
    fixture.volume.file(software_file, hive_with_application(text, text));
    hive_key &icons = fixture.volume.user(u"ann"_s).key(hide_desktop_icons_key);
    icons.key(u"NewStartPanel"_s).dword(u"{1}"_s, 1);
    fixture.volume.user(u"ann"_s).key(name_space_key).key(u"{1}"_s).text(u""_s, text);
    fixture.find();
    QCOMPARE(fixture.columns(u"install_apps_64"_s, {u"parent_name"_s, u"display_name"_s}),
             (QList<QStringList>{{text, text}}));
    QCOMPARE(fixture.columns(u"registered_apps"_s, {u"key_name"_s, u"value"_s}),
             (QList<QStringList>{{text, text}}));
    QCOMPARE(fixture.columns(u"hidden_desktop_icons_app"_s, {u"app_name"_s, u"hidden"_s}),
             (QList<QStringList>{{text, u"YES"_s}}));
}

void tst_extraction_options_effects::half_of_a_surrogate_pair_is_logged()
{
    option_fixture fixture;
    fixture.options.decode_by_type = true;
    const QString half = QChar(0xd800);
    hive_key &applications = fixture.volume.software().key(registered_applications_key);
    applications.text(u"a"_s, half + u'x').text(u"b"_s, u"whole"_s).text(u"c"_s, half);
    fixture.find();
    fixture.log.clear();
    QCOMPARE(fixture.columns(u"registered_apps"_s, {u"value"_s}),
             (QList<QStringList>{{u"\ufffdx"_s}, {u"whole"_s}, {u"\ufffd"_s}}));
    QCOMPARE(fixture.log.messages().value(1),
             u"[extract_registered_apps] "_s + fixture.volume.software_path() +
                 u", key \\RegisteredApplications: 2 texts hold half of a surrogate pair, written "
                 "as U+FFFD"_s);
}

void tst_extraction_options_effects::early_user_assist_entries_are_read_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<bool>("is_decoded");
    QTest::addColumn<QStringList>("runs");
    const QByteArray time = registry_qword(quint64(filetime_of_unix(1000000000)));
    const QByteArray early = registry_dword(1) + registry_dword(17) + time;
    const QByteArray fresh = registry_dword(1) + registry_dword(5) + registry_qword(0);
    const QByteArray odd = registry_dword(1) + registry_dword(2) + registry_qword(0);
    QTest::newRow("a program that was run")
        << early << true << QStringList{u"12"_s, u"1000000000"_s};
    QTest::newRow("a program that was not run") << fresh << true << QStringList{u"0"_s, u"0"_s};
    QTest::newRow("a count below the first") << odd << true << QStringList{u"0"_s, u"0"_s};
    QTest::newRow("by default") << early << false << QStringList{u"17"_s, u"0"_s};
    QTest::newRow("a later entry") << user_assist_data(7, filetime_of_unix(1600000000)) << true
                                   << QStringList{u"7"_s, u"1600000000"_s};
    QTest::newRow("an entry of another length")
        << early + "x" << true << QStringList{u"17"_s, u"0"_s};
}

void tst_extraction_options_effects::early_user_assist_entries_are_read()
{
    QFETCH(const QByteArray, data);
    option_fixture fixture;
    QFETCH(const bool, is_decoded);
    fixture.options.decode_by_type = is_decoded;
    fixture.volume.user(u"ann"_s)
        .key(user_assist_key + u"\\{75048700-EF1F-11D0-9888-006097DEACF9}\\Count"_s)
        .binary(rotated_name(u"UEME_RUNPATH:C:\\app.exe"_s), data);
    fixture.find();
    QTEST(
        fixture.columns(u"previously_executed_apps"_s, {u"runcount"_s, u"lastruntime"_s}).value(0),
        "runs");
}

namespace {

/// Applications of the machine, of "ann" in both views, and of "bob".
void add_installations(evidence_volume &volume, bool has_software)
{
    const QString users = u"Software\\"_s;
    if (has_software)
        volume.software().key(uninstall_key).key(u"machine"_s).text(u"DisplayName"_s, u"M"_s);
    hive_key &application = volume.user(u"ann"_s).key(users + uninstall_key).key(u"ann 64"_s);
    application.text(u"DisplayName"_s, u"A"_s).text(u"InstallDate"_s, u"20240307"_s);
    application.last_write_unix(1600000000);
    volume.user(u"ann"_s).key(users + uninstall_key_32).key(u"ann 32"_s);
    volume.user(u"bob"_s).key(users + uninstall_key).key(u"bob"_s);
}

} // namespace

void tst_extraction_options_effects::installations_of_users_follow_those_of_the_machine()
{
    option_fixture fixture;
    fixture.options.installations_of_users = true;
    fixture.accounts = QStringList{u"ann"_s, u"bob"_s};
    add_installations(fixture.volume, true);
    fixture.find();
    fixture.log.clear();
    const QStringList columns = {u"system_account"_s, u"parent_name"_s,        u"display_name"_s,
                                 u"reg_file"_s,       u"node_name"_s,          u"reg_path"_s,
                                 u"install_date"_s,   u"modified_timestamp"_s, u"source_file"_s};
    const auto rows = fixture.columns(u"install_apps_64"_s, columns);
    const QString key = u"Software\\"_s + uninstall_key;
    QCOMPARE(rows.size(), 3);
    QCOMPARE(rows.at(0).mid(0, 6), (QStringList{null_text, u"machine"_s, u"M"_s, u"SOFTWARE"_s,
                                                u"Uninstall"_s, uninstall_key}));
    QCOMPARE(rows.at(1),
             (QStringList{u"ann"_s, u"ann 64"_s, u"A"_s, u"NTUSER.DAT"_s, u"Uninstall"_s, key,
                          u"07/03/2024"_s, u"1600000000"_s, u"/Users/ann/NTUSER.DAT"_s}));
    QCOMPARE(rows.at(2).mid(0, 2), (QStringList{u"bob"_s, u"bob"_s}));
    QCOMPARE(fixture.log.messages(),
             QStringList(2, u"[extract_installed_applications]---ENDS---"_s));
    QCOMPARE(fixture.columns(u"install_apps_32"_s,
                             {u"system_account"_s, u"parent_name"_s, u"reg_path"_s}),
             (QList<QStringList>{{u"ann"_s, u"ann 32"_s, u"Software\\"_s + uninstall_key_32}}));
}

void tst_extraction_options_effects::installations_of_users_need_no_software_hive()
{
    option_fixture fixture;
    fixture.options.installations_of_users = true;
    add_installations(fixture.volume, false);
    fixture.find();
    fixture.log.clear();
    QCOMPARE(fixture.columns(u"install_apps_64"_s, {u"parent_name"_s}),
             QList<QStringList>{{u"ann 64"_s}});
    // The closing line is missing, as without the option: the machine's hive was not read.
    QCOMPARE(fixture.log.messages(), QStringList{u"[extract_installed_applications]---ENDS---"_s});
}

void tst_extraction_options_effects::installations_of_users_stop_when_cancelled()
{
    option_fixture fixture;
    fixture.options.installations_of_users = true;
    fixture.accounts = QStringList{u"ann"_s, u"bob"_s};
    add_installations(fixture.volume, true);
    fixture.find();
    fixture.log.clear();
    fixture.on_row([&](qint64 total) {
        if (total == 2)
            fixture.worker.winos_cancel_extraction();
    });
    QCOMPARE(fixture.columns(u"install_apps_64"_s, {u"parent_name"_s}),
             (QList<QStringList>{{u"machine"_s}, {u"ann 64"_s}}));
    QCOMPARE(fixture.log.messages(), QStringList{u"[extract_installed_applications]---ENDS---"_s});
}

namespace {

void add_old_layout(evidence_volume &volume)
{
    volume.hive(u"WINNT/System32/config/SOFTWARE"_s)
        .key(uninstall_key)
        .key(u"app"_s)
        .text(u"DisplayName"_s, u"Old"_s);
    volume.hive(u"Documents and Settings/ann/NTUSER.DAT"_s)
        .key(compatibility_store_key)
        .binary(u"D:\\old.exe"_s, {});
}

} // namespace

void tst_extraction_options_effects::accounts_of_the_old_layout_are_found()
{
    option_fixture fixture;
    fixture.options.old_layout = true;
    add_old_layout(fixture.volume);
    fixture.find();
    QCOMPARE(fixture.columns(u"install_apps_64"_s, name_and_source),
             (QList<QStringList>{{u"Old"_s, u"/WINNT/System32/config/SOFTWARE"_s}}));
    QCOMPARE(
        fixture.columns(u"third_party_applications"_s, {u"system_account"_s, u"source_file"_s}),
        (QList<QStringList>{{u"ann"_s, u"/Documents and Settings/ann/NTUSER.DAT"_s}}));
}

void tst_extraction_options_effects::users_folder_comes_before_the_old_layout()
{
    option_fixture fixture;
    fixture.options.old_layout = true;
    add_old_layout(fixture.volume);
    fixture.volume.folder(u"Users"_s).folder(u"Windows"_s);
    fixture.find();
    QCOMPARE(fixture.worker.ntuser_path_list, QStringList());
    QCOMPARE(fixture.worker.hive_path_software, QString());
}

void tst_extraction_options_effects::old_layout_is_ignored_by_default()
{
    option_fixture fixture;
    add_old_layout(fixture.volume);
    fixture.find();
    QCOMPARE(fixture.worker.ntuser_path_list, QStringList());
    QCOMPARE(fixture.worker.hive_path_software, QString());
}

void tst_extraction_options_effects::copies_are_read_in_the_place_of_hives()
{
    option_fixture fixture;
    const QTemporaryDir copies;
    const QString software = copies.filePath(u"software.copy"_s);
    write_file(software, hive_with_application(u"app"_s, u"Recovered"_s));
    hive_builder user;
    user.key(hide_desktop_icons_key).key(u"NewStartPanel"_s).dword(u"{1}"_s, 1);
    user.key(name_space_key).key(u"{1}"_s).text(u""_s, u"Icon"_s);
    const QString ntuser = copies.filePath(u"ntuser.copy"_s);
    user.write_to(ntuser);
    fixture.volume.file(software_file, hive_with_application(u"app"_s, u"Stale"_s));
    fixture.volume.user(u"ann"_s);
    fixture.options.hive_copies = {{fixture.volume.software_path(), software},
                                   {fixture.volume.ntuser_path(u"ann"_s), ntuser}};
    fixture.find();
    fixture.log.clear();
    QCOMPARE(fixture.columns(u"install_apps_64"_s, name_and_source),
             (QList<QStringList>{{u"Recovered"_s, u'/' + software_file}}));
    QCOMPARE(fixture.columns(u"hidden_desktop_icons_app"_s, {u"app_name"_s, u"source_file"_s}),
             (QList<QStringList>{{u"Icon"_s, u"/Users/ann/NTUSER.DAT"_s}}));
    QCOMPARE(fixture.log.messages().filter(u"copy"_s), QStringList());
}

void tst_extraction_options_effects::copy_that_is_no_hive_is_as_a_hive_that_is_none_data()
{
    QTest::addColumn<QString>("copy");
    QTest::newRow("a folder") << u"FOLDER"_s;
    QTest::newRow("nothing") << u"FOLDER/none"_s;
    QTest::newRow("no path") << QString();
    QTest::newRow("a device") << u"/dev/null"_s;
}

void tst_extraction_options_effects::copy_that_is_no_hive_is_as_a_hive_that_is_none()
{
    QFETCH(QString, copy);
    const QTemporaryDir folder;
    option_fixture fixture;
    fixture.volume.file(software_file, hive_with_application(u"app"_s, u"Stale"_s));
    fixture.volume.file(u"Windows/System32/config/RegBack/SOFTWARE"_s,
                        hive_with_application(u"app"_s, u"Backup"_s));
    fixture.options.hive_copies = {
        {fixture.volume.software_path(), copy.replace(u"FOLDER"_s, folder.path())}};
    fixture.find();
    QCOMPARE(fixture.columns(u"install_apps_64"_s, {u"display_name"_s}),
             QList<QStringList>{{u"Backup"_s}});
}

void tst_extraction_options_effects::all_options_work_together()
{
    option_fixture fixture;
    const QTemporaryDir copies;
    hive_builder user;
    user.key(u"Software\\"_s + uninstall_key).key(u"微信"_s).text(u"DisplayName"_s, u"微信"_s);
    const QString copy = copies.filePath(u"copy"_s);
    user.write_to(copy);
    fixture.volume.file(u"winnt/SYSTEM32/config/software"_s,
                        hive_with_application(u"a"_s, u"Büro"_s));
    const QString ntuser = u"documents and settings/ann/ntuser.dat"_s;
    fixture.volume.file(ntuser, "stale");
    fixture.options = {true, true, true, true, true, true, {{fixture.volume.path(ntuser), copy}}};
    fixture.find();
    QCOMPARE(fixture.columns(u"install_apps_64"_s,
                             {u"system_account"_s, u"display_name"_s, u"source_file"_s}),
             (QList<QStringList>{{null_text, u"Büro"_s, u"/winnt/SYSTEM32/config/software"_s},
                                 {u"ann"_s, u"微信"_s, u'/' + ntuser}}));
}

TEST_MAIN(tst_extraction_options_effects)
#include "tst_extraction_options_effects.moc"
