#include "files.h"
#include "host_test.h"
#include "test_main.h"

#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What the program makes of results that are not there or not whole.
class tst_host_failures : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init() { begin_test(); }
    void fails_when_no_database_was_made();
    void fails_when_the_plug_in_logs_failures();
    void fails_when_rows_are_missing_from_the_database();
    void fails_when_the_database_is_garbage();
    void fails_when_a_table_has_other_columns();
};

void tst_host_failures::fails_when_no_database_was_made()
{
    const auto volume = small_volume();
    const host_result result = extract(*volume, recorded + QStringList{u"--quiet"_s});
    const QString database =
        canonical_folder() + "/results/Artifacts_Result/Recorded_Calls/Recorded_Calls.sqlite"_L1;
    QVERIFY(result.errors.contains(
        u"artifact_host: no result database was made at %1"_s.arg(database)));
    QCOMPARE(result.output, QStringList());
    QCOMPARE(result.exit_code, 1);
}

void tst_host_failures::fails_when_the_plug_in_logs_failures()
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

void tst_host_failures::fails_when_rows_are_missing_from_the_database()
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

void tst_host_failures::fails_when_the_database_is_garbage()
{
    const auto volume = small_volume();
    make_folder(QFileInfo(database_path()).path());
    write_file(database_path(), QByteArray(8192, 'x'));
    const host_result result = extract(*volume, {u"--quiet"_s});
    QCOMPARE(result.errors,
             QStringList{u"artifact_host: the result database %1 cannot be used: file "
                         "is not a database; --replace makes a new one"_s.arg(database_path())});
    QCOMPARE(result.exit_code, 4);
    QCOMPARE(read_file(database_path()), QByteArray(8192, 'x'));
}

void tst_host_failures::fails_when_a_table_has_other_columns()
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
        u"artifact_host: the table metro_apps could not be written, so the run was ended: "_s;
    QCOMPARE(result.errors.size(), 1);
    QCOMPARE(result.errors.last().left(failure.size()), failure);
    QCOMPARE(result.exit_code, 1);
}

TEST_MAIN(tst_host_failures)
#include "tst_host_failures.moc"
