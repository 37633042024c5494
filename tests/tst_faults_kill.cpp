#include "files.h"
#include "host_double.h"
#include "machine.h"
#include "reference_run.h"
#include "result_database.h"
#include "sample_evidence.h"
#include "test_main.h"

#include <QFileInfo>
#include <QRandomGenerator>
#include <csignal>
#include <optional>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// The process is killed while it writes. Whatever the moment, the database opens, is sound, and
// holds each table whole or not at all.
class tst_faults_kill : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void at_every_step_on_the_disk_data();
    void at_every_step_on_the_disk();
    void in_the_middle_of_many_rows();
    void at_random_moments();
    void while_rows_of_an_earlier_run_stand_in_the_tables();

private:
    std::optional<reference_run> m_reference;
};

namespace {

/// What a database is held against: an undisturbed run, and how many such runs had filled it before
/// the process that was killed.
struct expectation
{
    const reference_run &reference;
    int earlier_runs = 0;

    QList<QStringList> rows(const QString &table, int runs) const
    {
        QList<QStringList> all;
        for (int run = 0; run < runs; ++run)
            all += reference.rows_of(table);
        return all;
    }
    QList<QStringList> before(const QString &table) const { return rows(table, earlier_runs); }
    QList<QStringList> after(const QString &table) const { return rows(table, earlier_runs + 1); }
};

QString defect_of_tables(const QString &database_path, int finished_tabs,
                         const expectation &expected)
{
    const QStringList tables = all_tabs();
    for (int tab = 0; tab < tables.size(); ++tab) {
        const QString &table = tables.at(tab);
        const QList<QStringList> rows = rows_in(database_path, table);
        const bool is_untouched = rows == expected.before(table) && tab >= finished_tabs;
        const bool is_whole = rows == expected.after(table) && tab <= finished_tabs;
        if (!is_untouched && !is_whole)
            return u"%1 has %2 rows after %3 tabs"_s.arg(table).arg(rows.size()).arg(finished_tabs);
    }
    return {};
}

/// What is wrong with what a killed process left; empty when nothing is.
QString defect_left_by(const extraction_outcome &outcome, const QString &result_folder,
                       const expectation &expected)
{
    const QString path = database_in(result_folder);
    if (!QFileInfo::exists(path))
        return outcome.finished_tabs == 0 && expected.earlier_runs == 0 ? QString()
                                                                        : u"no database"_s;
    QString verdict = integrity_after_recovery(path);
    if (verdict != u"ok"_s)
        return verdict;
    const QStringList tables = result_database(path).tables();
    if (tables.isEmpty() && expected.earlier_runs == 0)
        return outcome.events.isEmpty() ? QString() : u"no tables"_s;
    return tables == all_tabs() ? defect_of_tables(path, outcome.finished_tabs, expected)
                                : u"tables are missing"_s;
}

/// Kills a process at the given step; returns what is wrong then, which is nothing if all is well.
QString defect_of_kill(extraction_process process, disk_fault fault, qint64 step,
                       const QString &result_folder, const expectation &expected)
{
    const extraction_outcome outcome = process.fault(fault, step).run();
    const bool is_killed = outcome.signal_number == SIGKILL && outcome.had_fault;
    const QString defect =
        is_killed ? defect_left_by(outcome, result_folder, expected) : u"not killed"_s;
    return defect.isEmpty() ? defect : u"step %1: "_s.arg(step) + defect;
}

/// Puts the database of one result folder where another one, which does not exist yet, has its own.
void copy_database(const QString &from_folder, const QString &to_folder)
{
    const QString copy = database_in(to_folder);
    make_folder(QFileInfo(copy).path());
    write_file(copy, read_file(database_in(from_folder)));
}

} // namespace

void tst_faults_kill::initTestCase()
{
    m_reference.emplace();
}

