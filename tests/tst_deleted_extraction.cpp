#include "application_keys.h"
#include "files.h"
#include "hive_deletion.h"
#include "host_test.h"
#include "result_database.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// Runs that look for deleted records besides.
class tst_deleted_extraction : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init();
    void gives_the_rows_of_before_data();
    void gives_the_rows_of_before();
    void leaves_the_result_as_it_is();
    void tells_each_row_where_it_comes_from();
    void tells_all_finds();
    void gives_each_of_several_versions_a_row();
    void tells_of_versions_without_a_row();
    void ends_with_ctrl_c();
    void tells_when_nothing_is_found();
    void records_what_it_did();
    void leaves_the_evidence_as_it_was();
    void replaces_the_finds_of_an_earlier_run();
    void keeps_the_finds_of_other_sources();
    void stays_away_from_foreign_files();
    void searches_the_selected_tabs_only();
    void is_marked_wherever_it_is_looked_at_data();
    void is_marked_wherever_it_is_looked_at();
    void is_found_by_its_path_alone();

private:
    using rows_by_table = QMap<QString, QList<QStringList>>;

    QString recovered_path() const
    {
        return QFileInfo(database_path()).path() +
               "/Windows_Installed_Applications_recovered.sqlite"_L1;
    }
    host_result run(const QStringList &more = {u"--deleted"_s}) const
    {
        return extract(*m_volume, QStringList{u"--quiet"_s, u"--user"_s, u"ann"_s} + more);
    }
    rows_by_table rows_in(const QString &database) const;
    void delete_key(const QString &hive_file, hive_builder &hive, const QString &path) const;

    std::unique_ptr<evidence_volume> m_volume;
};

