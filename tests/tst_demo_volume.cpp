#include "deleted_hive.h"
#include "demo_volume.h"
#include "files.h"
#include "hive_reader.h"
#include "host_double.h"
#include "replayed_hive.h"
#include "result_database.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QFileInfo>
#include <QProcess>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

class tst_demo_volume : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void writes_hives_and_folders_for_every_account();
    void writes_the_same_bytes_each_time();
    void fills_every_table_data();
    void fills_every_table();
    void shows_rows_of_a_real_looking_machine();
    void has_a_hive_with_changes_in_its_logs();
    void has_an_application_that_was_removed();
    void program_writes_into_a_new_or_an_empty_folder();
    void program_refuses_a_folder_that_is_not_empty();
    void program_refuses_wrong_arguments_data();
    void program_refuses_wrong_arguments();
    void program_tells_when_it_cannot_write();

private:
    evidence_volume m_volume;
    QStringList m_accounts;
    std::unique_ptr<host_double> m_host; // has extracted from the volume
};

namespace {

struct program_result
{
    int exit_code;
    QString output;
    QString errors;
};

program_result run_program(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(DEMO_VOLUME_PROGRAM), arguments);
    process.waitForFinished();
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QStringList without_times(const QStringList &snapshot)
{
    QStringList lines;
    for (const QString &line : snapshot) {
        QStringList parts = line.split(u' ');
        parts.removeAt(3);
        lines.append(parts.join(u' '));
    }
    return lines;
}

} // namespace

void tst_demo_volume::initTestCase()
{
    m_accounts = demo::write_demo_volume(m_volume.root());
    m_host = std::make_unique<host_double>(m_volume);
    for (const QString &account : std::as_const(m_accounts))
        m_host->settings.source.system_account_list.append({account, {}});
    m_host->run();
}

void tst_demo_volume::writes_hives_and_folders_for_every_account()
{
    QCOMPARE(m_accounts, (QStringList{u"anna"_s, u"marek"_s, u"scanner desk"_s}));
    for (const QString &account : std::as_const(m_accounts)) {
        QVERIFY(hive_reader(m_volume.ntuser_path(account)).is_open());
        QVERIFY(QFileInfo(m_volume.packages_path(account)).isDir());
    }
    QVERIFY(hive_reader(m_volume.software_path()).is_open());
    QCOMPARE(hive_reader(m_volume.system_path()).values(u"Select"_s).size(), 3);
}

void tst_demo_volume::writes_the_same_bytes_each_time()
{
    const evidence_volume second;
    demo::write_demo_volume(second.root());
    const QStringList lines = without_times(volume_snapshot(m_volume.root()));
    QVERIFY(lines.size() > 60);
    QCOMPARE(without_times(volume_snapshot(second.root())), lines);
}

void tst_demo_volume::fills_every_table_data()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<qint64>("rows");
    const QHash<QString, qint64> rows{{u"install_apps_64"_s, 13},
                                      {u"install_apps_32"_s, 6},
                                      {u"uninstall_apps"_s, 3},
                                      {u"registered_apps"_s, 8},
                                      {u"metro_apps"_s, 12},
                                      {u"previously_executed_apps"_s, 21},
                                      {u"third_party_applications"_s, 9},
                                      {u"hidden_desktop_icons_app"_s, 10}};
    for (const QString &table : all_tabs())
        QTest::newRow(qPrintable(table)) << table << rows.value(table);
}

void tst_demo_volume::fills_every_table()
{
    QFETCH(const QString, table);
    QVERIFY(result_database(m_host->database_path()).row_count(table) > 0);
    QTEST(result_database(m_host->database_path()).row_count(table), "rows");
}

void tst_demo_volume::shows_rows_of_a_real_looking_machine()
{
    const result_database database(m_host->database_path());

    QCOMPARE(database
                 .rows(u"install_apps_64"_s,
                       {u"display_name"_s, u"install_date"_s, u"modified_timestamp"_s})
                 .at(3),
             (QStringList{u"GIMP 2.10.36-1"_s, u"11/12/2023"_s, u"1702289170"_s}));
    QCOMPARE(database.column(u"uninstall_apps"_s, u"exename"_s).last(),
             u"E:\\tools\\shredder\\uninstall.exe"_s);
    QCOMPARE(database
                 .rows(u"previously_executed_apps"_s,
                       {u"system_account"_s, u"exename"_s, u"runcount"_s, u"lastruntime"_s})
                 .first(),
             (QStringList{u"anna"_s, u"Microsoft.Windows.Explorer"_s, u"61"_s, u"1703749861"_s}));
    QCOMPARE(
        database.rows(u"third_party_applications"_s, {u"file_path"_s, u"modification_timestamp"_s})
            .at(1),
        (QStringList{u"/Program Files/PuTTY/putty.exe"_s, u"1702835411"_s}));
    QCOMPARE(
        database
            .rows(u"hidden_desktop_icons_app"_s, {u"system_account"_s, u"app_name"_s, u"hidden"_s})
            .last(),
        (QStringList{u"scanner desk"_s, u"OneDrive"_s, u"YES"_s}));
}

