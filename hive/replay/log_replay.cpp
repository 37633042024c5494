#include "log_replay.h"

#include "hive_base_block.h"
#include "hive_image.h"
#include "log_application.h"
#include "log_format.h"
#include "log_head.h"

#include <QtEndian>

#include <algorithm>
#include <utility>

using namespace regf;

namespace {

bool has_first_bin(const QByteArray &hive)
{
    return hive.size() >= first_bin + hbin::cells &&
           QByteArrayView(hive).sliced(first_bin).startsWith("hbin");
}

/// When Windows wrote the hive last. The first bin has the time as well.
quint64 last_written(const QByteArray &hive, const hive_base_block &block)
{
    if (block.is_checksum_right())
        return block.last_written();
    return has_first_bin(hive)
               ? qFromLittleEndian<quint64>(hive.constData() + first_bin + hbin::last_write)
               : 0;
}

/// A log whose head is sound, and the place of its report.
struct candidate
{
    qsizetype index;
    log_head head;
};

/// How far `number` lies behind `other`; numbers wrap.
qint32 distance(quint32 number, quint32 other)
{
    return static_cast<qint32>(number - other);
}

/// Takes the log with the highest number out of the list, which has one at least.
candidate take_latest(QList<candidate> &logs)
{
    qsizetype latest = 0;
    for (qsizetype i = 1; i < logs.size(); ++i) {
        if (distance(logs.at(i).head.sequence, logs.at(latest).head.sequence) > 0)
            latest = i;
    }
    return logs.takeAt(latest);
}

/// One replay, from the heads of the logs to the hive's new base block.
class replay
{
public:
    /// `last_written`: of the hive. Its condition and its numbers stand in the report.
    replay(hive_image image, quint64 last_written, const QList<log_input> &logs,
           replay_report &report)
        : m_application(std::move(image)),
          m_last_written(last_written),
          m_logs(logs),
          m_report(report)
    {
    }

    /// Applies what applies and returns the hive.
    QByteArray run() &&;

private:
    void look_at(qsizetype index);
    QList<candidate> of_format(bool is_new) const;
    QList<candidate> new_logs_that_fit();
    QList<candidate> old_logs_that_fit();
    bool apply_adjoining(const QList<candidate> &logs);
    bool apply_latest(QList<candidate> logs);
    bool apply(const candidate &log);
    log_report &report_of(const candidate &log) { return m_report.logs[log.index]; }

    log_application m_application;
    quint64 m_last_written;
    const QList<log_input> &m_logs;
    replay_report &m_report;
    QList<candidate> m_candidates;
};

QByteArray replay::run() &&
{
    for (qsizetype i = 0; i < m_logs.size(); ++i)
        look_at(i);
    const bool is_header_sound = m_report.condition == hive_condition::dirty;
    const QList<candidate> new_logs = new_logs_that_fit();
    const bool is_done = is_header_sound ? apply_adjoining(new_logs) : apply_latest(new_logs);
    if (!is_done)
        apply_latest(old_logs_that_fit());
    return std::move(m_application).result();
}

void replay::look_at(qsizetype index)
{
    log_report &report = m_report.logs[index];
    const std::optional<QByteArray> bytes = m_logs.at(index).read();
    report.state = log_state::unreadable;
    if (!bytes)
        return;
    const log_head head = head_of_log(*bytes);
    report.state = head.problem;
    if (head.problem != log_state::applied)
        return;
    report.state = log_state::not_needed;
    report.is_new_format = head.is_new_format;
    report.first_sequence = head.sequence;
    m_candidates.append({index, head});
}

QList<candidate> replay::of_format(bool is_new) const
{
    QList<candidate> logs = m_candidates;
    logs.removeIf([is_new](const candidate &log) { return log.head.is_new_format != is_new; });
    return logs;
}

/// Those that end before the hive's state are of an earlier time. A damaged base block tells
/// nothing of that.
QList<candidate> replay::new_logs_that_fit()
{
    QList<candidate> logs = of_format(true);
    const quint32 least = m_report.secondary_sequence;
    if (m_report.condition == hive_condition::damaged_header)
        return logs;
    logs.removeIf([&](const candidate &log) {
        const bool is_older = distance(log.head.sequence, least) < 0;
        if (is_older)
            report_of(log).state = log_state::older;
        return is_older;
    });
    std::sort(logs.begin(), logs.end(), [least](const candidate &a, const candidate &b) {
        return a.head.sequence - least < b.head.sequence - least;
    });
    return logs;
}

/// A log and its hive get the same time when the log is written.
QList<candidate> replay::old_logs_that_fit()
{
    QList<candidate> logs = of_format(false);
    logs.removeIf([&](const candidate &log) {
        if (log.head.last_written == m_last_written)
            return false;
        report_of(log).state =
            log.head.last_written < m_last_written ? log_state::older : log_state::of_another_hive;
        return true;
    });
    return logs;
}

/// The logs are in the order of their numbers.
bool replay::apply_adjoining(const QList<candidate> &logs)
{
    std::optional<quint32> last;
    for (const candidate &log : logs) {
        if (last && log.head.sequence != *last + 1)
            report_of(log).state = log_state::not_adjoining;
        else if (apply(log))
            last = m_report.sequence;
    }
    return last.has_value();
}

/// One log alone: the latest that has anything to apply.
bool replay::apply_latest(QList<candidate> logs)
{
    while (!logs.isEmpty()) {
        if (apply(take_latest(logs)))
            return true;
    }
    return false;
}

bool replay::apply(const candidate &log)
{
    log_report &report = report_of(log);
    const std::optional<QByteArray> bytes = m_logs.at(log.index).read();
    if (!bytes)
        report.state = log_state::unreadable;
    if (!bytes || !m_application.apply(log.head, *bytes, report))
        return false;
    m_report.sequence = report.last_sequence;
    return true;
}

log_report report_about(const log_input &log)
{
    log_report report;
    report.name = log.name;
    return report;
}

} // namespace

bool replay_report::is_replayed() const
{
    return std::any_of(logs.begin(), logs.end(),
                       [](const log_report &log) { return log.state == log_state::applied; });
}

hive_condition condition_of_hive(const QByteArray &hive)
{
    const hive_base_block block(hive.first(std::min(hive.size(), qsizetype(base_block::size))));
    if (!block.is_whole() || hive.size() > first_bin + most_bins_size)
        return hive_condition::no_hive;
    if (block.is_of_a_hive() && block.is_checksum_right() &&
        block.file_type() != base_block::type_of_hive)
        return hive_condition::no_hive;
    if (block.is_of_a_hive() && block.is_checksum_right())
        return block.is_dirty() ? hive_condition::dirty : hive_condition::clean;
    return block.is_of_a_hive() || has_first_bin(hive) ? hive_condition::damaged_header
                                                       : hive_condition::no_hive;
}

replay_report replay_logs(QByteArray &hive, const QList<log_input> &logs)
{
    replay_report report;
    report.condition = condition_of_hive(hive);
    for (const log_input &log : logs)
        report.logs.append(report_about(log));
    report.size_before = report.size_after = hive.size();
    if (report.condition == hive_condition::no_hive)
        return report;
    const hive_base_block block(hive.first(base_block::size));
    report.primary_sequence = block.primary_sequence();
    report.secondary_sequence = block.secondary_sequence();
    if (report.condition == hive_condition::clean)
        return report;
    const quint64 time = last_written(hive, block);
    hive_image image(std::exchange(hive, {}), block.is_checksum_right() ? block.told_length() : 0);
    hive = replay(std::move(image), time, logs, report).run();
    report.size_after = hive.size();
    return report;
}
