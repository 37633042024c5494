#include "looked_at_result.h"

#include "console.h"

using namespace Qt::StringLiterals;

namespace {

/// What the end of the last run says about the rows; empty after a complete run.
QString note_of_last_run(const results::recorded_runs &record)
{
    if (!record.damage.isEmpty())
        return u"the run record beside the database cannot be read: %1"_s.arg(record.damage);
    if (record.runs.isEmpty())
        return u"no run record tells how these rows came about"_s;
    const QJsonObject run = record.runs.last();
    const QString outcome = run.value("outcome"_L1).toString();
    const QString begin = run.value("begin"_L1).toString();
    if (outcome == "complete"_L1)
        return {};
    if (outcome == "running"_L1)
        return u"the run of %1 has not ended, or was killed: rows may be missing"_s.arg(begin);
    return u"the run of %1 ended as \"%2\": run.json tells what is missing"_s.arg(begin, outcome);
}

refusal unknown(const QString &what, const QString &name, const QStringList &known)
{
    return {exit_usage, u"unknown %1 \"%2\"; there are %3"_s.arg(
                            what, name, known.isEmpty() ? u"none"_s : known.join(", "_L1))};
}

} // namespace

looked_at_result look_at(const QString &path)
{
    looked_at_result looked;
    looked.place = results::find_result(path);
    if (!looked.place.failure.isEmpty()) {
        looked.refused = refusal{exit_source, looked.place.failure};
        return looked;
    }
    looked.result = std::make_unique<results::opened_result>(looked.place.database_file);
    if (!looked.result->failure().isEmpty()) {
        looked.refused = refusal{exit_source, looked.result->failure()};
        return looked;
    }
    looked.record = results::read_recorded_runs(looked.place.record_file);
    looked.remarks = looked.result->remarks();
    if (const QString note = note_of_last_run(looked.record); !note.isEmpty())
        looked.remarks.append(note);
    for (const QString &remark : std::as_const(looked.remarks))
        print_notice(remark);
    return looked;
}

selected_tables select_tables(const results::opened_result &result, const row_selection &selection)
{
    for (const QString &name : selection.tabs) {
        if (!result.tables().contains(name))
            return {{}, unknown(u"tab"_s, name, result.tables())};
    }
    QStringList tables;
    for (const QString &name : result.tables()) {
        if (selection.tabs.isEmpty() || selection.tabs.contains(name))
            tables.append(name);
    }
    return {tables, check_accounts(result, tables, selection.filter.accounts)};
}

std::optional<refusal> check_accounts(const results::opened_result &result,
                                      const QStringList &tables, const QStringList &accounts)
{
    if (accounts.isEmpty())
        return std::nullopt;
    const QStringList known = result.values_of(tables, u"system_account"_s);
    for (const QString &account : accounts) {
        if (!known.contains(account, Qt::CaseInsensitive))
            return unknown(u"account"_s, account, known);
    }
    return std::nullopt;
}

void tell_of_changes(const results::opened_result &result)
{
    if (result.has_changed())
        print_notice(results::opened_result::text_of_change());
}
