#include "application_keys.h"
#include "files.h"
#include "host_double.h"
#include "log_capture.h"
#include "reference_run.h"
#include "result_database.h"
#include "result_file.h"
#include "sample_evidence.h"
#include "tab_rows.h"
#include "test_main.h"
#include "windows_installed_applications_winos.h"

#include <QDir>
#include <QFileInfo>
#include <QSqlQuery>
#include <optional>
#include <stdexcept>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// The result disk fills up, the database is locked, cannot be written or is not as it was made. The
// run comes to its end, says so in the fixed words, and loses nothing that was committed.
class tst_faults_disk : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void full_at_each_write_data();
    void full_at_each_write();
    void full_in_the_middle_of_many_rows();
    void files_limited_to_each_length();
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
    void result_folder_removed_after_each_tab_data();
    void result_folder_removed_after_each_tab();
    void result_folder_removed_between_rows_data();
    void result_folder_removed_between_rows();
    void result_folder_that_cannot_be_made();
    void database_that_is_no_database();

private:
    QString finished_folder();
    QString defect_of_tables(const QString &database_path, int whole_tabs) const;
    void lose_rows_of_table_after(const QString &table, const QStringList &statements,
                                  const QString &error);
    QStringList log_when_the_result_folder_goes(host_double &host, const QString &moment) const;

    std::optional<reference_run> m_reference;
};