namespace {

constexpr qint64 time_of_deletion = 134000000000000000;
const auto user_file = u"Users/ann/NTUSER.DAT"_s;
const auto user_uninstall_key = u"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall"_s;
const QStringList tables{u"install_apps_64"_s,          u"install_apps_32"_s,
                         u"uninstall_apps"_s,           u"registered_apps"_s,
                         u"previously_executed_apps"_s, u"third_party_applications"_s,
                         u"hidden_desktop_icons_app"_s};

/// Applications with all of their values, in several scripts, and neighbours that stay.
void fill_more(hive_builder &software, hive_builder &user)
{
    hive_key &editor = software.key(uninstall_key).key(u"Größe {1}"_s);
    editor.last_write_unix(1'700'000'123);
    editor.text(u"DisplayName"_s, u"Редактор 2.1"_s).text(u"DisplayVersion"_s, u"2.1"_s);
    editor.text(u"Publisher"_s, u"Somebody"_s).text(u"InstallDate"_s, u"20231106"_s);
    editor.text(u"InstallLocation"_s, u"C:\\Program Files\\Editor\\"_s);
    editor.text(u"UninstallString"_s, u"\"C:\\Program Files\\Editor\\unins000.exe\" /x"_s);
    editor.dword(u"NoModify"_s, 1).text(u"URLInfoAbout"_s, u"https://editor.example"_s);
    software.key(uninstall_key_32).key(u"Old"_s).text(u"DisplayName"_s, u"Old 1"_s);
    user.key(user_uninstall_key).key(u"Mine"_s).text(u"DisplayName"_s, u"Mine 3"_s);
}

QString sha256_of(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

} // namespace

void tst_deleted_extraction::init()
{
    begin_test();
    m_volume = small_volume();
    fill_more(m_volume->software(), m_volume->user(u"ann"_s));
    m_volume->write();
}

/// The rows of all tables without their numbers and without what only recovered ones have.
tst_deleted_extraction::rows_by_table tst_deleted_extraction::rows_in(const QString &database) const
{
    static const QStringList others{u"INT"_s, u"offset"_s, u"state"_s, u"path_state"_s,
                                    u"evidence_file"_s};
    const result_database result(database);
    rows_by_table rows;
    for (const QString &table : tables) {
        QStringList columns;
        for (const QString &column : result.columns(table)) {
            if (!others.contains(column))
                columns.append(column);
        }
        rows.insert(table, result.rows(table, columns));
    }
    return rows;
}

void tst_deleted_extraction::delete_key(const QString &hive_file, hive_builder &hive,
                                        const QString &path) const
{
    const qint64 key = hive_builder::offset_of(hive.key(path));
    hive_deletion deletion(read_file(m_volume->path(hive_file)));
    m_volume->file(hive_file, deletion.key(key, time_of_deletion).bytes());
}

void tst_deleted_extraction::gives_the_rows_of_before_data()
{
    QTest::addColumn<QString>("hive");
    QTest::addColumn<QStringList>("keys");
    QTest::addColumn<int>("rows");
    QTest::newRow("an application")
        << software_file << QStringList{uninstall_key + u"\\Größe {1}"_s} << 1;
    QTest::newRow("two applications")
        << software_file
        << QStringList{uninstall_key + u"\\Größe {1}"_s, uninstall_key + u"\\Browser"_s} << 2;
    QTest::newRow("all applications of 32 bits")
        << software_file << QStringList{uninstall_key_32} << 2;
    QTest::newRow("an application of 32 bits")
        << software_file << QStringList{uninstall_key_32 + u"\\Old"_s} << 1;
    QTest::newRow("the registered applications")
        << software_file << QStringList{registered_applications_key} << 1;
    QTest::newRow("all of the machine")
        << software_file
        << QStringList{uninstall_key, uninstall_key_32, registered_applications_key} << 6;
    QTest::newRow("an application of a user") << user_file << QStringList{user_uninstall_key} << 1;
    QTest::newRow("what the shell counted") << user_file << QStringList{user_assist_key} << 3;
    QTest::newRow("stored programs") << user_file << QStringList{compatibility_store_key} << 1;
    QTest::newRow("a hidden icon") << user_file << QStringList{hide_desktop_icons_key} << 1;
    QTest::newRow("a hidden icon and its name")
        << user_file << QStringList{hide_desktop_icons_key, name_space_key} << 1;
    QTest::newRow("all of the user") << user_file << QStringList{u"Software"_s} << 6;
}

void tst_deleted_extraction::gives_the_rows_of_before()
{
    QFETCH(const QString, hive);
    QFETCH(const QStringList, keys);
    QFETCH(const int, rows);
    run({});
    rows_by_table before = rows_in(database_path());
    hive_builder &builder = hive == user_file ? m_volume->user(u"ann"_s) : m_volume->software();
    for (const QString &key : keys)
        delete_key(hive, builder, key);
    QCOMPARE(run({u"--deleted"_s, u"--replace"_s}).exit_code, 0);
    const rows_by_table after = rows_in(database_path());
    const rows_by_table recovered = rows_in(recovered_path());
    int gone = 0;
    for (const QString &table : tables) {
        for (const QStringList &row : after.value(table))
            before[table].removeOne(row);
        QCOMPARE(recovered.value(table), before.value(table));
        gone += int(before.value(table).size());
    }
    QCOMPARE(gone, rows);
}

void tst_deleted_extraction::leaves_the_result_as_it_is()
{
    delete_key(software_file, m_volume->software(), uninstall_key + u"\\Browser"_s);
    const host_result without = run({});
    const QByteArray database = read_file(database_path());
    const host_result with = run({u"--deleted"_s, u"--replace"_s});
    QVERIFY(read_file(database_path()) == database);
    QCOMPARE(with.output, without.output);
    QCOMPARE(with.exit_code, without.exit_code);
    QCOMPARE(with.errors.size(), without.errors.size() + 1);
}

void tst_deleted_extraction::tells_each_row_where_it_comes_from()
{
    hive_builder &software = m_volume->software();
    delete_key(software_file, software, uninstall_key + u"\\Browser"_s);
    const host_result result = run();
    QCOMPARE(result.errors.last(),
             u"artifact_host: deleted records: 2 found, 2 hives searched; rows made of them: 1; "
             "database: "_s +
                 recovered_path());
    const qint64 offset = hive_builder::offset_of(software.key(uninstall_key + u"\\Browser"_s));
    QCOMPARE(result_database(recovered_path())
                 .rows(u"install_apps_64"_s, {u"display_name"_s, u"offset"_s, u"state"_s,
                                              u"path_state"_s, u"evidence_file"_s}),
             (QList<QStringList>{
                 {u"Browser"_s, QString::number(offset), u"whole"_s, u"whole"_s, software_file}}));
}

void tst_deleted_extraction::tells_all_finds()
{
    hive_builder &user = m_volume->user(u"ann"_s);
    const hive_key &count = user.key(user_assist_key + "\\{CEBFF5CD}\\Count"_L1);
    hive_deletion deletion(read_file(m_volume->path(user_file)));
    deletion.value(hive_builder::offset_of(count), count.cells_of_value(u"havafgnyy.rkr"_s).value,
                   time_of_deletion);
    m_volume->file(user_file, deletion.bytes());
    delete_key(software_file, m_volume->software(), uninstall_key + u"\\Browser"_s);
    run();
    const QString uninstall = uninstall_key + u"\\Browser"_s;
    const QString written = QString::number(1'700'000'000);
    const QString null = u"␀"_s;
    QCOMPARE(
        result_database(recovered_path())
            .rows(u"deleted_records"_s,
                  {u"kind"_s, u"key_path"_s, u"value_name"_s, u"value_data"_s, u"state"_s,
                   u"path_state"_s, u"key_written_timestamp"_s, u"source_file"_s}),
        (QList<QStringList>{{u"value of a living key"_s, user_assist_key + "\\{CEBFF5CD}\\Count"_L1,
                             u"havafgnyy.rkr"_s, QString(144, u'0'), u"whole"_s, u"doubtful"_s,
                             QString::number(time_of_deletion / 10'000'000 - 11'644'473'600),
                             u"/"_s + user_file},
                            {u"key"_s, uninstall, null, null, u"whole"_s, u"whole"_s, written,
                             u"/"_s + software_file},
                            {u"value"_s, uninstall, u"DisplayName"_s, u"Browser"_s, u"whole"_s,
                             u"whole"_s, written, u"/"_s + software_file}}));
    QCOMPARE(result_database(recovered_path()).column(u"uninstall_apps"_s, u"exename"_s),
             QStringList{u"uninstall.exe"_s});
}

/// The same key with two texts: the hive of before behind the last bin of the hive of now.
void tst_deleted_extraction::gives_each_of_several_versions_a_row()
{
    const QByteArray now = read_file(m_volume->software_path());
    hive_builder &software = m_volume->software();
    const hive_key &editor = software.key(uninstall_key + u"\\Größe {1}"_s);
    const hive_key &browser = software.key(uninstall_key + u"\\Browser"_s);
    hive_deletion deletion(now);
    deletion.key(hive_builder::offset_of(editor), time_of_deletion);
    deletion.key(hive_builder::offset_of(browser), time_of_deletion);
    QByteArray hive = deletion.bytes();
    // The name of one becomes that of the other.
    const qint64 name = hive_builder::offset_of(browser) + 80;
    hive.replace(name, 7, QByteArray("Same").leftJustified(7, '\0'));
    hive[name - 4] = 4;
    hive.replace(hive_builder::offset_of(editor) + 80, 9,
                 QByteArray("SAME").leftJustified(9, '\0'));
    hive[hive_builder::offset_of(editor) + 76] = 4;
    m_volume->file(software_file, hive);
    run();
    const QList<QStringList> rows =
        result_database(recovered_path())
            .rows(u"install_apps_64"_s, {u"parent_name"_s, u"display_name"_s, u"offset"_s});
    QCOMPARE(rows.size(), 2);
    QVERIFY(rows.contains(
        {u"Same"_s, u"Browser"_s, QString::number(hive_builder::offset_of(browser))}));
    QVERIFY(rows.contains(
        {u"SAME"_s, u"Редактор 2.1"_s, QString::number(hive_builder::offset_of(editor))}));
}

/// The same key over and over behind the last bin.
void tst_deleted_extraction::tells_of_versions_without_a_row()
{
    constexpr int versions = 70;
    constexpr int most = 64;
    const QByteArray hive = read_file(m_volume->software_path());
    const hive_key &viewer = m_volume->software().key(uninstall_key).key(u"Seven Zip"_s);
    QByteArray key = hive.mid(hive_builder::offset_of(viewer), 96);
    key.replace(40, 4, QByteArray(4, '\0')); // it has no values
    m_volume->file(software_file, hive + key.repeated(versions));
    const host_result result = run();
    QCOMPARE(result.errors.first(),
             u"artifact_host: warning: %1: %2 deleted records would give the same rows as %3 "
             "others each, and have none"_s.arg(software_file)
                 .arg(versions - most)
                 .arg(most));
    QCOMPARE(result.exit_code, 6);
    QCOMPARE(result_database(recovered_path()).row_count(u"install_apps_64"_s), most);
}

/// More finds than are written before the signal comes.
void tst_deleted_extraction::ends_with_ctrl_c()
{
    run({});
    const QByteArray database = read_file(database_path());
    QByteArray value = QByteArray("\x20\0\0\0vk\1\0\4\0\0\x80\7\0\0\0\4\0\0\0\1\0\0\0a", 25);
    value = value.leftJustified(32, '\0');
    m_volume->file(software_file,
                   with_free_bin(read_file(m_volume->software_path()), value.repeated(1 << 20)));
    host_process process;
    process.start(arguments(m_volume->root(), {u"--user"_s, u"ann"_s, u"--deleted"_s,
                                               u"--replace"_s, u"--no-hashes"_s}));
    process.wait_for_error_line(
        u"artifact_host: looking for deleted records; Ctrl-C gives it up"_s);
    process.send_signal(SIGINT);
    const host_result result = process.finish();
    QCOMPARE(result.exit_code, 130);
    QVERIFY(result.errors.contains(u"artifact_host: deleted records: the search was cancelled; no "
                                   "database of them was written"_s));
    QVERIFY(read_file(database_path()) == database);
    QCOMPARE(last_run().value("outcome"_L1), u"cancelled"_s);
    QVERIFY(last_run().value("deleted_records"_L1).toObject().value("cancelled"_L1).toBool());
    QCOMPARE(QDir(QFileInfo(database_path()).path())
                 .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                            QDir::Name | QDir::IgnoreCase),
             (QStringList{u"run.json"_s, u"Windows_Installed_Applications.sqlite"_s}));
}

void tst_deleted_extraction::tells_when_nothing_is_found()
{
    const host_result result = run();
    QCOMPARE(result.errors,
             QStringList{u"artifact_host: deleted records: none found, 2 hives searched; no "
                         "database of them was written"_s});
    QVERIFY(!QFileInfo::exists(recovered_path()));
    QCOMPARE(result.exit_code, 0);
    QCOMPARE(QDir(QFileInfo(database_path()).path())
                 .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                            QDir::Name | QDir::IgnoreCase),
             (QStringList{u"run.json"_s, u"Windows_Installed_Applications.sqlite"_s}));
}

void tst_deleted_extraction::records_what_it_did()
{
    run({});
    QVERIFY(!last_run().contains("deleted_records"_L1));
    delete_key(software_file, m_volume->software(), uninstall_key + u"\\Browser"_s);
    run({u"--deleted"_s, u"--replace"_s});
    const QJsonObject entry = last_run().value("deleted_records"_L1).toObject();
    QCOMPARE(entry.value("database"_L1), recovered_path());
    QCOMPARE(entry.value("rows"_L1), 1);
    QCOMPARE(entry.value("finds"_L1), 2);
    const QJsonArray hives = entry.value("hives"_L1).toArray();
    QCOMPARE(hives.size(), 2);
    QCOMPARE(hives.last().toObject().value("path"_L1), software_file);
    QCOMPARE(hives.last().toObject().value("deleted_keys"_L1), 1);
    const QJsonArray rebuilt = entry.value("rebuilt_hives"_L1).toArray();
    QCOMPARE(rebuilt.size(), 1);
    const QJsonObject copy = rebuilt.first().toObject();
    QCOMPARE(copy.value("path"_L1), software_file);
    const QString file = copy.value("copy"_L1).toString();
    QCOMPARE(file,
             QFileInfo(database_path()).path() + "/rebuilt_hives/Source1/1/"_L1 + software_file);
    QCOMPARE(copy.value("copy_sha256"_L1), sha256_of(read_file(file)));
}

void tst_deleted_extraction::leaves_the_evidence_as_it_was()
{
    delete_key(software_file, m_volume->software(), uninstall_key + u"\\Browser"_s);
    const QStringList before = volume_snapshot(m_volume->root());
    run();
    QCOMPARE(volume_snapshot(m_volume->root()), before);
}

void tst_deleted_extraction::replaces_the_finds_of_an_earlier_run()
{
    const QByteArray hive = read_file(m_volume->software_path());
    delete_key(software_file, m_volume->software(), uninstall_key + u"\\Browser"_s);
    run();
    run();
    QCOMPARE(result_database(recovered_path()).row_count(u"install_apps_64"_s), 1);
    m_volume->file(software_file, hive);
    run({u"--deleted"_s, u"--replace"_s});
    QVERIFY(!QFileInfo::exists(recovered_path()));
}

void tst_deleted_extraction::keeps_the_finds_of_other_sources()
{
    delete_key(software_file, m_volume->software(), uninstall_key + u"\\Browser"_s);
    run();
    delete_key(software_file, m_volume->software(), uninstall_key + u"\\Seven Zip"_s);
    run({u"--deleted"_s, u"--add"_s});
    QStringList rows;
    for (const QStringList &row :
         result_database(recovered_path())
             .rows(u"install_apps_64"_s, {u"source_count_name"_s, u"display_name"_s}))
        rows.append(row.join(u' '));
    rows.sort();
    QCOMPARE(rows, (QStringList{u"Source1 Browser"_s, u"Source2 7-Zip"_s, u"Source2 Browser"_s}));
}

void tst_deleted_extraction::stays_away_from_foreign_files()
{
    delete_key(software_file, m_volume->software(), uninstall_key + u"\\Browser"_s);
    write_file(folder_path(u"foreign"_s), "some text");
    QDir().mkpath(QFileInfo(recovered_path()).path());
    QVERIFY(QFile::copy(folder_path(u"foreign"_s), recovered_path()));
    const host_result result = run();
    QCOMPARE(result.exit_code, 4);
    QVERIFY(
        result.errors.last().endsWith("is no database of deleted records and stays as it is"_L1));
    QCOMPARE(read_file(recovered_path()), QByteArray("some text"));
}

void tst_deleted_extraction::searches_the_selected_tabs_only()
{
    delete_key(software_file, m_volume->software(), uninstall_key + u"\\Browser"_s);
    delete_key(software_file, m_volume->software(), uninstall_key_32 + u"\\Old"_s);
    run({u"--deleted"_s, u"--tab"_s, u"install_apps_32"_s});
    const result_database recovered(recovered_path());
    QCOMPARE(recovered.column(u"install_apps_32"_s, u"display_name"_s), QStringList{u"Old 1"_s});
    QCOMPARE(recovered.column(u"deleted_records"_s, u"kind"_s),
             (QStringList{u"key"_s, u"value"_s}));
}

void tst_deleted_extraction::is_marked_wherever_it_is_looked_at_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("shown");
    QTest::newRow("shown") << QStringList{u"show"_s, u"RECOVERED"_s, u"--tab"_s,
                                          u"install_apps_64"_s}
                           << u"Browser"_s;
    QTest::newRow("all finds shown")
        << QStringList{u"show"_s, u"RECOVERED"_s, u"--tab"_s, u"deleted_records"_s}
        << u"DisplayName"_s;
    QTest::newRow("as a time line")
        << QStringList{u"show"_s, u"RECOVERED"_s, u"--view"_s, u"timeline"_s}
        << u"Uninstall key last written"_s;
    QTest::newRow("as programs") << QStringList{u"show"_s, u"RECOVERED"_s, u"--view"_s,
                                                u"programs"_s}
                                 << u"Browser"_s;
    QTest::newRow("exported") << QStringList{u"export"_s, u"RECOVERED"_s, u"--format"_s,
                                             u"csv"_s,    u"--to"_s,      u"FOLDER"_s}
                              << u"deleted_records.csv"_s;
    QTest::newRow("compared") << QStringList{u"compare"_s, u"RESULT"_s, u"RECOVERED"_s}
                              << u"Browser"_s;
}

void tst_deleted_extraction::is_marked_wherever_it_is_looked_at()
{
    QFETCH(QStringList, arguments);
    QFETCH(const QString, shown);
    delete_key(software_file, m_volume->software(), uninstall_key + u"\\Browser"_s);
    run();
    arguments.replaceInStrings(u"RECOVERED"_s, recovered_path());
    arguments.replaceInStrings(u"RESULT"_s, result_path());
    arguments.replaceInStrings(u"FOLDER"_s, folder_path(u"exported"_s));
    const host_result result = host_process().run(arguments);
    QCOMPARE(result.exit_code, 0);
    QVERIFY(
        result.errors.contains(u"artifact_host: these rows are recovered from deleted records"_s));
    QVERIFY2(result.output.join(u'\n').contains(shown), qPrintable(result.output.join(u'\n')));
}

void tst_deleted_extraction::is_found_by_its_path_alone()
{
    delete_key(software_file, m_volume->software(), uninstall_key + u"\\Browser"_s);
    run();
    for (const QString &place : {result_path(), QFileInfo(database_path()).path()}) {
        const host_result result =
            host_process().run({u"show"_s, place, u"--tab"_s, u"install_apps_64"_s});
        QCOMPARE(result.exit_code, 0);
        QCOMPARE(result.errors, QStringList());
        QVERIFY(!result.output.join(u'\n').contains(u"Browser"_s));
    }
}

TEST_MAIN(tst_deleted_extraction)
#include "tst_deleted_extraction.moc"
