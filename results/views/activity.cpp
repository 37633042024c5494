#include "activity.h"

#include <map>
#include <tuple>

#include "plain_text.h"
#include "selected_rows.h"
#include "told_time.h"

using namespace Qt::StringLiterals;

namespace results {

namespace {

constexpr qint64 seconds_of_day = 86400;

class activity_count
{
public:
    activity_count(const opened_result &result, const row_filter &filter, const time_span &span)
        : m_result(result), m_filter(filter), m_span(span)
    {
    }

    void add_runs(const QString &table);
    void add_keys(const QString &table);
    activity counted() const;

private:
    template<typename Take>
    void for_each_row(const QString &table, const Take &take);
    bool is_drawn(qint64 time, qint64 &left_out) const;

    const opened_result &m_result;
    const row_filter &m_filter;
    time_span m_span;
    std::map<std::tuple<qint64, QString, QString>, qint64> m_runs; ///< by day, source and account
    std::map<QString, qint64> m_keys;                              ///< by month: "2023-11"
    activity m_activity;
};

template<typename Take>
void activity_count::for_each_row(const QString &table, const Take &take)
{
    const auto rows = selected_rows(m_result, m_result.layout_of(table), m_filter);
    const QList<column> &columns = rows->columns();
    while (const row *read = rows->next())
        take(*read, columns);
    if (!rows->failure().isEmpty())
        m_activity.failure = rows->failure();
}

bool activity_count::is_drawn(qint64 time, qint64 &left_out) const
{
    const bool is_within = time >= m_span.first && time <= m_span.last;
    left_out += is_within ? 0 : 1;
    return is_within;
}

void activity_count::add_runs(const QString &table)
{
    for_each_row(table, [this](const row &read, const QList<column> &columns) {
        const int place = place_of(columns, column_kind::unix_time);
        const auto time = told_time(cell_at(read, place), column_kind::unix_time);
        if (!time || !is_drawn(*time, m_activity.runs_left_out))
            return;
        const QString source = shown_text(cell_at(read, place_of(columns, u"source_count_name"_s)));
        const QString account = shown_text(cell_at(read, place_of(columns, column_kind::account)));
        ++m_runs[{*time / seconds_of_day * seconds_of_day, source, account}];
    });
}

void activity_count::add_keys(const QString &table)
{
    for_each_row(table, [this](const row &read, const QList<column> &columns) {
        std::optional<qint64> time;
        for (const column_kind kind : {column_kind::install_date, column_kind::unix_time}) {
            if (!time)
                time = told_time(cell_at(read, place_of(columns, kind)), kind);
        }
        if (time && is_drawn(*time, m_activity.keys_left_out))
            ++m_keys[QString::fromStdString(utc_text(*time)).left(7)];
    });
}

activity activity_count::counted() const
{
    activity made = m_activity;
    for (const auto &[key, runs] : m_runs) {
        const auto &[day, source, account] = key;
        made.days.append({day, source, account, runs});
    }
    for (const auto &[month, keys] : m_keys)
        made.months.append({month.left(4).toInt(), month.mid(5).toInt(), keys});
    return made;
}

} // namespace

activity read_activity(const opened_result &result, const QStringList &tables,
                       const row_filter &filter, const time_span &span)
{
    activity_count count(result, filter, span);
    // The entries of uninstall_apps stand in previously_executed_apps too.
    if (tables.contains("previously_executed_apps"_L1))
        count.add_runs(u"previously_executed_apps"_s);
    for (const QString &table : {u"install_apps_64"_s, u"install_apps_32"_s}) {
        if (tables.contains(table))
            count.add_keys(table);
    }
    return count.counted();
}

} // namespace results
