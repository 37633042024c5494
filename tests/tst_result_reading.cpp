#include "files.h"
#include "made_result.h"
#include "result_file.h"
#include "result_place.h"
#include "row_cursor.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace results;
using namespace test_support;

// Opening results, whole ones and others, and reading their rows.
class tst_result_reading : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void finds_results_data();
    void finds_results();
    void refuses_what_is_no_result_data();
    void refuses_what_is_no_result();
    void reads_tables_of_a_later_version();
    void reads_no_views_and_no_made_up_columns();
    void tells_where_a_damaged_database_ends();
    void reads_a_database_whose_last_transaction_was_never_finished();
    void reads_a_database_with_a_write_ahead_log();
    void leaves_the_result_as_it_is();
    void lets_a_run_write_between_its_batches();
    void tells_that_the_database_is_locked();
    void reads_every_row_id();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

namespace {

const auto executed = u"previously_executed_apps"_s;

QStringList names_in(const opened_result &result)
{
    row_cursor rows(result, result.layout_of(executed));
    QStringList names;
    for (const QStringList &row : texts_of(rows, {u"exename"_s}))
        names += row;
    return names;
}

} // namespace

void tst_result_reading::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void tst_result_reading::finds_results_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("found");
    const auto database = u"case/Artifacts_Result/Apps/Apps.sqlite"_s;
    QTest::newRow("the folder of a run") << QStringList{database} << u"case"_s << database;
    QTest::newRow("the folder of a database")
        << QStringList{database} << u"case/Artifacts_Result/Apps"_s << database;
    QTest::newRow("the database") << QStringList{database} << database << database;
    QTest::newRow("any database") << QStringList{u"a.sqlite"_s} << u"."_s << u"a.sqlite"_s;
    QTest::newRow("two results") << QStringList{database,
                                                u"case/Artifacts_Result/More/More.sqlite"_s}
                                 << u"case"_s << QString();
    QTest::newRow("an empty folder") << QStringList{u"x/readme"_s} << u"x"_s << QString();
    QTest::newRow("nothing") << QStringList() << u"nowhere"_s << QString();
}

void tst_result_reading::finds_results()
{
    QFETCH(const QStringList, files);
    QFETCH(const QString, given);
    QFETCH(const QString, found);
    for (const QString &file : files) {
        make_folder(QFileInfo(path(file)).path());
        write_file(path(file), "x");
    }
    const result_place place = find_result(path(given));
    QCOMPARE(place.failure.isEmpty(), !found.isEmpty());
    if (!found.isEmpty()) {
        QCOMPARE(QDir::cleanPath(place.database_file), path(found));
        QCOMPARE(QFileInfo(place.record_file).fileName(), u"run.json"_s);
    }
}

void tst_result_reading::refuses_what_is_no_result_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("statement");
    QTest::addColumn<QString>("reason");
    QTest::newRow("text") << QByteArray(8192, 'x') << QString() << u"file is not a database"_s;
    QTest::newRow("cut header") << QByteArray("SQLite format 3") << QString()
                                << u"file is not a database"_s;
    QTest::newRow("empty file") << QByteArray("") << QString() << u"none of its tables"_s;
    QTest::newRow("another program's")
        << QByteArray() << u"CREATE TABLE messages(id integer, text)"_s << u"none of its tables"_s;
    QTest::newRow("a view of a table's name")
        << QByteArray()
        << u"CREATE VIEW metro_apps AS SELECT 1 AS INT, 2 AS source_file, 3 AS "
           "source_count_name"_s
        << u"none of its tables"_s;
}

void tst_result_reading::refuses_what_is_no_result()
{
    QFETCH(const QByteArray, content);
    QFETCH(const QString, statement);
    QFETCH(const QString, reason);
    const QString file = path(u"made.sqlite"_s);
    if (statement.isEmpty())
        write_file(file, content);
    else
        execute(file, statement);
    const opened_result result(file);
    QVERIFY2(result.failure().contains(reason), qPrintable(result.failure()));
}

void tst_result_reading::reads_tables_of_a_later_version()
{
    made_result made(path(u"made.sqlite"_s));
    execute(made.path(), u"ALTER TABLE metro_apps ADD COLUMN colour"_s);
    execute(made.path(), u"CREATE TABLE later_apps(INT INTEGER PRIMARY KEY, program, source_file, "
                         "source_count_name)"_s);
    execute(made.path(), u"DROP TABLE registered_apps"_s);
    made.add(u"later_apps"_s, {{u"program"_s, u"'a.exe'"_s}});
    const auto result = made.opened();
    QCOMPARE(result->failure(), QString());
    QCOMPARE(
        result->remarks(),
        (QStringList{u"table metro_apps has columns that are unknown to this program: colour"_s,
                     u"table later_apps is unknown to this program"_s,
                     u"the database has no table registered_apps"_s}));
    QCOMPARE(result->tables().last(), u"later_apps"_s);
    row_cursor rows(*result, result->layout_of(u"later_apps"_s));
    QCOMPARE(texts_of(rows, {u"INT"_s, u"program"_s}), (QList<QStringList>{{u"1"_s, u"a.exe"_s}}));
}

void tst_result_reading::reads_no_views_and_no_made_up_columns()
{
    made_result made(path(u"made.sqlite"_s));
    execute(made.path(), u"DROP TABLE metro_apps"_s);
    execute(made.path(), u"CREATE TABLE metro_apps(INT INTEGER PRIMARY KEY, source_file, "
                         "source_count_name, endless AS (zeroblob(100)))"_s);
    QVERIFY(place_of(made.opened()->layout_of(u"metro_apps"_s).columns(), u"endless"_s) < 0);
    QVERIFY(place_of(made.opened()->layout_of(u"metro_apps"_s).columns(), u"source_file"_s) >= 0);
}

