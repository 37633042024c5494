#include "evidence_volume.h"
#include "files.h"
#include "hive_damage.h"
#include "host_double.h"
#include "host_process.h"
#include "machine.h"
#include "result_database.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QDateTime>
#include <QDir>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSysInfo>
#include <QTemporaryDir>
#include <csignal>
#include <memory>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

const auto uninstall_key = u"Microsoft\\Windows\\CurrentVersion\\Uninstall\\"_s;
const auto explorer_key = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\"_s;
const auto store_key =
    u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\AppCompatFlags\\Compatibility Assistant\\Store"_s;
const auto software_file = u"Windows/System32/config/SOFTWARE"_s;
const auto backup_file = u"Windows/System32/config/RegBack/SOFTWARE"_s;
const auto recorded = QStringList{u"--plugin"_s, QStringLiteral(RECORDING_PLUGIN)};

void fill_software(hive_builder &hive)
{
    hive.key(uninstall_key + "Seven Zip"_L1).text(u"DisplayName"_s, u"7-Zip"_s);
    hive.key(uninstall_key + "Browser"_L1).text(u"DisplayName"_s, u"Browser"_s);
    hive.key("WOW6432Node\\"_L1 + uninstall_key + "Player"_L1).text(u"DisplayName"_s, u"Player"_s);
    hive.key(u"RegisteredApplications"_s).text(u"Mail"_s, u"Software\\Mail\\Capabilities"_s);
}

/// Two programs that were run, one of them an uninstaller; names are rotated by 13 letters.
void fill_user(hive_builder &hive)
{
    hive_key &count = hive.key(explorer_key + "UserAssist\\{CEBFF5CD}\\Count"_L1);
    count.binary(u"pnyp.rkr"_s, QByteArray(72, '\0'));
    count.binary(u"havafgnyy.rkr"_s, QByteArray(72, '\0'));
    hive.key(store_key).binary(u"C:\\Games\\chess.exe"_s, "x");
    hive.key(explorer_key + "HideDesktopIcons\\NewStartPanel"_L1).dword(u"{20D04FE0}"_s, 1);
    hive.key(explorer_key + "Desktop\\NameSpace\\{20D04FE0}"_L1).text(QString(), u"This PC"_s);
}

/// Ann has a hive and a package, Bob a package only.
std::unique_ptr<evidence_volume> small_volume()
{
    auto volume = std::make_unique<evidence_volume>();
    fill_software(volume->software());
    fill_user(volume->user(u"ann"_s));
    volume->package(u"ann"_s, u"Calculator"_s).package(u"bob"_s, u"Weather"_s);
    volume->folder(u"Users/Public"_s);
    volume->write();
    return volume;
}

const QStringList small_volume_report{
    u"install_apps_64                    2"_s, u"install_apps_32                    1"_s,
    u"uninstall_apps                     1"_s, u"registered_apps                    1"_s,
    u"metro_apps                         2"_s, u"previously_executed_apps           2"_s,
    u"third_party_applications           1"_s, u"hidden_desktop_icons_app           1"_s,
    u"total                             11"_s};

const auto bob_has_no_hive = u"artifact_host: warning: Users/bob/NTUSER.DAT: not found"_s;

/// What a volume of the paths has to say about itself; the placeholders are replaced.
QString filled(QString text, const QString &source, const QString &folder)
{
    return text.replace("%SRC"_L1, source).replace("%TMP"_L1, folder);
}

} // namespace

class tst_artifact_host : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void fills_all_tabs_and_reports_rows_and_database();
    void fills_only_the_tabs_that_were_asked_for();
    void clears_or_keeps_the_rows_of_earlier_runs_data();
    void clears_or_keeps_the_rows_of_earlier_runs();
    void shows_no_progress_when_quiet();
    void draws_one_line_over_again_on_a_terminal();
    void leaves_the_evidence_as_it_was();
    void reads_the_backup_when_the_software_hive_is_garbage();
    void does_not_wait_for_a_hive_that_is_a_pipe();
    void reads_hives_of_more_than_32_mb();

    void calls_the_operations_in_the_documented_order();
    void takes_all_accounts_with_artefacts_by_name();
    void takes_the_accounts_that_were_asked_for();
    void takes_an_account_once_that_is_asked_for_by_two_names();
    void writes_the_debug_log_where_it_was_asked_to();

    void explains_itself_data();
    void explains_itself();
    void refuses_wrong_use_data();
    void refuses_wrong_use();
    void refuses_a_source_that_cannot_be_read_data();
    void refuses_a_source_that_cannot_be_read();
    void refuses_a_source_without_permission();
    void refuses_results_that_cannot_be_written_data();
    void refuses_results_that_cannot_be_written();
    void refuses_results_without_permission_data();
    void refuses_results_without_permission();
    void refuses_to_remove_the_source_with_the_temporary_folder();
    void refuses_a_library_that_is_no_plug_in_data();
    void refuses_a_library_that_is_no_plug_in();

    void leaves_out_what_a_link_leads_out_of_the_source();
    void follows_links_within_the_source_once();
    void warns_about_account_names_that_cannot_be_read();
    void warns_about_folders_without_permission_data();
    void warns_about_folders_without_permission();
    void tells_why_nothing_is_left_to_read();
    void warns_about_keys_that_cannot_be_listed();
    void warns_about_keys_of_the_backup_when_that_is_read();
    void warns_about_damage_below_a_key_that_gave_rows();
    void escapes_control_characters_of_the_evidence();

    void fails_when_no_database_was_made();
    void fails_when_the_plug_in_logs_failures();
    void fails_when_rows_are_missing_from_the_database();
    void fails_when_the_database_is_garbage();
    void fails_when_a_table_has_other_columns();

    void keeps_the_rows_of_a_cancelled_run();
    void turns_a_signal_into_a_cancellation_data();
    void turns_a_signal_into_a_cancellation();
    void ends_at_once_on_a_second_signal();
    void keeps_ignoring_an_ignored_interrupt();

private:
    QString folder_path(const QString &name) const { return m_folder->filePath(name); }
    QString result_path() const { return folder_path(u"results"_s); }
    QString database_path() const;
    QStringList arguments(const QString &source, const QStringList &more = {}) const;
    host_result extract(const evidence_volume &volume, const QStringList &more = {}) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_artifact_host::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

