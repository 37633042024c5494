#include "files.h"
#include "host_test.h"
#include "log_line.h"
#include "result_database.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QFileInfo>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// Runs of the program, and what it says of itself.
class tst_artifact_host : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init() { begin_test(); }
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
    void writes_the_debug_log_where_it_was_asked_to();
    void explains_itself_data();
    void explains_itself();
};

void tst_artifact_host::fills_all_tabs_and_reports_rows_and_database()
{
    const auto volume = small_volume();
    const host_result result = extract(*volume);
    QCOMPARE(result.errors, QStringList{bob_has_no_hive} + small_volume_progress);
    QCOMPARE(result.options_line, every_option);
    QCOMPARE(result.next_line, next_line(result_path()));
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
    QCOMPARE(result.errors, (QStringList{bob_has_no_hive, // whose installations would be rows
                                         u"artifact_host: 0 of 2 tabs, 0 rows, 0:00"_s,
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
    QTest::addColumn<int>("packages");
    QTest::newRow("rows of the selected tabs are replaced") << QStringList() << 2;
    QTest::newRow("rows are kept when asked") << QStringList{u"--keep-rows"_s} << 4;
}

void tst_artifact_host::clears_or_keeps_the_rows_of_earlier_runs()
{
    QFETCH(QStringList, options);
    QFETCH(int, packages);
    const auto volume = small_volume();
    extract(*volume, options);
    const host_result result = extract(*volume, options);
    QCOMPARE(result.exit_code, 0);
    // What stays of earlier runs is not counted.
    QCOMPARE(result.output.mid(0, result.output.size() - 1), small_volume_report);
    QCOMPARE(result_database(database_path()).row_count(u"metro_apps"_s), packages);
}

void tst_artifact_host::shows_no_progress_when_quiet()
{
    const auto volume = small_volume();
    const host_result result = extract(*volume, {u"--quiet"_s, u"--user"_s, u"ann"_s});
    QCOMPARE(result.errors, QStringList());
    QCOMPARE(result.options_line, every_option);
    QCOMPARE(result.output.last(), database_path());
}

void tst_artifact_host::draws_one_line_over_again_on_a_terminal()
{
    if (const QString missing = host_process::missing_for_terminal(); !missing.isEmpty())
        QSKIP(qPrintable("This machine has no pseudo terminals: "_L1 + missing));
    const auto volume = small_volume();
    const host_result result = host_process().on_terminal().run(arguments(
        volume->root(), {u"--user"_s, u"ann"_s, u"--tab"_s, u"metro_apps"_s, u"--no-hashes"_s}));
    // The terminal itself adds the carriage return before the line feed.
    QCOMPARE(result.on_terminal, QByteArray("\r0 of 1 tabs, 0 rows, 0:00\x1b[K"
                                            "\r0 of 1 tabs, 0 rows, 0:00\x1b[K"
                                            "\r0 of 1 tabs, 1 rows, 0:00\x1b[K"
                                            "\r1 of 1 tabs, 1 rows, 0:00\x1b[K"
                                            "\r1 of 1 tabs, 1 rows, 0:00\x1b[K"
                                            "\r1 of 1 tabs, 1 rows, 0:00\x1b[K\r\n") +
                                     every_option.toUtf8() + "\r\n" +
                                     next_line(result_path()).toUtf8() + "\r\n");
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
    volume.folder(u"Users"_s).write();
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
    QCOMPARE(result.exit_code, 6);
}

void tst_artifact_host::reads_hives_of_more_than_32_mb()
{
    const auto volume = small_volume();
    // Beyond 32 MB the program chooses other allocator settings.
    QVERIFY(QFile::resize(volume->software_path(), qint64(40) << 20));
    const host_result result = extract(*volume, {u"--quiet"_s});
    QCOMPARE(result.output.mid(0, result.output.size() - 1), small_volume_report);
    QCOMPARE(result.exit_code, 0);
}

void tst_artifact_host::writes_the_debug_log_where_it_was_asked_to()
{
    const auto volume = small_volume();
    const QString log = folder_path(u"debug.log"_s);
    const QStringList options{u"--quiet"_s, u"--debug-log"_s, log};
    QCOMPARE(extract(*volume, options).exit_code, 0);
    const QByteArray lines = read_file(log);
    QVERIFY(lines.endsWith(log_line(u"windows_installed_applications::pub_extract_artifacts"_s,
                                    u"[pub_extract_artifacts] - END\n"_s)
                               .toUtf8()));
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
    QTest::newRow("help of volumes lists exit codes")
        << QStringList{u"volumes"_s, u"--help"_s}
        << u"Usage: artifact_host volumes SOURCE [options]"_s << code;
    QTest::newRow("help of recover lists exit codes")
        << QStringList{u"recover"_s, u"--help"_s}
        << u"Usage: artifact_host recover HIVE COPY [options]"_s
        << u"  7    nothing to recover: the hive was closed cleanly, or no log applies"_s;
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

TEST_MAIN(tst_artifact_host)
#include "tst_artifact_host.moc"
