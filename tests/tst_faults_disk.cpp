#include "host_double.h"
#include "run_log.h"
#include "test_main.h"

#include <QFileInfo>
#include <QTest>
#include <optional>

using namespace Qt::StringLiterals;
using namespace test_support;

namespace {

/// The log of a process that wrote it to its standard error, without what Qt wrote there.
QByteArray log_among(const QByteArray &errors)
{
    QByteArray log;
    for (const QByteArray &line : errors.split('\n'))
        log += line.startsWith('[') ? line + '\n' : QByteArray();
    return log;
}

} // namespace

// The result disk fills up. The run comes to its end, says so in the fixed words, and loses nothing
// that was committed.
class tst_faults_disk : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void full_at_each_write_data();
    void full_at_each_write();
    void full_in_the_middle_of_many_rows();
    void files_limited_to_each_length();

private:
    std::optional<reference_run> m_reference;
};

void tst_faults_disk::initTestCase()
{
    m_reference.emplace();
}

void tst_faults_disk::full_at_each_write_data()
{
    QTest::addColumn<int>("fault");
    QTest::newRow("for this write alone") << static_cast<int>(disk_fault::full_once);
    QTest::newRow("from this write on") << static_cast<int>(disk_fault::full_for_good);
}

void tst_faults_disk::full_at_each_write()
{
#ifndef Q_OS_LINUX
    QSKIP("Calls of the C library are replaced on Linux only");
#endif
    QFETCH(const int, fault);
    const qint64 writes = m_reference->outcome().writes;
    QVERIFY(writes > 2 * all_tabs().size()); // each table's rows need a journal and a page
    for (qint64 write = 1; write <= writes; ++write) {
        const QString folder = m_reference->fresh_folder();
        const auto [outcome, lines] = run_with_log(
            m_reference->process(folder).fault(static_cast<disk_fault>(fault), write), folder);
        QVERIFY(outcome.had_fault);
        QVERIFY2(outcome.completed, outcome.errors.constData());
        const int whole_tabs = outcome.finished_tabs_before_fault;
        QCOMPARE(defect_of_tables(*m_reference, database_in(folder), whole_tabs), QString());
        QCOMPARE(defect_of_log(lines, outcome.events, all_tabs(), *m_reference), QString());
    }
    qInfo("full at each of %lld writes", writes);
}

// More rows than SQLite keeps in memory: the disk is full while rows are inserted.
void tst_faults_disk::full_in_the_middle_of_many_rows()
{
#ifndef Q_OS_LINUX
    QSKIP("Calls of the C library are replaced on Linux only");
#endif
    reference_run many(add_many_applications);
    const QString table = u"install_apps_64"_s;
    const QList<QStringList> whole = many.rows_of(table);
    QCOMPARE(whole.size(), many_row_count);
    for (const auto fault : {disk_fault::full_once, disk_fault::full_for_good}) {
        const QString folder = many.fresh_folder();
        const auto [outcome, lines] =
            run_with_log(many.process(folder).fault(fault, many.outcome().writes / 2), folder);
        QVERIFY(outcome.completed);
        const QString database = database_in(folder);
        QCOMPARE(integrity_after_recovery(database), u"ok"_s);
        QVERIFY(is_part_of(rows_in(database, table), whole));
        QCOMPARE(defect_of_log(lines, outcome.events, all_tabs(), many), QString());
        QVERIFY(lines.join(u'\n').contains(
            insert_failures(tab_named(table), u"database or disk is full Unable to fetch row"_s, 1)
                .join(u'\n')));
    }
}

void tst_faults_disk::files_limited_to_each_length()
{
    constexpr qint64 page = 4096;
    const QString whole = m_reference->fresh_folder();
    QVERIFY(m_reference->process(whole).run().completed);
    const qint64 size = QFileInfo(database_in(whole)).size();
    QVERIFY(size > 8 * page);
    for (qint64 limit = 0; limit <= size; limit += page) {
        const QString folder = m_reference->fresh_folder();
        // A log in a file would be limited too.
        const extraction_outcome outcome =
            m_reference->process(folder).log(u"/dev/stderr"_s).file_size_limit(limit).run();
        QVERIFY2(outcome.completed, outcome.errors.constData());
        QCOMPARE(defect_of_tables(*m_reference, database_in(folder), 0), QString());
#ifdef Q_OS_LINUX // elsewhere no file can be opened for what is a pipe
        QCOMPARE(defect_of_log(messages_of(log_among(outcome.errors), database_in(folder)),
                               outcome.events, all_tabs(), *m_reference),
                 QString());
#endif
        QVERIFY(limit < size || !rows_in(database_in(folder), all_tabs().last()).isEmpty());
    }
}

TEST_MAIN(tst_faults_disk)
#include "tst_faults_disk.moc"