QString tst_artifact_host::database_path() const
{
    return QFileInfo(m_folder->path()).canonicalFilePath() +
           "/results/Artifacts_Result/Windows_Installed_Applications/"
           "Windows_Installed_Applications.sqlite"_L1;
}

QStringList tst_artifact_host::arguments(const QString &source, const QStringList &more) const
{
    return QStringList{u"extract"_s, source, u"--result"_s, result_path()} + more;
}

host_result tst_artifact_host::extract(const evidence_volume &volume, const QStringList &more) const
{
    return host_process().run(arguments(volume.root(), more));
}

void tst_artifact_host::fills_all_tabs_and_reports_rows_and_database()
{
    const auto volume = small_volume();
    const host_result result = extract(*volume);
    QCOMPARE(result.errors,
             (QStringList{bob_has_no_hive, u"artifact_host: 0 of 8 tabs, 0 rows, 0:00"_s,
                          u"artifact_host: 1 of 8 tabs, 2 rows, 0:00"_s,
                          u"artifact_host: 2 of 8 tabs, 3 rows, 0:00"_s,
                          u"artifact_host: 3 of 8 tabs, 4 rows, 0:00"_s,
                          u"artifact_host: 4 of 8 tabs, 5 rows, 0:00"_s,
                          u"artifact_host: 5 of 8 tabs, 7 rows, 0:00"_s,
                          u"artifact_host: 6 of 8 tabs, 9 rows, 0:00"_s,
                          u"artifact_host: 7 of 8 tabs, 10 rows, 0:00"_s,
                          u"artifact_host: 8 of 8 tabs, 11 rows, 0:00"_s}));
    QCOMPARE(result.output, small_volume_report + QStringList{database_path()});
    QCOMPARE(result.exit_code, 0);

    const result_database database(database_path());
    QCOMPARE(database.rows(u"install_apps_64"_s,
                           {u"display_name"_s, u"os_scheme_display"_s, u"source_count_name"_s}),
             (QList<QStringList>{{u"Browser"_s, u"Windows"_s, u"Source1"_s},
                                 {u"7-Zip"_s, u"Windows"_s, u"Source1"_s}}));
    QCOMPARE(database.column(u"metro_apps"_s, u"system_account"_s),
             (QStringList{u"ann"_s, u"bob"_s}));
    QVERIFY(!QFileInfo::exists(QFileInfo(database_path()).path() + "/tmp"_L1));
}

void tst_artifact_host::fills_only_the_tabs_that_were_asked_for()
{
    const auto volume = small_volume();
    const host_result result =
        extract(*volume, {u"--tab"_s, u"metro_apps"_s, u"--tab"_s, u"install_apps_64"_s, u"--tab"_s,
                          u"metro_apps"_s});
    QCOMPARE(result.errors, (QStringList{u"artifact_host: 0 of 2 tabs, 0 rows, 0:00"_s,
                                         u"artifact_host: 1 of 2 tabs, 2 rows, 0:00"_s,
                                         u"artifact_host: 2 of 2 tabs, 4 rows, 0:00"_s}));
    QCOMPARE(result.output,
             (QStringList{u"install_apps_64                    2"_s,
                          u"metro_apps                         2"_s,
                          u"total                              4"_s, database_path()}));
    QCOMPARE(result_database(database_path()).row_count(u"install_apps_32"_s), 0);
}

void tst_artifact_host::clears_or_keeps_the_rows_of_earlier_runs_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("total");
    QTest::newRow("rows of the selected tabs are replaced") << QStringList() << u"11"_s;
    QTest::newRow("rows are kept when asked") << QStringList{u"--keep-rows"_s} << u"22"_s;
}

void tst_artifact_host::clears_or_keeps_the_rows_of_earlier_runs()
{
    QFETCH(QStringList, options);
    QFETCH(QString, total);
    const auto volume = small_volume();
    extract(*volume, options);
    const host_result result = extract(*volume, options);
    QCOMPARE(result.exit_code, 0);
    QCOMPARE(result.output.value(8), "total                             "_L1 + total);
}

void tst_artifact_host::shows_no_progress_when_quiet()
{
    const auto volume = small_volume();
    const host_result result = extract(*volume, {u"--quiet"_s, u"--user"_s, u"ann"_s});
    QCOMPARE(result.errors, QStringList());
    QCOMPARE(result.output.last(), database_path());
}

void tst_artifact_host::draws_one_line_over_again_on_a_terminal()
{
    if (const QString missing = host_process::missing_for_terminal(); !missing.isEmpty())
        QSKIP(qPrintable("This machine has no pseudo terminals: "_L1 + missing));
    const auto volume = small_volume();
    const host_result result = host_process().on_terminal().run(
        arguments(volume->root(), {u"--user"_s, u"ann"_s, u"--tab"_s, u"metro_apps"_s}));
    // The terminal itself adds the carriage return before the line feed.
    QCOMPARE(result.on_terminal, QByteArray("\r0 of 1 tabs, 0 rows, 0:00\x1b[K"
                                            "\r0 of 1 tabs, 0 rows, 0:00\x1b[K"
                                            "\r0 of 1 tabs, 1 rows, 0:00\x1b[K"
                                            "\r1 of 1 tabs, 1 rows, 0:00\x1b[K"
                                            "\r1 of 1 tabs, 1 rows, 0:00\x1b[K"
                                            "\r1 of 1 tabs, 1 rows, 0:00\x1b[K\r\n"));
    QCOMPARE(result.exit_code, 0);
}

void tst_artifact_host::leaves_the_evidence_as_it_was()
{
    const auto volume = small_volume();
    const QStringList before = volume_snapshot(volume->root());
    QCOMPARE(extract(*volume).exit_code, 0);
    QCOMPARE(volume_snapshot(volume->root()), before);
}

void tst_artifact_host::reads_the_backup_when_the_software_hive_is_garbage()
{
    evidence_volume volume;
    volume.file(software_file, QByteArray(8192, 'x'));
    fill_software(volume.reg_back_software());
    volume.write();
    const host_result result = extract(volume, {u"--quiet"_s, u"--tab"_s, u"install_apps_64"_s});
    QCOMPARE(
        result.errors,
        (QStringList{
            u"artifact_host: warning: %1: not a registry hive, so it is not read"_s.arg(
                software_file),
            u"artifact_host: warning: %1: is read in place of the software hive, which cannot be opened"_s
                .arg(backup_file)}));
    QCOMPARE(result.output.first(), u"install_apps_64                    2"_s);
}

