#include "run_report.h"

#include <QFileInfo>

#include "console.h"
#include "finding.h"

using namespace Qt::StringLiterals;

namespace {

QString count_line(const QString &name, qint64 rows)
{
    constexpr int name_width = 26;
    constexpr int count_width = 10;
    return name.leftJustified(name_width) + QString::number(rows).rightJustified(count_width);
}

/// If the database holds fewer rows than the plug-in counted, a transaction was lost. If it holds
/// more, rows of earlier runs were not cleared.
QString count_problem(const finished_run &run)
{
    const qint64 missing = run.outcome.rows_written - run.counts.total();
    if (run.outcome.cancelled || missing == 0)
        return {};
    const qint64 expected = run.rows_kept + run.outcome.rows_written;
    return u"the database holds %1 rows instead of %2"_s.arg(expected - missing).arg(expected);
}

QString database_problem(const finished_run &run)
{
    if (!QFileInfo::exists(run.database_file))
        return u"no result database was made at %1"_s.arg(run.database_file);
    if (!run.counts.failure.isEmpty())
        return u"the result database %1 cannot be read: %2"_s.arg(run.database_file,
                                                                  run.counts.failure);
    return count_problem(run);
}

QString logged_problem(const run_outcome &outcome)
{
    if (outcome.failures == 0)
        return {};
    return u"failures reported by the plug-in: %1, the first: %2"_s.arg(outcome.failures)
        .arg(outcome.first_failure);
}

} // namespace

QStringList problems_of(const finished_run &run)
{
    const bool was_ended = !run.outcome.trouble.isEmpty(); // all other failures follow from that
    QStringList problems{was_ended ? run.outcome.trouble : logged_problem(run.outcome)};
    problems += run.output_problems;
    if (!was_ended && run.output_problems.isEmpty())
        problems.append(database_problem(run));
    problems += run.log_problems;
    if (!run.deleted_problem.isEmpty())
        problems.append(u"the deleted records are not recovered: %1"_s.arg(run.deleted_problem));
    problems.removeAll(QString());
    return problems;
}

QStringList early_end_lines(const finished_run &run)
{
    QStringList lines;
    for (const QString &early_end : summed_up(run.outcome.early_ends))
        lines.append("ended early: "_L1 + early_end);
    if (!lines.isEmpty())
        lines.append(u"readings that ended early, so that rows are missing: %1"_s.arg(
            run.outcome.early_ends.size()));
    return lines;
}

QStringList report_lines(const finished_run &run)
{
    QStringList lines;
    for (const table_rows &table : run.counts.tables)
        lines.append(count_line(table.table, table.rows));
    lines.append(count_line(u"total"_s, run.counts.total()));
    lines.append(run.database_file);
    return lines;
}

exit_code report_run(const finished_run &run)
{
    const QStringList problems = problems_of(run);
    for (const QString &line : early_end_lines(run) + problems)
        print_notice(line);
    if (run.outcome.cancelled)
        print_notice(u"cancelled when %1 of %2 tabs were done; the rows written so far are kept"_s
                         .arg(run.outcome.tabs_done())
                         .arg(run.tab_count));
    if (run.output_problems.isEmpty() && QFileInfo::exists(run.database_file)) {
        for (const QString &line : report_lines(run))
            write_line(stdout, line);
    }
    if (run.outcome.cancelled)
        return exit_cancelled;
    if (!problems.isEmpty())
        return exit_run_failed;
    const bool is_whole = !run.is_any_left_out && run.outcome.early_ends.isEmpty();
    return is_whole ? exit_complete : exit_incomplete;
}