namespace {

/// What Qt says of a statement that could not be prepared, whatever the reason.
const QString unprepared = u"Parameter count mismatch"_s;

/// What SQLite and Qt say of a database that fails.
const QStringList &error_beginnings()
{
    static const QStringList beginnings{
        u"database or disk is full"_s,
        u"disk I/O error"_s,
        u"unable to open database file"_s,
        u"database is locked"_s,
        u"attempt to write a readonly database"_s,
        u"file is not a database"_s,
        u"refused"_s,
        unprepared,
    };
    return beginnings;
}

/// What else a log may hold beside the lines of an undisturbed run.
const QStringList &failure_beginnings()
{
    static const QStringList beginnings{
        u"[create_db_tables]Destination Db opening failed for table creation"_s,
        u"DATABASE"_s,
        u" table creation -----FAILED---- "_s,
        u" query  --------FAILED------ db file - DATABASE"_s,
        u" CALLER FUNCTION -  -  void windows_installed_applications::create_db_tables()"_s,
        u" command -  CREATE TABLE IF NOT EXISTS "_s,
        u" command -  create table IF NOT EXISTS "_s,
        u" error -  "_s,
        u"INSERT INTO "_s,
        u"insert into "_s,
    };
    return beginnings;
}

/// A run in a process of its own, and the messages of its log.
struct logged_run
{
    extraction_outcome outcome;
    QStringList lines;
};

logged_run run_with_log(extraction_process process, const QString &result_folder)
{
    const QTemporaryDir logs;
    const QString log = make_log_file(logs.path());
    const extraction_outcome outcome = process.log(log).run();
    return {outcome, messages_in(log, database_in(result_folder))};
}

/// The log of a process that wrote it to its standard error, without what Qt wrote there.
QByteArray log_among(const QByteArray &errors)
{
    QByteArray log;
    for (const QByteArray &line : errors.split('\n'))
        log += line.startsWith('[') ? line + '\n' : QByteArray();
    return log;
}

bool begins_with_one_of(const QStringList &beginnings, const QString &message)
{
    return std::any_of(beginnings.cbegin(), beginnings.cend(),
                       [&message](const QString &text) { return message.startsWith(text); });
}

QString opening_failure(const result_tab &tab)
{
    return tab.log_line("Destination Db opening failed "_L1);
}

bool begins_like_a_failure(const QString &message)
{
    static const QStringList beginnings = [] {
        QStringList all = failure_beginnings() + error_beginnings();
        for (const result_tab *tab : result_tabs())
            all << tab->log_line(tab->insert_failure) << opening_failure(*tab);
        return all;
    }();
    return begins_with_one_of(beginnings, message);
}

/// The messages that neither an undisturbed run nor a failure of the database explains.
QString unexplained(const QStringList &messages, const QStringList &undisturbed)
{
    QStringList strange;
    for (const QString &message : messages) {
        if (!undisturbed.contains(message) && !begins_like_a_failure(message))
            strange.append(message);
    }
    return strange.join(u'\n');
}

/// The statement as Qt tells that it was executed, with its placeholders numbered.
QString executed_statement(const result_tab &tab)
{
    QStringList parts = QString(tab.insert_statement).split(u'?');
    for (qsizetype i = 0; i + 1 < parts.size(); ++i)
        parts[i] += u":%1"_s.arg(i);
    return parts.join(QString());
}

/// The three lines for each row that could not be inserted.
QStringList insert_failures(const result_tab &tab, const QString &error, qint64 rows)
{
    const QString failure =
        tab.log_line(tab.insert_failure) + (tab.failure_names_database ? u"DATABASE"_s : QString());
    QStringList lines;
    for (qint64 row = 0; row < rows; ++row)
        lines << failure << error << executed_statement(tab);
    return lines;
}

/// The lines between the one that opens a tab's extraction and the one that ends it.
QStringList lines_of_run(const QStringList &lines, const result_tab &tab)
{
    const qsizetype begin = lines.indexOf(tab.log_line(tab.opening)) + 1;
    const qsizetype end = lines.indexOf(tab.log_line("---ENDS---"_L1), begin);
    return lines.mid(begin, end - begin);
}

/// How many rows each tab of a run counted, as its events tell.
QList<qint64> rows_counted(const QStringList &events)
{
    QList<qint64> rows;
    qint64 total = 0;
    qint64 total_before = 0;
    for (const QString &event : events) {
        if (event.startsWith(u"records "_s)) {
            total = event.section(u' ', 1).toLongLong();
            continue;
        }
        rows.append(total - total_before);
        total_before = total;
    }
    return rows;
}

/// Stands for whatever SQLite and Qt say of a failure.
const QString any_error = u"ERROR"_s;

/// The lines of the extraction that an undisturbed run does not have.
QStringList lines_of_losses(const QStringList &lines, const QStringList &undisturbed)
{
    QStringList losses;
    const qsizetype begin = lines.indexOf(u"[extract_plugins_artifacts]---STARTS---"_s);
    for (const QString &line : lines.mid(begin)) {
        if (!undisturbed.contains(line))
            losses << (begins_with_one_of(error_beginnings(), line) ? any_error : line);
    }
    return losses;
}

/// The lines that a run must have for the rows that it did not count: three for each of them, or
/// two for the whole table where the database could not be opened.
QStringList lines_for_rows_not_counted(const QStringList &lines, const QStringList &events,
                                       const QStringList &tabs, const reference_run &reference)
{
    QStringList expected;
    const QList<qint64> counted = rows_counted(events);
    for (qsizetype i = 0; i < tabs.size(); ++i) {
        const result_tab &tab = tab_named(tabs.at(i));
        if (counted.value(i) == 0 && lines.contains(opening_failure(tab)))
            expected << opening_failure(tab) << any_error;
        else
            expected += insert_failures(tab, any_error,
                                        reference.rows_of(tabs.at(i)).size() - counted.value(i));
    }
    return expected;
}

/// What is wrong with the log of a run over the given tabs, held against what the run counted;
/// empty when nothing is.
QString defect_of_log(const QStringList &lines, const QStringList &events, const QStringList &tabs,
                      const reference_run &reference)
{
    QString strange = unexplained(lines, reference.log());
    if (!strange.isEmpty())
        return strange;
    const QStringList losses = lines_of_losses(lines, reference.log());
    const QStringList expected = lines_for_rows_not_counted(lines, events, tabs, reference);
    return losses == expected ? QString()
                              : losses.join(u'\n') + u"\ninstead of\n"_s + expected.join(u'\n');
}

} // namespace

void tst_faults_disk::initTestCase()
{
    m_reference.emplace();
}

/// A result folder in which an undisturbed run has filled all tables.
QString tst_faults_disk::finished_folder()
{
    QString folder = m_reference->fresh_folder();
    if (!m_reference->process(folder).run().completed)
        throw std::runtime_error("the run was disturbed");
    return folder;
}