void tst_artifact_host::does_not_wait_for_a_hive_that_is_a_pipe()
{
    const auto volume = small_volume();
    volume->fifo(u"Users/eve/NTUSER.DAT"_s);
    const host_result result = extract(*volume, {u"--quiet"_s, u"--user"_s, u"eve"_s});
    QCOMPARE(
        result.errors,
        QStringList{
            u"artifact_host: warning: Users/eve/NTUSER.DAT: not a regular file, so it is not read"_s});
    QCOMPARE(result.exit_code, 0);
}

void tst_artifact_host::reads_hives_of_more_than_32_mb()
{
    const auto volume = small_volume();
    // Beyond 32 MB the program chooses other allocator settings.
    QVERIFY(QFile::resize(volume->software_path(), qint64(40) << 20));
    const host_result result = extract(*volume, {u"--quiet"_s});
    QCOMPARE(result.output.first(9), small_volume_report);
    QCOMPARE(result.exit_code, 0);
}

void tst_artifact_host::calls_the_operations_in_the_documented_order()
{
    const auto volume = small_volume();
    const QString result_directory =
        QFileInfo(m_folder->path()).canonicalFilePath() + "/results"_L1;
    const QStringList calls = extract(*volume, recorded + QStringList{u"--quiet"_s, u"--user"_s,
                                                                      u"ann"_s, u"--keep-rows"_s})
                                  .errors.filter(u"call: "_s);
    const QString root = QFileInfo(volume->root()).canonicalFilePath() + u'/';
    const QString tabs = all_tabs().join(" | "_L1);
    QCOMPARE(calls, (QStringList{
                        u"call: pub_get_artifact_name()"_s,
                        u"call: pub_set_essentials()"_s,
                        u"call: pub_set_engine_type(0)"_s,
                        u"call: pub_set_examiner_machine_info(%1 | %2)"_s
                            .arg(QDateTime::currentDateTime().offsetFromUtc())
                            .arg(QSysInfo::prettyProductName()),
                        u"call: pub_set_general_info(true | true | false | )"_s,
                        u"call: pub_set_source_info(%1 | Windows | winOS |  | ann | )"_s.arg(root),
                        u"call: pub_set_source_count(1)"_s,
                        u"call: pub_set_essential_for_arken_desk_extraction(%1 | %1)"_s.arg(tabs),
                        u"call: pub_set_result_directory(%1)"_s.arg(result_directory),
                        u"call: pub_create_db_tables()"_s,
                        u"call: pub_set_clear_db(false)"_s,
                        u"call: pub_find_source_file()"_s,
                        u"call: pub_extract_artifacts()"_s,
                        u"call: pub_remove_temporary_asthetics()"_s,
                        u"call: delete()"_s,
                    }));
}

void tst_artifact_host::takes_all_accounts_with_artefacts_by_name()
{
    evidence_volume volume;
    volume.user(u"zoë"_s);
    volume.user(u"Ann Lee"_s);
    volume.user(u".hidden"_s);
    volume.package(u"Иван"_s, u"App"_s).folder(u"Users/Public"_s).file(u"Users/desktop.ini"_s);
    volume.write();
    const QStringList calls =
        extract(volume, recorded).errors.filter(u"call: pub_set_source_info"_s);
    QCOMPARE(calls.value(0).section(u'|', 3), u"  | .hidden |  | Ann Lee |  | zoë |  | Иван | )"_s);
}

void tst_artifact_host::takes_the_accounts_that_were_asked_for()
{
    const auto volume = small_volume();
    const host_result result =
        extract(*volume, recorded + QStringList{u"--quiet"_s, u"--tab"_s, u"metro_apps"_s,
                                                u"--user"_s, u"bob"_s, u"--user"_s, u"nobody"_s,
                                                u"--user"_s, u"ann"_s, u"--user"_s, u"bob"_s});
    QCOMPARE(result.errors.filter(u"source_info"_s).value(0).section(u'|', 3),
             u"  | bob |  | ann | )"_s);
    QVERIFY(result.errors.contains(u"artifact_host: warning: Users/nobody: not found"_s));
}

void tst_artifact_host::takes_an_account_once_that_is_asked_for_by_two_names()
{
    const auto volume = small_volume();
    volume->link(u"Users/annie"_s, u"ann"_s);
    const host_result result = extract(*volume, {u"--quiet"_s, u"--tab"_s, u"metro_apps"_s,
                                                 u"--user"_s, u"annie"_s, u"--user"_s, u"ann"_s});
    QCOMPARE(
        result.errors,
        QStringList{
            u"artifact_host: warning: Users: some of the accounts share a folder, which is read once"_s});
    QCOMPARE(result.output.value(0), u"metro_apps                         1"_s);
}

void tst_artifact_host::warns_about_damage_below_a_key_that_gave_rows()
{
    evidence_volume volume;
    fill_software(volume.software());
    hive_builder &user = volume.user(u"ann"_s);
    fill_user(user);
    const hive_key &damaged =
        user.key(explorer_key + "UserAssist\\{DA3A6E5D}\\Count"_L1).binary(u"lost"_s, "data");
    volume.write();
    const QString hive = volume.ntuser_path(u"ann"_s);
    write_file(hive, hive_damage(read_file(hive)).value_count(damaged.cells().key, 999).bytes());
    const host_result result = extract(volume, {u"--quiet"_s});
    QCOMPARE(
        result.errors,
        QStringList{
            u"artifact_host: warning: Users/ann/NTUSER.DAT: the content of %1UserAssist\\{DA3A6E5D}\\Count cannot be listed, so it is not read"_s
                .arg(explorer_key)});
    QVERIFY(result.output.contains(u"previously_executed_apps           2"_s));
    QCOMPARE(result.exit_code, 0);
}