void tst_faults_kill::at_every_step_on_the_disk_data()
{
    QTest::addColumn<int>("fault");
    QTest::newRow("before the step") << static_cast<int>(disk_fault::kill_before);
    QTest::newRow("when half of a write is done") << static_cast<int>(disk_fault::kill_within);
}

void tst_faults_kill::at_every_step_on_the_disk()
{
#ifndef Q_OS_LINUX
    QSKIP("Calls of the C library are replaced on Linux only");
#endif
    QFETCH(const int, fault);
    const qint64 steps = m_reference->outcome().steps;
    QVERIFY(steps > 3 * all_tabs().size()); // each table's rows reach the disk by themselves
    for (qint64 step = 1; step <= steps; ++step) {
        const QString folder = m_reference->fresh_folder();
        QCOMPARE(defect_of_kill(m_reference->process(folder), static_cast<disk_fault>(fault), step,
                                folder, {*m_reference}),
                 QString());
    }
    qInfo("killed at each of %lld steps", steps);
}

// More rows than SQLite keeps in memory: the process dies while some of them are in the file.
void tst_faults_kill::in_the_middle_of_many_rows()
{
#ifndef Q_OS_LINUX
    QSKIP("Calls of the C library are replaced on Linux only");
#endif
    if (const QString missing = missing_process_files(); !missing.isEmpty())
        QSKIP(qPrintable(missing));
    constexpr qint64 kills = 30;
    reference_run many(add_many_applications);
    QCOMPARE(many.rows_of(u"install_apps_64"_s).size(), many_row_count);
    const qint64 steps = many.outcome().steps;
    QVERIFY(steps > many_row_count / 4); // a page holds a few rows
    for (qint64 kill = 1; kill <= kills; ++kill) {
        const QString folder = many.fresh_folder();
        QCOMPARE(defect_of_kill(many.process(folder), disk_fault::kill_before, steps * kill / kills,
                                folder, {many}),
                 QString());
    }
    qInfo("killed at %lld of %lld steps", kills, steps);
}

void tst_faults_kill::at_random_moments()
{
    constexpr int kills = 200;
    QRandomGenerator moments(1);
    const auto duration = static_cast<double>(m_reference->outcome().microseconds);
    int killed = 0;
    int runs = 0;
    for (; killed < kills && runs < 10 * kills; ++runs) {
        const QString folder = m_reference->fresh_folder();
        const auto moment = static_cast<qint64>(moments.generateDouble() * duration);
        const extraction_outcome outcome = m_reference->process(folder).kill_after(moment).run();
        killed += outcome.signal_number == SIGKILL ? 1 : 0;
        const QString defect = defect_left_by(outcome, folder, {*m_reference});
        QVERIFY2(defect.isEmpty(), qPrintable(u"after %1 us: "_s.arg(moment) + defect));
    }
    qInfo("%d of %d processes killed", killed, runs);
    QCOMPARE(killed, kills);
}

void tst_faults_kill::while_rows_of_an_earlier_run_stand_in_the_tables()
{
#ifndef Q_OS_LINUX
    QSKIP("Calls of the C library are replaced on Linux only");
#endif
    const QString finished = m_reference->fresh_folder();
    QVERIFY(m_reference->process(finished).run().completed);
    const QString whole = m_reference->fresh_folder();
    copy_database(finished, whole);
    const extraction_outcome second = m_reference->process(whole).fault(disk_fault::none, 0).run();
    const expectation expected{*m_reference, 1};
    QCOMPARE(defect_left_by(second, whole, expected), QString());

    qint64 kills = 0;
    for (qint64 step = 1; step <= second.steps; step += 7, ++kills) {
        const QString folder = m_reference->fresh_folder();
        copy_database(finished, folder);
        QCOMPARE(defect_of_kill(m_reference->process(folder), disk_fault::kill_before, step, folder,
                                expected),
                 QString());
    }
    qInfo("killed at %lld of %lld steps", kills, second.steps);
}

TEST_MAIN(tst_faults_kill)
#include "tst_faults_kill.moc"