/// What is wrong with the tables after a disk was full; empty when nothing is.
QString tst_faults_disk::defect_of_tables(const QString &database_path, int whole_tabs) const
{
    if (!QFileInfo::exists(database_path))
        return whole_tabs == 0 ? QString() : u"no database"_s;
    QString verdict = integrity_after_recovery(database_path);
    if (verdict != u"ok"_s)
        return verdict;
    const QStringList tables = all_tabs();
    const QStringList existing = result_database(database_path).tables();
    for (int tab = 0; tab < tables.size(); ++tab) {
        const QString &table = tables.at(tab);
        const QList<QStringList> rows =
            existing.contains(table) ? rows_in(database_path, table) : QList<QStringList>();
        const QList<QStringList> whole = m_reference->rows_of(table);
        if (tab < whole_tabs ? rows != whole : !is_part_of(rows, whole))
            return table;
    }
    return {};
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
        QCOMPARE(defect_of_tables(database_in(folder), whole_tabs), QString());
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
        QCOMPARE(defect_of_tables(database_in(folder), 0), QString());
#ifdef Q_OS_LINUX // elsewhere no file can be opened for what is a pipe
        QCOMPARE(defect_of_log(messages_of(log_among(outcome.errors), database_in(folder)),
                               outcome.events, all_tabs(), *m_reference),
                 QString());
#endif
        QVERIFY(limit < size || !rows_in(database_in(folder), all_tabs().last()).isEmpty());
    }
}

void tst_faults_disk::database_locked_by_another_process_data()
{
    add_tab_rows();
}

void tst_faults_disk::database_locked_by_another_process()
{
#ifndef Q_OS_LINUX
    QSKIP("Waiting for a lock is made short on Linux only");
#endif
    QFETCH(const QString, tab);
    const QString folder = finished_folder();
    {
        const sqlite_connection other(database_in(folder));
        execute(other.database, u"begin exclusive"_s);
        const logged_run run = run_with_log(m_reference->process(folder).tabs({tab}), folder);
        QVERIFY2(run.outcome.completed, run.outcome.errors.constData());
        QCOMPARE(defect_of_log(run.lines, run.outcome.events, {tab}, *m_reference), QString());
        QCOMPARE(lines_of_run(run.lines, tab_named(tab)),
                 insert_failures(tab_named(tab), unprepared, sample_row_count));
    }
    QCOMPARE(defect_of_tables(database_in(folder), static_cast<int>(all_tabs().size())), QString());
}

// Another process reads while rows are written: each row goes in, and the commit is what fails.
void tst_faults_disk::database_read_by_another_process()
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
        // Nothing tells of a commit that failed: neither the log nor the rows counted.
        QCOMPARE(lines, m_reference->log());
        QCOMPARE(outcome.events, m_reference->outcome().events);
    }
    QCOMPARE(integrity_after_recovery(database), u"ok"_s);
    for (const QString &table : all_tabs())
        QCOMPARE(rows_in(database, table), QList<QStringList>());
    QVERIFY(m_reference->process(folder).run().completed); // the reader has gone
    QCOMPARE(defect_of_tables(database, static_cast<int>(all_tabs().size())), QString());
}

void tst_faults_disk::database_that_may_not_be_written_data()
{
    add_tab_rows();
}

void tst_faults_disk::database_that_may_not_be_written()
{
    QFETCH(const QString, tab);
    const QString folder = finished_folder();
    QVERIFY(QFile::setPermissions(database_in(folder), QFileDevice::ReadOwner));

    const logged_run run =
        run_with_log(m_reference->process(folder).tabs({tab}).without_privileges(), folder);
    QVERIFY2(run.outcome.completed, run.outcome.errors.constData());
    const QString error = u"attempt to write a readonly database Unable to fetch row"_s;
    QCOMPARE(defect_of_log(run.lines, run.outcome.events, {tab}, *m_reference), QString());
    QCOMPARE(lines_of_run(run.lines, tab_named(tab)),
             insert_failures(tab_named(tab), error, sample_row_count));
    QCOMPARE(defect_of_tables(database_in(folder), static_cast<int>(all_tabs().size())), QString());
}

// The database may be written, but no journal can stand beside it.
void tst_faults_disk::folder_that_may_not_be_written()
{
    const QString folder = finished_folder();
    const QString database = database_in(folder);
    const QString database_folder = QFileInfo(database).path();
    const QFileDevice::Permissions permissions = QFile::permissions(database_folder);
    QVERIFY(QFile::setPermissions(database_folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner));

    const auto [outcome, lines] =
        run_with_log(m_reference->process(folder).without_privileges(), folder);
    QVERIFY(QFile::setPermissions(database_folder, permissions));
    QVERIFY(outcome.completed);
    QCOMPARE(defect_of_log(lines, outcome.events, all_tabs(), *m_reference), QString());
    QCOMPARE(defect_of_tables(database, static_cast<int>(all_tabs().size())), QString());
}

/// Makes one table unusable by the statements: its rows are lost and logged, all others are there.
void tst_faults_disk::lose_rows_of_table_after(const QString &table, const QStringList &statements,
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
    QCOMPARE(defect_of_tables(host.database_path(), 0), QString()); // nor has the table other rows
}