void tst_artifact_host::writes_the_debug_log_where_it_was_asked_to()
{
    const auto volume = small_volume();
    const QString log = folder_path(u"debug.log"_s);
    const QStringList options{u"--quiet"_s, u"--debug-log"_s, log};
    QCOMPARE(extract(*volume, options).exit_code, 0);
    const QByteArray lines = read_file(log);
    QVERIFY(lines.endsWith("]:-- [pub_extract_artifacts] - END\n"));
    QCOMPARE(extract(*volume, options).exit_code, 0);
    QCOMPARE(read_file(log).count('\n'), 2 * lines.count('\n'));
}

void tst_artifact_host::explains_itself_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("first_line");
    QTest::addColumn<QString>("some_line");
    const auto usage = u"Usage: artifact_host extract SOURCE --result DIR [options]"_s;
    const auto code = u"  5    the plug-in cannot be loaded"_s;
    QTest::newRow("help lists commands and exit codes")
        << QStringList{u"--help"_s} << usage << code;
    QTest::newRow("help of extract lists exit codes")
        << QStringList{u"extract"_s, u"--help"_s} << usage << code;
    QTest::newRow("help of extract lists the tabs")
        << QStringList{u"extract"_s, u"-h"_s} << usage
        << u"                    hidden_desktop_icons_app"_s;
    QTest::newRow("version is one line")
        << QStringList{u"--version"_s} << u"artifact_host 1.0.0"_s << u"artifact_host 1.0.0"_s;
}

void tst_artifact_host::explains_itself()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, first_line);
    QFETCH(QString, some_line);
    const host_result result = host_process().run(arguments);
    QCOMPARE(result.output.first(), first_line);
    QVERIFY(result.output.contains(some_line));
    QCOMPARE(result.errors, QStringList());
    QCOMPARE(result.exit_code, 0);
}

void tst_artifact_host::refuses_wrong_use_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("reason");
    const QStringList right{u"extract"_s, u"%SRC"_s, u"--result"_s, u"%TMP/results"_s};
    const auto no_account =
        u"\"%1\" is no account name: give the name of a folder in SOURCE/Users"_s;
    QTest::newRow("no command") << QStringList() << u"no command given; see artifact_host --help"_s;
    QTest::newRow("unknown command")
        << QStringList{u"frob"_s} << u"unknown command \"frob\"; see artifact_host --help"_s;
    QTest::newRow("no source") << QStringList{u"extract"_s, u"--result"_s, u"%TMP/results"_s}
                               << u"extract takes one SOURCE, but 0 were given"_s;
    QTest::newRow("two sources") << right + QStringList{u"%SRC"_s}
                                 << u"extract takes one SOURCE, but 2 were given"_s;
    QTest::newRow("no result folder")
        << QStringList{u"extract"_s, u"%SRC"_s} << u"extract needs a result folder: --result DIR"_s;
    QTest::newRow("empty result folder") << QStringList{u"extract"_s, u"%SRC"_s, u"--result"_s, {}}
                                         << u"--result was given an empty path"_s;
    QTest::newRow("empty debug log")
        << right + QStringList{u"--debug-log"_s, {}} << u"--debug-log was given an empty path"_s;
    QTest::newRow("empty plug-in")
        << right + QStringList{u"--plugin="_s} << u"--plugin was given an empty path"_s;
    QTest::newRow("unknown option")
        << right + QStringList{u"--frob"_s} << u"Unknown option 'frob'."_s;
    QTest::newRow("option without value")
        << right + QStringList{u"--tab"_s} << u"Missing value after '--tab'."_s;
    QTest::newRow("unknown tab") << right + QStringList{u"--tab"_s, u"Metro_Apps"_s}
                                 << u"unknown tab \"Metro_Apps\"; the tabs are %1"_s.arg(
                                        all_tabs().join(", "_L1));
    QTest::newRow("account without a name")
        << right + QStringList{u"--user="_s} << no_account.arg(QString());
    QTest::newRow("account that is this folder")
        << right + QStringList{u"--user"_s, u"."_s} << no_account.arg("."_L1);
    QTest::newRow("account that is the folder above")
        << right + QStringList{u"--user"_s, u".."_s} << no_account.arg(".."_L1);
    QTest::newRow("account that is a path")
        << right + QStringList{u"--user"_s, u"../ann"_s} << no_account.arg("../ann"_L1);
    QTest::newRow("account with a control character")
        << right + QStringList{u"--user"_s, u"\x1b[2J/"_s} << no_account.arg("\\x1b[2J/"_L1);
}

void tst_artifact_host::refuses_wrong_use()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, reason);
    const auto volume = small_volume();
    for (QString &argument : arguments)
        argument = filled(argument, volume->root(), m_folder->path());
    const host_result result = host_process().run(arguments);
    QCOMPARE(result.errors, QStringList{"artifact_host: "_L1 + reason});
    QCOMPARE(result.output, QStringList());
    QCOMPARE(result.exit_code, 2);
    QVERIFY(QDir(m_folder->path()).isEmpty());
}

void tst_artifact_host::refuses_a_source_that_cannot_be_read_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no such folder") << u"%SRCnone"_s << u"source %SRCnone does not exist"_s;
    QTest::newRow("empty path") << QString() << u"source  does not exist"_s;
    QTest::newRow("disk image instead of its content")
        << u"%SRC%1"_s.arg(software_file)
        << u"source %SRC%1 is no folder: mount or extract the volume first"_s.arg(software_file);
    QTest::newRow("folder that is no Windows volume")
        << u"%SRCUsers"_s
        << u"source %SRCUsers/ holds nothing to read: no %1 and no account in Users"_s.arg(
               software_file);
}

void tst_artifact_host::refuses_a_source_that_cannot_be_read()
{
    QFETCH(QString, source);
    QFETCH(QString, reason);
    const auto volume = small_volume();
    const QString root = QFileInfo(volume->root()).canonicalFilePath() + u'/';
    const host_result result =
        host_process().run(arguments(filled(source, root, m_folder->path())));
    QCOMPARE(result.errors.last(), "artifact_host: "_L1 + filled(reason, root, m_folder->path()));
    QCOMPARE(result.exit_code, 3);
    QVERIFY(QDir(m_folder->path()).isEmpty());
}