void tst_demo_volume::has_a_hive_with_changes_in_its_logs()
{
    const QString path = m_volume.ntuser_path(u"marek"_s);
    const replayed_hive after =
        replayed(read_file(path), {read_file(path + ".LOG1"_L1), read_file(path + ".LOG2"_L1)});
    QCOMPARE(after.states(), (QList<log_state>{log_state::applied, log_state::applied}));
    const QTemporaryDir folder;
    const QString copy = folder.filePath(u"copy"_s);
    write_file(copy, after.bytes);
    const auto count =
        u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\UserAssist\\{CEBFF5CD-ACE2-4F4F-9178-9926F41749EA}\\Count"_s;
    QCOMPARE(hive_reader(copy).values(count).size(), hive_reader(path).values(count).size() + 2);
}

void tst_demo_volume::has_an_application_that_was_removed()
{
    const QString uninstall = u"Microsoft\\Windows\\CurrentVersion\\Uninstall"_s;
    const deleted_records found(read_file(m_volume.software_path()), {{uninstall, 1, 1}});
    const QStringList lines = lines_about(found);
    QCOMPARE(lines.size(), 8);
    QCOMPARE(lines.first(),
             u"key "_s + uninstall + u"\\Shredder_is1: whole, path whole, list there"_s);
    QCOMPARE(lines.at(1), u"  DisplayName of 26: there"_s);
    QVERIFY(!hive_reader(m_volume.software_path()).subkeys(uninstall).contains(u"Shredder_is1"_s));
}

void tst_demo_volume::program_writes_into_a_new_or_an_empty_folder()
{
    const QTemporaryDir folder;
    for (const QString &target : {folder.filePath(u"new/volume"_s), folder.path()}) {
        QDir(folder.filePath(u"new"_s)).removeRecursively();
        const program_result result = run_program({target});
        QCOMPARE(result.errors, QString());
        QCOMPARE(result.output, u"Demonstration volume written to %1 (accounts: anna, marek, "
                                "scanner desk)\n"_s.arg(target));
        QCOMPARE(result.exit_code, 0);
        QVERIFY(QFileInfo::exists(target + u"/Windows/System32/config/SOFTWARE"_s));
    }
}

void tst_demo_volume::program_refuses_a_folder_that_is_not_empty()
{
    evidence_volume volume;
    volume.file(u".hidden"_s, "kept", 1000);
    const QStringList before = volume_snapshot(volume.root());
    const program_result result = run_program({volume.root()});

    QCOMPARE(result.exit_code, 2);
    QCOMPARE(result.errors,
             u"demo_volume: %1 is not empty; nothing was written\n"_s.arg(volume.root()));
    QCOMPARE(volume_snapshot(volume.root()), before);
}

void tst_demo_volume::program_refuses_wrong_arguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("error");
    const QString usage = u"demo_volume: give one folder: demo_volume DIR\n"_s;
    QTest::newRow("no folder") << QStringList() << usage;
    QTest::newRow("two folders") << QStringList{u"one"_s, u"two"_s} << usage;
    QTest::newRow("an unknown option")
        << QStringList{u"--colour"_s} << u"demo_volume: Unknown option 'colour'.\n"_s;
    QTest::newRow("a file") << QStringList{QStringLiteral(DEMO_VOLUME_PROGRAM)}
                            << u"demo_volume: %1 is not a folder\n"_s.arg(
                                   QStringLiteral(DEMO_VOLUME_PROGRAM));
}

void tst_demo_volume::program_refuses_wrong_arguments()
{
    QFETCH(const QStringList, arguments);
    const program_result result = run_program(arguments);
    QTEST(result.errors, "error");
    QCOMPARE(result.exit_code, 2);
}

void tst_demo_volume::program_tells_when_it_cannot_write()
{
    evidence_volume volume;
    volume.file(u"file"_s);
    const QString target = volume.path(u"file/below"_s);
    const program_result result = run_program({target});
    QCOMPARE(result.exit_code, 1);
    QCOMPARE(result.errors, u"demo_volume: cannot create the folder %1/\n"_s.arg(target));
}

TEST_MAIN(tst_demo_volume)
#include "tst_demo_volume.moc"
