#include "run_log.h"

#include "host_double.h"
#include "result_database.h"

#include <QFileInfo>
#include <algorithm>
#include <stdexcept>

namespace test_support {

using namespace Qt::StringLiterals;

const QString unprepared = u"Parameter count mismatch"_s;

namespace {

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

/// What a log may hold besides the lines of an undisturbed run.
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

bool begins_with_one_of(const QStringList &beginnings, const QString &message)
{
    return std::any_of(beginnings.cbegin(), beginnings.cend(),
                       [&message](const QString &text) { return message.startsWith(text); });
}

} // namespace

logged_run run_with_log(extraction_process process, const QString &result_folder)
{
    const QTemporaryDir logs;
    const QString log = make_log_file(logs.path());
    const extraction_outcome outcome = process.log(log).run();
    return {outcome, messages_in(log, database_in(result_folder))};
}

QString opening_failure(const result_tab &tab)
{
    return tab.log_line("Destination Db opening failed "_L1);
}

namespace {

/// The statement as Qt says that it was executed, with its placeholders numbered.
QString executed_statement(const result_tab &tab)
{
    QStringList parts = QString(tab.insert_statement).split(u'?');
    for (qsizetype i = 0; i + 1 < parts.size(); ++i)
        parts[i] += u":%1"_s.arg(i);
    return parts.join(QString());
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

} // namespace

QStringList insert_failures(const result_tab &tab, const QString &error, qint64 rows)
{
    const QString failure =
        tab.log_line(tab.insert_failure) + (tab.failure_names_database ? u"DATABASE"_s : QString());
    QStringList lines;
    for (qint64 row = 0; row < rows; ++row)
        lines << failure << error << executed_statement(tab);
    return lines;
}

QStringList lines_of_run(const QStringList &lines, const result_tab &tab)
{
    const qsizetype begin = lines.indexOf(tab.log_line(tab.opening)) + 1;
    const qsizetype end = lines.indexOf(tab.log_line("---ENDS---"_L1), begin);
    return lines.mid(begin, end - begin);
}

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

namespace {

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

} // namespace

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

QString finished_folder(reference_run &reference)
{
    QString folder = reference.fresh_folder();
    if (!reference.process(folder).run().completed)
        throw std::runtime_error("the run was disturbed");
    return folder;
}

QString defect_of_tables(const reference_run &reference, const QString &database_path,
                         int whole_tabs)
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
        const QList<QStringList> whole = reference.rows_of(table);
        if (tab < whole_tabs ? rows != whole : !is_part_of(rows, whole))
            return table;
    }
    return {};
}

} // namespace test_support
