#include "host_double.h"
#include "reference_run.h"
#include "result_file.h"
#include "sample_evidence.h"
#include "test_main.h"

#include <QTemporaryDir>
#include <optional>
#include <stdexcept>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// Another process holds a lock on the result database for as long as the run lasts. SQLite's
// sleeping is replaced and counted: each operation waits for the lock once, whatever it then fails
// to do, and its log reports each failure.
class tst_faults_lock : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void each_operation_waits_once_data();
    void each_operation_waits_once();
    void later_failures_are_logged_as_the_first_one_data();
    void later_failures_are_logged_as_the_first_one();

private:
    QString finished_folder();

    std::optional<reference_run> m_reference;
};

namespace {

constexpr qint64 one_wait_us = 5000000; // what Qt lets SQLite wait for a lock

/// The lines between the first that begins so and the next that ends so.
QStringList lines_between(const QStringList &lines, const QString &begin, const QString &end)
{
    QStringList between;
    bool is_within = false;
    for (const QString &line : lines) {
        if (is_within && line.endsWith(end))
            break;
        if (is_within)
            between.append(line);
        is_within = is_within || line.startsWith(begin);
    }
    return between;
}

} // namespace

void tst_faults_lock::initTestCase()
{
#ifndef Q_OS_LINUX
    QSKIP("Waiting for a lock is counted on Linux only");
#endif
    m_reference.emplace();
}

/// A result folder in which an undisturbed run has filled all tables.
QString tst_faults_lock::finished_folder()
{
    QString folder = m_reference->fresh_folder();
    if (!m_reference->process(folder).run().completed)
        throw std::runtime_error("the run was disturbed");
    return folder;
}

void tst_faults_lock::each_operation_waits_once_data()
{
    QTest::addColumn<QString>("lock");
    QTest::addColumn<bool>("clears");
    QTest::addColumn<QStringList>("tabs");
    QTest::addColumn<int>("waits");
    const QString reading_and_writing = u"begin exclusive"_s;
    const QString writing = u"begin immediate"_s;
    const QStringList one = {all_tabs().first()};
    const int tabs = static_cast<int>(all_tabs().size());
    QTest::newRow("creating tables and filling one") << reading_and_writing << false << one << 2;
    QTest::newRow("creating tables, clearing and filling one")
        << reading_and_writing << true << one << 3;
    QTest::newRow("creating tables, clearing and filling all")
        << reading_and_writing << true << all_tabs() << tabs + 2;
    // Tables that are there are read alone.
    QTest::newRow("clearing and filling all, while all may be read")
        << writing << true << all_tabs() << tabs + 1;
}

void tst_faults_lock::each_operation_waits_once()
{
    QFETCH(const QString, lock);
    QFETCH(const bool, clears);
    QFETCH(const QStringList, tabs);
    QFETCH(const int, waits);
    const QString folder = finished_folder();
    const sqlite_connection other(database_in(folder));
    execute(other.database, lock);
    extraction_process process = m_reference->process(folder).tabs(tabs);
    if (clears)
        process.clear_tables();
    const extraction_outcome outcome = process.run();
    QVERIFY2(outcome.completed, outcome.errors.constData());
    QCOMPARE(outcome.finished_tabs, static_cast<int>(tabs.size()));
    QCOMPARE(outcome.waited_us, waits * one_wait_us);
}

void tst_faults_lock::later_failures_are_logged_as_the_first_one_data()
{
    QTest::addColumn<QString>("begin");
    QTest::addColumn<QString>("end");
    QTest::addColumn<qsizetype>("failures");
    QTest::addColumn<qsizetype>("lines_each");
    const qsizetype tables = all_tabs().size();
    QTest::newRow("tables that are not created")
        << u"[create_db_tables] -starts"_s << u"[create_db_tables] -ends"_s << tables
        << qsizetype(5);
    QTest::newRow("tables that are not cleared")
        << u"[create_destination_database] ends"_s << u"[find_source_file]---STARTS---"_s << tables
        << qsizetype(4);
    QTest::newRow("rows that are not inserted")
        << u"[extract_registered_apps]---STARTS---"_s << u"[extract_registered_apps]---ENDS---"_s
        << qsizetype(sample_row_count) << qsizetype(3);
}

void tst_faults_lock::later_failures_are_logged_as_the_first_one()
{
    QFETCH(const QString, begin);
    QFETCH(const QString, end);
    QFETCH(const qsizetype, failures);
    QFETCH(const qsizetype, lines_each);
    const QString folder = finished_folder();
    const QTemporaryDir logs;
    const QString log = make_log_file(logs.path());
    const sqlite_connection other(database_in(folder));
    execute(other.database, u"begin exclusive"_s);
    QVERIFY(m_reference->process(folder).clear_tables().log(log).run().completed);

    QStringList lines = lines_between(messages_in(log, database_in(folder)), begin, end);
    for (const QString &table : all_tabs())
        lines.replaceInStrings(table, u"TABLE"_s);
    QCOMPARE(lines.size(), failures * lines_each);
    const QStringList first = lines.mid(0, lines_each);
    for (qsizetype at = 0; at < lines.size(); ++at) {
        if (!lines.at(at).startsWith(u" command -  "_s)) // each statement has its own columns
            QCOMPARE(lines.at(at), first.at(at % lines_each));
    }
}

TEST_MAIN(tst_faults_lock)
#include "tst_faults_lock.moc"