void tst_artifact_host::refuses_a_source_without_permission()
{
    const auto volume = small_volume();
    const QString closed = volume->path(u"Users/ann"_s);
    QVERIFY(QFile::setPermissions(closed, {}));
    const host_result result = host_process().without_privileges().run(arguments(closed));
    QVERIFY(QFile::setPermissions(closed, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QCOMPARE(result.errors, QStringList{u"artifact_host: source %1 cannot be read"_s.arg(closed)});
    QCOMPARE(result.exit_code, 3);
}

void tst_artifact_host::refuses_results_that_cannot_be_written_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("reason");
    const auto in_source = u"result folder %1 lies in the source, which is never written to"_s;
    const auto result = [](const QString &path) { return QStringList{u"--result"_s, path}; };
    const auto log = [](const QString &path) {
        return QStringList{u"--result"_s, u"%TMP/ended"_s, u"--debug-log"_s, path};
    };
    QTest::newRow("the source itself") << result(u"%SRC"_s) << in_source.arg("%SRC"_L1);
    QTest::newRow("a folder of the source")
        << result(u"%SRC/Users"_s) << in_source.arg("%SRC/Users"_L1);
    QTest::newRow("a new folder in the source")
        << result(u"%SRC/new/deep"_s) << in_source.arg("%SRC/new/deep"_L1);
    QTest::newRow("a way back into the source")
        << result(u"%SRC/../new/..%BASE/x"_s) << in_source.arg("%SRC/x"_L1);
    QTest::newRow("a link into the source")
        << result(u"%TMP/link/x"_s) << in_source.arg("%SRC/Users/x"_L1);
    QTest::newRow("a link into the source below the result folder")
        << result(u"%TMP/linked"_s) << in_source.arg("%TMP/linked"_L1);
    QTest::newRow("a temporary folder that is a link into the source")
        << result(u"%TMP/temporary"_s) << in_source.arg("%TMP/temporary"_L1);
    QTest::newRow("a file") << result(u"%TMP/file"_s)
                            << u"result folder %TMP/file cannot be made: %TMP/file is no folder"_s;
    QTest::newRow("a folder below a file")
        << result(u"%TMP/file/x"_s)
        << u"result folder %TMP/file/x cannot be made: %TMP/file is no folder"_s;
    QTest::newRow("a database that is a folder")
        << result(u"%TMP/taken"_s)
        << u"result folder %TMP/taken cannot be written to: %TMP/taken/%DB is not writable"_s;
    QTest::newRow("a database that is a link to nowhere")
        << result(u"%TMP/dangling"_s)
        << u"result folder %TMP/dangling cannot be written to: %TMP/dangling/%DB is not writable"_s;
    QTest::newRow("a debug log in the source")
        << log(u"%SRC/debug.log"_s)
        << u"debug log %SRC/debug.log lies in the source, which is never written to"_s;
    QTest::newRow("a debug log that is a hive")
        << log(u"%SRC/%1"_s.arg(software_file))
        << u"debug log %SRC/%1 lies in the source, which is never written to"_s.arg(software_file);
    QTest::newRow("a debug log in a folder that does not exist")
        << log(u"%TMP/none/debug.log"_s)
        << u"debug log %TMP/none/debug.log cannot be made: its folder does not exist"_s;
    QTest::newRow("a debug log that is the database")
        << log(u"%TMP/ended/%DB"_s) << u"debug log %TMP/ended/%DB is the result database"_s;
    QTest::newRow("a debug log that is the database's journal")
        << log(u"%TMP/ended/%DB-journal"_s)
        << u"debug log %TMP/ended/%DB-journal is the result database"_s;
    QTest::newRow("a debug log that is a link to the database")
        << log(u"%TMP/ended/log"_s) << u"debug log %TMP/ended/log is the result database"_s;
    QTest::newRow("a debug log in the temporary folder")
        << log(u"%TMP/ended/Artifacts_Result/Windows_Installed_Applications/tmp/log"_s)
        << u"debug log %TMP/ended/Artifacts_Result/Windows_Installed_Applications/tmp/log lies in a folder that is removed at the end"_s;
    QTest::newRow("a debug log that is a folder")
        << log(u"%TMP/taken"_s) << u"debug log %TMP/taken cannot be written"_s;
}

void tst_artifact_host::refuses_results_that_cannot_be_written()
{
    QFETCH(QStringList, options);
    QFETCH(QString, reason);
    const auto volume = small_volume();
    const QString root = QFileInfo(volume->root()).canonicalFilePath();
    const QString folder = QFileInfo(m_folder->path()).canonicalFilePath();
    const auto database = u"Artifacts_Result/Windows_Installed_Applications/"
                          "Windows_Installed_Applications.sqlite"_s;
    evidence_volume places(folder);
    places.file(u"file"_s).folder(u"taken/"_s + database);
    places.link(u"link"_s, volume->path(u"Users"_s));
    places.link(u"linked/Artifacts_Result"_s, volume->path(u"Users"_s));
    places.link(u"temporary/Artifacts_Result/Windows_Installed_Applications/tmp"_s, root);
    places.link(u"dangling/"_s + database, u"nowhere"_s);
    places.file(u"ended/"_s + database).link(u"ended/log"_s, database);
    const QStringList before = volume_snapshot(folder);
    const QStringList evidence_before = volume_snapshot(root);

    for (QString &option : options)
        option = filled(option, root, folder)
                     .replace("%BASE"_L1, u'/' + QFileInfo(root).fileName())
                     .replace("%DB"_L1, database);
    const host_result result = host_process().run(QStringList{u"extract"_s, root} + options);
    reason.replace("%DB"_L1, database);
    QCOMPARE(result.errors, QStringList{"artifact_host: "_L1 + filled(reason, root, folder)});
    QCOMPARE(result.exit_code, 4);
    QCOMPARE(volume_snapshot(folder), before);
    QCOMPARE(volume_snapshot(root), evidence_before);
}

void tst_artifact_host::refuses_results_without_permission_data()
{
    QTest::addColumn<QString>("closed");
    QTest::addColumn<QString>("reason");
    const auto not_writable =
        u"result folder %TMP/results cannot be written to: %1 is not writable"_s;
    QTest::newRow("result folder") << u"results"_s << not_writable.arg("%TMP/results"_L1);
    QTest::newRow("folder above the result folder") << u"."_s << not_writable.arg("%TMP"_L1);
    QTest::newRow("database of an earlier run")
        << u"results/Artifacts_Result/Windows_Installed_Applications/Windows_Installed_Applications.sqlite"_s
        << not_writable.arg(
               "%TMP/results/Artifacts_Result/Windows_Installed_Applications/Windows_Installed_Applications.sqlite"_L1);
    QTest::newRow("debug log") << u"debug.log"_s << u"debug log %TMP/debug.log cannot be written"_s;
}

void tst_artifact_host::refuses_results_without_permission()
{
    QFETCH(QString, closed);
    QFETCH(QString, reason);
    const auto volume = small_volume();
    const QString folder = QFileInfo(m_folder->path()).canonicalFilePath();
    const QString path = folder + u'/' + closed;
    const QStringList options{u"--debug-log"_s, folder + "/debug.log"_L1};
    if (closed != "."_L1)
        QCOMPARE(extract(*volume, options).exit_code, 0);
    if (closed == "results"_L1)
        QVERIFY(QDir(path + "/Artifacts_Result"_L1).removeRecursively());
    const auto permissions = QFile::permissions(path);
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner));
    const host_result result =
        host_process().without_privileges().run(arguments(volume->root(), options));
    QVERIFY(QFile::setPermissions(path, permissions));
    QCOMPARE(result.errors, QStringList{"artifact_host: "_L1 + filled(reason, {}, folder)});
    QCOMPARE(result.exit_code, 4);
}

