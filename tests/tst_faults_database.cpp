#include "files.h"
#include "host_double.h"
#include "log_capture.h"
#include "result_database.h"
#include "result_file.h"
#include "run_log.h"
#include "sample_evidence.h"
#include "tab_rows.h"
#include "test_main.h"

#include <QFileInfo>
#include <QSqlQuery>
#include <QTest>
#include <optional>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// The database is locked, cannot be written or is not as it was made. The run comes to its end,
// says so in the fixed words, and loses nothing that was committed.
class tst_faults_database : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void database_locked_by_another_process_data();
    void database_locked_by_another_process();
    void database_read_by_another_process();
    void database_that_may_not_be_written_data();
    void database_that_may_not_be_written();
    void folder_that_may_not_be_written();
    void table_missing_data();
    void table_missing();
    void table_of_another_shape_data();
    void table_of_another_shape();
    void database_that_is_no_database();

private:
    void lose_rows_of_table_after(const QString &table, const QStringList &statements,
                                  const QString &error);

    std::optional<reference_run> m_reference;
};

void tst_faults_database::initTestCase()
{
    m_reference.emplace();
}

void tst_faults_database::database_locked_by_another_process_data()
{
    add_tab_rows();
}

void tst_faults_database::database_locked_by_another_process()
{
#ifndef Q_OS_LINUX
    QSKIP("Waiting for a lock is made short on Linux only");
#endif
    QFETCH(const QString, tab);
    const QString folder = finished_folder(*m_reference);
    {
        const sqlite_connection other(database_in(folder));
        execute(other.database, u"begin exclusive"_s);
        const logged_run run = run_with_log(m_reference->process(folder).tabs({tab}), folder);
        QVERIFY2(run.outcome.completed, run.outcome.errors.constData());
        QCOMPARE(defect_of_log(run.lines, run.outcome.events, {tab}, *m_reference), QString());
        QCOMPARE(lines_of_run(run.lines, tab_named(tab)),
                 insert_failures(tab_named(tab), unprepared, sample_row_count));
    }
    QCOMPARE(
        defect_of_tables(*m_reference, database_in(folder), static_cast<int>(all_tabs().size())),
        QString());
}

// Another process reads while rows are written: each row goes in, and the commit is what fails.
void tst_faults_database::database_read_by_another_process()
{
#ifndef Q_OS_LINUX
    QSKIP("Waiting for a lock is made short on Linux only");
#endif
    const QString folder = m_reference->fresh_folder();
    host_double host(m_reference->volume());
    host.settings.result_folder = folder;
    host.set_up();
    const QString database = database_in(folder);
    {
        const sqlite_connection other(database);
        QSqlQuery reading(other.database);
        QVERIFY(reading.exec(u"begin"_s));
        QVERIFY(reading.exec(u"select name from sqlite_master"_s) && reading.next());
        const auto [outcome, lines] = run_with_log(m_reference->process(folder), folder);
        QVERIFY2(outcome.completed, outcome.errors.constData());
        // Nothing reports a commit that failed: neither the log nor the rows counted.
        QCOMPARE(lines, m_reference->log());
        QCOMPARE(outcome.events, m_reference->outcome().events);
    }
    QCOMPARE(integrity_after_recovery(database), u"ok"_s);
    for (const QString &table : all_tabs())
        QCOMPARE(rows_in(database, table), QList<QStringList>());
    QVERIFY(m_reference->process(folder).run().completed); // the reader has gone
    QCOMPARE(defect_of_tables(*m_reference, database, static_cast<int>(all_tabs().size())),
             QString());
}

void tst_faults_database::database_that_may_not_be_written_data()
{
    add_tab_rows();
}

void tst_faults_database::database_that_may_not_be_written()
{
    QFETCH(const QString, tab);
    const QString folder = finished_folder(*m_reference);
    QVERIFY(QFile::setPermissions(database_in(folder), QFileDevice::ReadOwner));

    const logged_run run =
        run_with_log(m_reference->process(folder).tabs({tab}).without_privileges(), folder);
    QVERIFY2(run.outcome.completed, run.outcome.errors.constData());
    const QString error = u"attempt to write a readonly database Unable to fetch row"_s;
    QCOMPARE(defect_of_log(run.lines, run.outcome.events, {tab}, *m_reference), QString());
    QCOMPARE(lines_of_run(run.lines, tab_named(tab)),
             insert_failures(tab_named(tab), error, sample_row_count));
    QCOMPARE(
        defect_of_tables(*m_reference, database_in(folder), static_cast<int>(all_tabs().size())),
        QString());
}