void tst_faults_disk::table_missing_data()
{
    add_tab_rows();
}

void tst_faults_disk::table_missing()
{
    QFETCH(const QString, tab);
    lose_rows_of_table_after(tab, {u"drop table "_s + tab}, unprepared);
}

void tst_faults_disk::table_of_another_shape_data()
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

void tst_faults_disk::table_of_another_shape()
{
    QFETCH(const QString, table);
    QFETCH(const QStringList, statements);
    QFETCH(const QString, error);
    lose_rows_of_table_after(table, statements, error);
}

/// The log of a run whose result folder is removed within the given signal.
QStringList tst_faults_disk::log_when_the_result_folder_goes(host_double &host,
                                                             const QString &moment) const
{
    const log_capture log;
    host.settings.general = log.general_info();
    host.on_event([&](const QString &event) {
        if (event == moment)
            QVERIFY(QDir(host.settings.result_folder).removeRecursively());
    });
    host.set_up();
    log.clear();
    host.extract();
    return log.messages();
}

void tst_faults_disk::result_folder_removed_after_each_tab_data()
{
    QTest::addColumn<int>("tab");
    for (int tab = 0; tab <= all_tabs().size(); ++tab)
        QTest::addRow("after %d tabs", tab) << tab;
}

void tst_faults_disk::result_folder_removed_after_each_tab()
{
    QFETCH(const int, tab);
    host_double host(m_reference->volume());
    const QString moment = tab == 0 ? u"records 0"_s : u"tabs %1"_s.arg(tab);
    const QStringList lines = log_when_the_result_folder_goes(host, moment);
    const QList<const result_tab *> tabs = result_tabs();
    for (qsizetype i = tab; i < tabs.size(); ++i) {
        const QString failure = tabs[i]->log_line("Destination Db opening failed "_L1);
        QCOMPARE(lines.value(lines.indexOf(failure) + 1),
                 u"unable to open database file Error opening database"_s);
        QCOMPARE(lines.count(failure), 1);
    }
    QCOMPARE(lines.last(), u"[pub_extract_artifacts] - END"_s);
    QVERIFY(!QFileInfo::exists(host.settings.result_folder));
}

void tst_faults_disk::result_folder_removed_between_rows_data()
{
    QTest::addColumn<bool>("has_many_rows");
    QTest::addColumn<QString>("moment");
    QTest::addRow("after the first of 3") << false << u"records 1"_s;
    QTest::addRow("after 3,000 of 4,000") << true << u"records 3000"_s;
}

// SQLite goes on in the file that has no name any more: the table ends without a failure.
void tst_faults_disk::result_folder_removed_between_rows()
{
    QFETCH(const bool, has_many_rows);
    QFETCH(const QString, moment);
    std::optional<reference_run> many;
    if (has_many_rows)
        many.emplace(add_many_applications);
    host_double host(many ? many->volume() : m_reference->volume(), row_progress::every_row);
    const QStringList lines = log_when_the_result_folder_goes(host, moment);
    const QList<const result_tab *> tabs = result_tabs();
    QCOMPARE(lines_of_run(lines, *tabs.first()), QStringList());
    for (const result_tab *tab : tabs)
        QCOMPARE(lines.count(tab->log_line("Destination Db opening failed "_L1)),
                 tab == tabs.first() ? 0 : 1);
    const qint64 rows = has_many_rows ? many_row_count : sample_row_count;
    QVERIFY(host.events().contains(u"tabs %1"_s.arg(tabs.size())));
    QCOMPARE(rows_counted(host.events()).first(), rows);
    QVERIFY(!QFileInfo::exists(host.settings.result_folder));
}

void tst_faults_disk::result_folder_that_cannot_be_made()
{
    const QTemporaryDir folder;
    write_file(folder.filePath(u"file"_s), "content");
    const log_capture log;
    host_double host(m_reference->volume());
    host.settings.general = log.general_info();
    host.settings.result_folder = folder.filePath(u"file/results"_s);
    host.run();

    QCOMPARE(log.messages().filter(u"opening failed"_s).size(), all_tabs().size() + 1);
    QCOMPARE(host.events().last(), u"records 0"_s);
    QCOMPARE(read_file(folder.filePath(u"file"_s)), QByteArray("content"));
}

void tst_faults_disk::database_that_is_no_database()
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

TEST_MAIN(tst_faults_disk)
#include "tst_faults_disk.moc"