void tst_artifact_host::refuses_to_remove_the_source_with_the_temporary_folder()
{
    const QString temporary = QFileInfo(m_folder->path()).canonicalFilePath() +
                              "/results/Artifacts_Result/Windows_Installed_Applications/tmp"_L1;
    evidence_volume volume(temporary + "/volume"_L1);
    fill_software(volume.software());
    volume.write();
    const host_result result = extract(volume);
    QCOMPARE(result.errors.last(),
             u"artifact_host: the source lies in %1, which is removed at the end"_s.arg(temporary));
    QCOMPARE(result.exit_code, 4);
    QVERIFY(QFileInfo::exists(volume.software_path()));
}

void tst_artifact_host::refuses_a_library_that_is_no_plug_in_data()
{
    QTest::addColumn<QString>("library");
    QTest::addColumn<QString>("behaviour");
    QTest::addColumn<QString>("reason");
    const auto recording = QStringLiteral(RECORDING_PLUGIN);
    QTest::newRow("no such file") << u"%TMP/none.so"_s << QString()
                                  << u"plug-in %TMP/none.so does not exist"_s;
    QTest::newRow("folder") << u"%TMP"_s << QString() << u"plug-in %TMP does not exist"_s;
    QTest::newRow("text file") << u"%TMP/text"_s << QString()
                               << u"plug-in %TMP/text cannot be loaded: "_s;
    QTest::newRow("library without a factory")
        << QStringLiteral(NO_PLUGIN) << QString()
        << u"%1 is no plug-in: it exports no create_object"_s.arg(QStringLiteral(NO_PLUGIN));
    QTest::newRow("factory that makes nothing")
        << recording << u"no object"_s
        << u"%1 is no plug-in for this program: its object is of another kind"_s.arg(recording);
    QTest::newRow("factory that makes another object")
        << recording << u"plain frame"_s
        << u"%1 is no plug-in for this program: its object is of another kind"_s.arg(recording);
}

void tst_artifact_host::refuses_a_library_that_is_no_plug_in()
{
    QFETCH(QString, library);
    QFETCH(QString, behaviour);
    QFETCH(QString, reason);
    const auto volume = small_volume();
    write_file(folder_path(u"text"_s), "no library");
    const host_result result =
        host_process()
            .environment(u"RECORDING_PLUGIN"_s, behaviour)
            .run(arguments(volume->root(), {u"--plugin"_s, filled(library, {}, m_folder->path())}));
    QCOMPARE(result.errors.size(), 1);
    // The loader's own words follow.
    const QString expected = "artifact_host: "_L1 + filled(reason, {}, m_folder->path());
    QCOMPARE(result.errors.first().left(expected.size()), expected);
    QCOMPARE(result.exit_code, 5);
    QVERIFY(!QFileInfo::exists(result_path()));
}

void tst_artifact_host::leaves_out_what_a_link_leads_out_of_the_source()
{
    const auto outside = small_volume();
    evidence_volume volume;
    fill_user(volume.user(u"ann"_s));
    volume.write();
    volume.link(software_file, outside->software_path());
    volume.link(u"Users/hive"_s + "/NTUSER.DAT"_L1, outside->ntuser_path(u"ann"_s));
    volume.link(u"Users/package/AppData"_s, outside->path(u"Users/ann/AppData"_s));
    volume.link(u"Users/whole"_s, outside->path(u"Users/ann"_s));
    const host_result result = extract(volume, {u"--quiet"_s});
    const auto account_out =
        u"artifact_host: warning: Users/%1: a link leads out of the source; account %2 is left out"_s;
    QCOMPARE(
        result.errors,
        (QStringList{
            account_out.arg("hive/NTUSER.DAT"_L1, "hive"_L1),
            account_out.arg("package/AppData/Local/Packages"_L1, "package"_L1),
            account_out.arg("whole"_L1, "whole"_L1),
            u"artifact_host: warning: %1: a link leads out of the source; the tabs of the software hive are left out"_s
                .arg(software_file)}));
    QCOMPARE(result.output,
             (QStringList{u"uninstall_apps                     1"_s,
                          u"metro_apps                         0"_s,
                          u"previously_executed_apps           2"_s,
                          u"third_party_applications           1"_s,
                          u"hidden_desktop_icons_app           1"_s,
                          u"total                              5"_s, database_path()}));
    QCOMPARE(result.exit_code, 0);
}

void tst_artifact_host::follows_links_within_the_source_once()
{
    evidence_volume volume;
    volume.user(u"zoe"_s);
    volume.write();
    volume.link(u"Users/All Users"_s, u"zoe"_s);
    volume.folder(u"Profiles/max/AppData/Local/Packages"_s);
    volume.link(u"Users/max"_s, u"../Profiles/max"_s);
    const QStringList calls =
        extract(volume, recorded).errors.filter(u"call: pub_set_source_info"_s);
    QCOMPARE(calls.value(0).section(u'|', 3), u"  | max |  | zoe | )"_s);
}