// The database may be written, but no journal can stand next to it.
void tst_faults_database::folder_that_may_not_be_written()
{
    const QString folder = finished_folder(*m_reference);
    const QString database = database_in(folder);
    const QString database_folder = QFileInfo(database).path();
    const QFileDevice::Permissions permissions = QFile::permissions(database_folder);
    QVERIFY(QFile::setPermissions(database_folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner));

    const auto [outcome, lines] =
        run_with_log(m_reference->process(folder).without_privileges(), folder);
    QVERIFY(QFile::setPermissions(database_folder, permissions));
    QVERIFY(outcome.completed);
    QCOMPARE(defect_of_log(lines, outcome.events, all_tabs(), *m_reference), QString());
    QCOMPARE(defect_of_tables(*m_reference, database, static_cast<int>(all_tabs().size())),
             QString());
}

/// Makes one table unusable by the statements: its rows are lost and logged, all others are there.
void tst_faults_database::lose_rows_of_table_after(const QString &table,
                                                   const QStringList &statements,
                                                   const QString &error)
{
    const log_capture log;
    host_double host(m_reference->volume());
    host.settings.general = log.general_info();
    host.set_up();
    for (const QString &statement : statements)
        execute(host.database_path(), statement);
    log.clear();
    host.extract();

    const QStringList lines = log.messages().replaceInStrings(host.database_path(), u"DATABASE"_s);
    QCOMPARE(defect_of_log(lines, host.events(), all_tabs(), *m_reference), QString());
    QCOMPARE(lines_of_run(lines, tab_named(table)),
             insert_failures(tab_named(table), error, sample_row_count));
    QCOMPARE(result_database(host.database_path()).integrity_check(), u"ok"_s);
    for (const QString &other : all_tabs()) {
        if (other != table)
            QCOMPARE(rows_in(host.database_path(), other), m_reference->rows_of(other));
    }
    QCOMPARE(defect_of_tables(*m_reference, host.database_path(), 0),
             QString()); // nor has the table other rows
}

void tst_faults_database::table_missing_data()
{
    add_tab_rows();
}

void tst_faults_database::table_missing()
{
    QFETCH(const QString, tab);
    lose_rows_of_table_after(tab, {u"drop table "_s + tab}, unprepared);
}

void tst_faults_database::table_of_another_shape_data()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<QStringList>("statements");
    QTest::addColumn<QString>("error");
    for (const QString &table : all_tabs()) {
        const QString drop = u"drop table "_s + table;
        QTest::addRow("%s with one column", qPrintable(table))
            << table << QStringList{drop, u"create table %1(bookmark integer)"_s.arg(table)}
            << unprepared;
        QTest::addRow("%s as a view", qPrintable(table))
            << table << QStringList{drop, u"create view %1 as select 1"_s.arg(table)} << unprepared;
        QTest::addRow("%s with a trigger that refuses rows", qPrintable(table))
            << table
            << QStringList{u"create trigger refusal before insert on %1 "
                           "begin select raise(abort, 'refused'); end"_s.arg(table)}
            << u"refused Unable to fetch row"_s;
    }
}

void tst_faults_database::table_of_another_shape()
{
    QFETCH(const QString, table);
    QFETCH(const QStringList, statements);
    QFETCH(const QString, error);
    lose_rows_of_table_after(table, statements, error);
}

void tst_faults_database::database_that_is_no_database()
{
    const QByteArray content(8192, 'x');
    const log_capture log;
    host_double host(m_reference->volume());
    host.settings.general = log.general_info();
    host.set_up();
    write_file(host.database_path(), content);
    log.clear();
    host.run();
    const QStringList lines = log.messages().replaceInStrings(host.database_path(), u"DATABASE"_s);
    QCOMPARE(defect_of_log(lines, host.events(), all_tabs(), *m_reference), QString());
    for (const QString &table : all_tabs()) {
        QCOMPARE(lines.count(u" table creation -----FAILED---- "_s + table), 1);
        QCOMPARE(lines_of_run(lines, tab_named(table)),
                 insert_failures(tab_named(table), unprepared, sample_row_count));
    }
    QCOMPARE(host.events().last(), u"records 0"_s);
    QCOMPARE(read_file(host.database_path()), content);
}

TEST_MAIN(tst_faults_database)
#include "tst_faults_database.moc"
