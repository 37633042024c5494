#include "host_double.h"
#include "reference_run.h"
#include "result_database.h"
#include "sample_evidence.h"
#include "test_main.h"

#include <QFileInfo>
#include <QRandomGenerator>
#include <csignal>
#include <optional>

using namespace Qt::StringLiterals;
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
    void at_random_moments();
    void while_rows_of_an_earlier_run_stand_in_the_tables();

private:
    QString defect_left_by(const QString &result_folder, const extraction_outcome &outcome) const;
    QString defect_of_tables(const QString &database_path, int finished_tabs) const;

    std::optional<reference_run> m_reference;
};

void tst_faults_kill::initTestCase()
{
    m_reference.emplace();
}

/// What is wrong with what a killed process left; empty when nothing is.
QString tst_faults_kill::defect_left_by(const QString &result_folder,
                                        const extraction_outcome &outcome) const
{
    const QString path = database_in(result_folder);
    if (!QFileInfo::exists(path))
        return outcome.finished_tabs == 0 ? QString() : u"no database"_s;
    QString verdict = integrity_after_recovery(path);
    if (verdict != u"ok"_s)
        return verdict;
    const QStringList tables = result_database(path).tables();
    if (tables.isEmpty())
        return outcome.events.isEmpty() ? QString() : u"no tables"_s;
    return tables == all_tabs() ? defect_of_tables(path, outcome.finished_tabs)
                                : u"tables are missing"_s;
}

QString tst_faults_kill::defect_of_tables(const QString &database_path, int finished_tabs) const
{
    const QStringList tables = all_tabs();
    for (int tab = 0; tab < tables.size(); ++tab) {
        const QList<QStringList> rows = rows_in(database_path, tables.at(tab));
        const bool is_whole = rows == m_reference->rows_of(tables.at(tab));
        const bool may_be_empty = tab >= finished_tabs;
        const bool may_be_whole = tab <= finished_tabs;
        if (!(rows.isEmpty() && may_be_empty) && !(is_whole && may_be_whole))
            return tables.at(tab) + u" after %1 tabs"_s.arg(finished_tabs);
    }
    return {};
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
        const extraction_outcome outcome =
            m_reference->process(folder).fault(static_cast<disk_fault>(fault), step).run();
        QCOMPARE(outcome.signal_number, SIGKILL);
        QVERIFY(outcome.had_fault);
        const QString defect = defect_left_by(folder, outcome);
        QVERIFY2(defect.isEmpty(), qPrintable(u"step %1: "_s.arg(step) + defect));
    }
    qInfo("killed at each of %lld steps", steps);
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
        const QString defect = defect_left_by(folder, outcome);
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
    const QString folder = m_reference->fresh_folder();
    QVERIFY(m_reference->process(folder).run().completed);
    const qint64 steps = m_reference->process(folder).fault(disk_fault::none, 0).run().steps;
    for (qint64 step = 1; step <= steps; step += 7) {
        m_reference->process(folder).fault(disk_fault::kill_before, step).run();
        const QString path = database_in(folder);
        QCOMPARE(integrity_after_recovery(path), u"ok"_s);
        const QStringList tables = all_tabs();
        for (const QString &table : tables) {
            const QList<QStringList> rows = rows_in(path, table);
            QCOMPARE(rows.mid(0, sample_row_count), m_reference->rows_of(table));
            QCOMPARE(rows.size() % sample_row_count, 0);
        }
    }
}

TEST_MAIN(tst_faults_kill)
#include "tst_faults_kill.moc"