void tst_artifact_host::warns_about_account_names_that_cannot_be_read()
{
#ifdef Q_OS_MACOS
    QSKIP("the file system refuses names that are not UTF-8");
#endif
    const auto volume = small_volume();
    volume->raw_folder("Users/b\xe9la");
    const host_result result = extract(*volume, {u"--quiet"_s, u"--tab"_s, u"metro_apps"_s});
    QCOMPARE(
        result.errors,
        QStringList{
            u"artifact_host: warning: Users/b\ufffdla: its name is not valid UTF-8, so it is not read"_s});
}

void tst_artifact_host::warns_about_folders_without_permission_data()
{
    QTest::addColumn<QString>("closed");
    QTest::addColumn<QStringList>("warnings");
    const auto hive = u"%1: cannot be read: Permission denied"_s;
    const auto packages = u"%1/AppData/Local/Packages: cannot be listed: Permission denied"_s;
    QTest::newRow("an account") << u"Users/ann"_s
                                << QStringList{hive.arg("Users/ann/NTUSER.DAT"_L1),
                                               packages.arg("Users/ann"_L1)};
    QTest::newRow("a folder above the packages")
        << u"Users/ann/AppData"_s << QStringList{packages.arg("Users/ann"_L1)};
    QTest::newRow("the packages") << u"Users/ann/AppData/Local/Packages"_s
                                  << QStringList{packages.arg("Users/ann"_L1)};
    QTest::newRow("all accounts") << u"Users"_s
                                  << QStringList{u"Users: cannot be listed: Permission denied"_s};
    QTest::newRow("the folder of the software hive")
        << u"Windows/System32/config"_s
        << QStringList{hive.arg(software_file), hive.arg(backup_file)};
}

void tst_artifact_host::warns_about_folders_without_permission()
{
    if (const QString missing = missing_process_files(); !missing.isEmpty())
        QSKIP(qPrintable(missing));
    QFETCH(QString, closed);
    QFETCH(QStringList, warnings);
    evidence_volume volume;
    fill_software(volume.software());
    fill_user(volume.user(u"ann"_s));
    volume.package(u"ann"_s, u"Calculator"_s).write();
    QVERIFY(QFile::setPermissions(m_folder->path(), QFile::Permissions(0x7777)));
    QVERIFY(QFile::setPermissions(volume.path(closed), {}));
    const host_result result =
        host_process().without_privileges().run(arguments(volume.root(), {u"--quiet"_s}));
    QVERIFY(QFile::setPermissions(volume.path(closed),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    for (QString &warning : warnings)
        warning.prepend("artifact_host: warning: "_L1);
    QCOMPARE(result.errors, warnings);
    QCOMPARE(result.exit_code, 0);
}

void tst_artifact_host::tells_why_nothing_is_left_to_read()
{
    const auto outside = small_volume();
    evidence_volume volume;
    volume.link(software_file, outside->software_path());
    const host_result result = extract(volume);
    const QString root = QFileInfo(volume.root()).canonicalFilePath() + u'/';
    QCOMPARE(
        result.errors,
        (QStringList{
            u"artifact_host: warning: %1: a link leads out of the source; the tabs of the software hive are left out"_s
                .arg(software_file),
            u"artifact_host: source %1 holds nothing to read: no %2 and no account in Users"_s.arg(
                root, software_file)}));
    QCOMPARE(result.exit_code, 3);
}

void tst_artifact_host::warns_about_keys_that_cannot_be_listed()
{
    evidence_volume volume;
    volume.software()
        .key(u"Microsoft\\Windows\\CurrentVersion"_s)
        .add_key(hive_name::lone_surrogate());
    fill_software(volume.software());
    volume.write();
    const host_result result = extract(volume, {u"--quiet"_s});
    QCOMPARE(
        result.errors,
        QStringList{
            u"artifact_host: warning: %1: the keys in CurrentVersion cannot be listed, so Microsoft\\Windows\\CurrentVersion\\Uninstall is not read"_s
                .arg(software_file)});
    QCOMPARE(result.exit_code, 0);
}

void tst_artifact_host::warns_about_keys_of_the_backup_when_that_is_read()
{
    evidence_volume volume;
    volume.file(software_file, QByteArray(8192, 'x'));
    volume.reg_back_software()
        .key(u"Microsoft\\Windows\\CurrentVersion"_s)
        .add_key(hive_name::lone_surrogate());
    fill_software(volume.reg_back_software());
    volume.write();
    const host_result result = extract(volume, {u"--quiet"_s});
    QCOMPARE(result.errors.size(), 3);
    QCOMPARE(
        result.errors.last(),
        u"artifact_host: warning: %1: the keys in CurrentVersion cannot be listed, so Microsoft\\Windows\\CurrentVersion\\Uninstall is not read"_s
            .arg(backup_file));
}

void tst_artifact_host::escapes_control_characters_of_the_evidence()
{
    const auto volume = small_volume();
    volume->folder(u"Users/\x1b[2J\u202eeve\n/AppData/Local/Packages"_s);
    const host_result result = extract(*volume, {u"--quiet"_s});
    QVERIFY(result.errors.contains(
        u"artifact_host: warning: Users/\\x1b[2J\\u202eeve\\x0a/NTUSER.DAT: not found"_s));
}

void tst_artifact_host::fails_when_no_database_was_made()
{
    const auto volume = small_volume();
    const host_result result = extract(*volume, recorded + QStringList{u"--quiet"_s});
    const QString database = QFileInfo(m_folder->path()).canonicalFilePath() +
                             "/results/Artifacts_Result/Recorded_Calls/Recorded_Calls.sqlite"_L1;
    QVERIFY(result.errors.contains(
        u"artifact_host: no result database was made at %1"_s.arg(database)));
    QCOMPARE(result.output, QStringList());
    QCOMPARE(result.exit_code, 1);
}

void tst_artifact_host::fails_when_the_plug_in_logs_failures()
{
    const auto volume = small_volume();
    const host_result result =
        host_process()
            .environment(u"RECORDING_PLUGIN"_s, u"failing"_s)
            .environment(u"QT_LOGGING_RULES"_s, u"*.debug=false"_s)
            .run(arguments(volume->root(), recorded + QStringList{u"--quiet"_s}));
    QVERIFY(result.errors.contains(
        u"artifact_host: failures reported by the plug-in: 2, the first: query  --------FAILED------ db file - /results/x.sqlite: error -  disk I/O error"_s));
    QCOMPARE(result.exit_code, 1);
}

void tst_artifact_host::fails_when_rows_are_missing_from_the_database()
{
    const auto volume = small_volume();
    evidence_volume results(result_path());
    results.folder(u"Artifacts_Result/Recorded_Calls"_s);
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"missing rows"_s);
        database.setDatabaseName(
            results.path(u"Artifacts_Result/Recorded_Calls/Recorded_Calls.sqlite"_s));
        QVERIFY(database.open());
        QVERIFY(QSqlQuery(database).exec(u"CREATE TABLE metro_apps(source_file)"_s));
    }
    QSqlDatabase::removeDatabase(u"missing rows"_s);
    const host_result result =
        host_process()
            .environment(u"RECORDING_PLUGIN"_s, u"counting"_s)
            .run(arguments(volume->root(),
                           recorded + QStringList{u"--quiet"_s, u"--tab"_s, u"metro_apps"_s}));
    QVERIFY(result.errors.contains(u"artifact_host: the database holds 0 rows instead of 7"_s));
    QCOMPARE(result.exit_code, 1);
}