void tst_result_reading::tells_where_a_damaged_database_ends()
{
    made_result made(path(u"made.sqlite"_s));
    for (int i = 0; i < 40; ++i)
        made.add(executed, {{u"exename"_s, u"hex(zeroblob(2000))"_s}});
    QByteArray content = read_file(made.path());
    constexpr qsizetype page = 4096;
    for (qsizetype at = content.size() - 8 * page; at < content.size(); at += page)
        content.replace(at, 64, QByteArray(64, '\xff'));
    write_file(made.path(), content);
    const auto result = made.opened();
    QCOMPARE(result->failure(), QString());
    row_cursor rows(*result, result->layout_of(executed));
    const auto read = texts_of(rows, {u"INT"_s}).size();
    QVERIFY(read > 0 && read < 40);
    QCOMPARE(rows.failure(), u"table previously_executed_apps cannot be read to its end: database "
                             "disk image is malformed"_s);
}

void tst_result_reading::reads_a_database_whose_last_transaction_was_never_finished()
{
    made_result made(path(u"made.sqlite"_s));
    made.add(executed, {{u"exename"_s, u"'kept'"_s}});
    // A copy of the files in the middle of a transaction is what a killed run leaves.
    const QString copy = path(u"killed.sqlite"_s);
    {
        const test_support::sqlite_connection writer(made.path());
        execute(writer.database, u"PRAGMA cache_size = 1"_s);
        execute(writer.database, u"BEGIN"_s);
        for (int i = 0; i < 200; ++i)
            execute(writer.database,
                    u"INSERT INTO %1(exename) VALUES(hex(zeroblob(2000)))"_s.arg(executed));
        QVERIFY(QFileInfo::exists(made.path() + "-journal"_L1));
        QVERIFY(QFile::copy(made.path(), copy));
        QVERIFY(QFile::copy(made.path() + "-journal"_L1, copy + "-journal"_L1));
        execute(writer.database, u"ROLLBACK"_s);
    }
    const QStringList before = volume_snapshot(m_folder->path());
    const opened_result result(copy);
    QCOMPARE(result.failure(), QString());
    QCOMPARE(names_in(result), QStringList{u"kept"_s});
    QCOMPARE(result.remarks(), QStringList{u"the database %1 is read in a copy, because its last "
                                           "transaction was never finished"_s.arg(copy)});
    QCOMPARE(volume_snapshot(m_folder->path()), before);
}

void tst_result_reading::reads_a_database_with_a_write_ahead_log()
{
    made_result made(path(u"made.sqlite"_s));
    const test_support::sqlite_connection writer(made.path());
    execute(writer.database, u"PRAGMA journal_mode = WAL"_s);
    execute(writer.database, u"INSERT INTO %1(exename) VALUES('logged')"_s.arg(executed));
    const auto result = made.opened();
    QCOMPARE(names_in(*result), QStringList{u"logged"_s});
    QCOMPARE(result->remarks().size(), 1);
}

void tst_result_reading::leaves_the_result_as_it_is()
{
    made_result made(path(u"made.sqlite"_s));
    made.add(executed, {{u"exename"_s, u"'a'"_s}});
    const QStringList before = volume_snapshot(m_folder->path());
    QVERIFY(QFile::setPermissions(m_folder->path(), QFile::ReadOwner | QFile::ExeOwner));
    QCOMPARE(names_in(*made.opened()), QStringList{u"a"_s});
    QVERIFY(QFile::setPermissions(m_folder->path(),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QCOMPARE(volume_snapshot(m_folder->path()), before);
}

void tst_result_reading::lets_a_run_write_between_its_batches()
{
    made_result made(path(u"made.sqlite"_s));
    const test_support::sqlite_connection writer(made.path());
    execute(writer.database,
            u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
            "WHERE i < 3000) INSERT INTO %1(exename) SELECT i FROM n"_s.arg(executed));
    const auto result = made.opened();
    row_cursor rows(*result, result->layout_of(executed));
    QVERIFY(rows.next() != nullptr);
    QVERIFY(!result->has_changed());
    // The writer waits for no lock: it fails at once if the reader holds one.
    execute(writer.database, u"DELETE FROM %1 WHERE INT = 3000"_s.arg(executed));
    int count = 1;
    while (rows.next() != nullptr)
        ++count;
    QCOMPARE(count, 2999);
    QCOMPARE(rows.failure(), QString());
    QVERIFY(result->has_changed());
}

void tst_result_reading::tells_that_the_database_is_locked()
{
    made_result made(path(u"made.sqlite"_s));
    const test_support::sqlite_connection writer(made.path());
    execute(writer.database, u"BEGIN EXCLUSIVE"_s);
    const auto result = made.opened();
    QVERIFY2(result->failure().endsWith("cannot be read: database is locked"_L1),
             qPrintable(result->failure()));
}

void tst_result_reading::reads_every_row_id()
{
    made_result made(path(u"made.sqlite"_s));
    const QStringList ids{u"-9223372036854775808"_s, u"-1"_s, u"0"_s, u"9223372036854775807"_s};
    for (const QString &id : ids)
        made.add(executed, {{u"INT"_s, id}, {u"exename"_s, sql_text(id)}});
    QCOMPARE(names_in(*made.opened()), ids);
}

TEST_MAIN(tst_result_reading)
#include "tst_result_reading.moc"