void tst_artifact_host::fails_when_the_database_is_garbage()
{
    const auto volume = small_volume();
    make_folder(QFileInfo(database_path()).path());
    write_file(database_path(), QByteArray(8192, 'x'));
    const host_result result = extract(*volume, {u"--quiet"_s});
    QCOMPARE(result.errors.last(),
             u"artifact_host: the result database %1 cannot be read: file is not a database"_s.arg(
                 database_path()));
    QCOMPARE(result.exit_code, 1);
    QCOMPARE(read_file(database_path()), QByteArray(8192, 'x'));
}

void tst_artifact_host::fails_when_a_table_has_other_columns()
{
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"other columns"_s);
        database.setDatabaseName(database_path());
        QVERIFY(database.open());
        QVERIFY(QSqlQuery(database).exec(u"ALTER TABLE metro_apps DROP COLUMN filename"_s));
    }
    QSqlDatabase::removeDatabase(u"other columns"_s);
    const host_result result = extract(*volume, {u"--quiet"_s, u"--tab"_s, u"metro_apps"_s});
    // The reason that follows is SQLite's or Qt's own.
    const auto failure =
        u"artifact_host: failures reported by the plug-in: 2, the first: [extract_metro_apps] query_insert -----FAILED----- metro_apps%1: "_s
            .arg(database_path());
    QCOMPARE(result.errors.last().left(failure.size()), failure);
    QCOMPARE(result.exit_code, 1);
}

void tst_artifact_host::keeps_the_rows_of_a_cancelled_run()
{
    const auto volume = small_volume();
    const host_result result = extract(*volume, {u"--quiet"_s, u"--user"_s, u"ann"_s, u"--plugin"_s,
                                                 QStringLiteral(INTERRUPTED_PLUGIN)});
    QCOMPARE(result.errors,
             QStringList{u"artifact_host: cancelled; the rows written so far are kept"_s});
    QCOMPARE(result.exit_code, 130);
    QCOMPARE(result.output.value(0), u"install_apps_64                    2"_s);
    QCOMPARE(result.output.value(8), u"total                              2"_s);
    QCOMPARE(result.output.last(), database_path());
    QCOMPARE(result_database(database_path()).integrity_check(), u"ok"_s);
    QVERIFY(!QFileInfo::exists(QFileInfo(database_path()).path() + "/tmp"_L1));
}

void tst_artifact_host::turns_a_signal_into_a_cancellation_data()
{
    QTest::addColumn<int>("signal_number");
    QTest::newRow("Ctrl-C") << SIGINT;
    QTest::newRow("termination") << SIGTERM;
}

void tst_artifact_host::turns_a_signal_into_a_cancellation()
{
    QFETCH(int, signal_number);
    const auto volume = small_volume();
    host_process host;
    host.environment(u"RECORDING_PLUGIN"_s, u"until cancelled"_s);
    host.start(arguments(volume->root(), recorded));
    host.wait_for_error_line(u"call: pub_extract_artifacts()"_s);
    host.send_signal(signal_number);
    const host_result result = host.finish();
    QCOMPARE(result.errors.filter(u"call: "_s).mid(12),
             (QStringList{u"call: pub_extract_artifacts()"_s, u"call: pub_cancel_extraction()"_s,
                          u"call: pub_remove_temporary_asthetics()"_s, u"call: delete()"_s}));
    QCOMPARE(result.exit_code, 130);
}

void tst_artifact_host::ends_at_once_on_a_second_signal()
{
    const auto volume = small_volume();
    host_process host;
    host.environment(u"RECORDING_PLUGIN"_s, u"for ever"_s);
    host.start(arguments(volume->root(), recorded));
    host.wait_for_error_line(u"call: pub_extract_artifacts()"_s);
    host.send_signal(SIGINT);
    host.wait_for_error_line(u"call: pub_cancel_extraction()"_s);
    host.send_signal(SIGINT);
    QCOMPARE(host.finish().signal_number, SIGINT);
}

void tst_artifact_host::keeps_ignoring_an_ignored_interrupt()
{
    const auto volume = small_volume();
    host_process host;
    host.environment(u"RECORDING_PLUGIN"_s, u"for ever"_s).ignoring_interrupts();
    host.start(arguments(volume->root(), recorded));
    host.wait_for_error_line(u"call: pub_extract_artifacts()"_s);
    // Had the first not been ignored, the second would end the program.
    host.send_signal(SIGINT);
    host.send_signal(SIGTERM);
    host.wait_for_error_line(u"call: pub_cancel_extraction()"_s);
    host.send_signal(SIGKILL);
    QCOMPARE(host.finish().signal_number, SIGKILL);
}

TEST_MAIN(tst_artifact_host)

#include "tst_artifact_host.moc"
