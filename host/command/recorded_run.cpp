#include "recorded_run.h"

#include <QFileInfo>
#include <QStorageInfo>

#include <atomic>

#include "console.h"
#include "database_check.h"
#include "interrupt_watch.h"
#include "output_watch.h"
#include "record_entry.h"
#include "run_lock.h"
#include "run_record.h"
#include "unread_keys.h"

using namespace Qt::StringLiterals;

namespace {

/// One run from the lock of its folder to the end of its record.
class recorded_run
{
public:
    recorded_run(const loaded_plugin &plugin, const prepared_run &run, const source_volume &volume,
                 const extract_options &options)
        : m_plugin(plugin),
          m_run(run),
          m_volume(volume),
          m_options(options),
          m_database(run.location.database_file),
          m_lock(run.location.lock_file)
    {
    }

    std::optional<refusal> begin();
    exit_code make();

private:
    std::optional<refusal> choose_mode();
    std::optional<refusal> begin_record();
    described_source source() const;
    row_counts rows_in_database() const;
    QString note_of_full_disk() const;
    run_outcome extract(row_counts &before, output_watch &results);
    void check_evidence(bool is_cancelled);
    bool finish_record(const finished_run &finished, exit_code code, const output_watch &folder);

    const loaded_plugin &m_plugin;
    prepared_run m_run;
    const source_volume &m_volume;
    const extract_options &m_options;
    QString m_database;
    run_lock m_lock;
    std::optional<run_record> m_record; // read once the lock is held
    QJsonObject m_entry;
    recorded_facts m_facts;
};

std::optional<refusal> recorded_run::begin()
{
    if (auto refused = create_result_directory(m_run.location))
        return refused;
    if (auto refused = m_lock.take(m_options.wait_seconds))
        return refused;
    const database_state state = check_database(m_database, m_options.wait_seconds);
    if (auto refused = refusal_of(state, m_database, m_options.results.replace))
        return refused;
    m_facts.begin = QDateTime::currentDateTimeUtc();
    m_facts.files = files_before_run(m_volume, m_run.plan.accounts, m_run.tabs, {m_options.hashes});
    m_facts.folders = listed_folders(m_volume, m_run.plan.accounts, m_run.tabs);
    if (auto refused = choose_mode())
        return refused;
    if (!m_run.plan.debug_log.isEmpty()) {
        if (auto refused = create_debug_log(m_run.plan.debug_log))
            return refused;
    }
    return begin_record();
}

described_source recorded_run::source() const
{
    described_source source{host_version(), version_of(*m_plugin.object), m_volume.root(), {}};
    for (const read_file &file : m_facts.files) {
        if (file.state != "unreadable"_L1)
            source.hashes.insert(file.path, file.before.sha256);
    }
    return source;
}

std::optional<refusal> recorded_run::choose_mode()
{
    m_record.emplace(m_run.location.record_file);
    const chosen_mode chosen =
        ::choose_mode(*m_record, m_run.location, names_of(tabs_of(*m_plugin.object)), source(),
                      m_options.results);
    m_facts.mode = chosen.mode;
    m_run.plan.source_number = chosen.mode.source_number;
    m_run.plan.keep_rows = m_options.results.add;
    return chosen.refused;
}

std::optional<refusal> recorded_run::begin_record()
{
    m_entry = entry_of_begun_run(m_plugin, m_run, m_options, m_facts);
    const QString failure = m_record->begin(m_entry);
    if (!failure.isEmpty())
        return refusal{exit_result, u"the run record %1 cannot be written: %2"_s.arg(
                                        m_run.location.record_file, failure)};
    if (!m_record->set_aside().isEmpty())
        print_notice(u"the earlier run record cannot be continued (%1), and is now %2"_s.arg(
            m_record->damage(), m_record->set_aside()));
    if (m_facts.mode.is != result_mode::kind::replace)
        return std::nullopt;
    const QString not_removed = remove_database(m_database);
    if (not_removed.isEmpty())
        return std::nullopt;
    return refusal{exit_result,
                   u"the result database %1 cannot be removed: %2"_s.arg(m_database, not_removed)};
}

row_counts recorded_run::rows_in_database() const
{
    return QFileInfo::exists(m_database) ? count_rows(m_database, m_run.plan.tabs) : row_counts();
}

/// SQLite does not always say what its failures come from.
QString recorded_run::note_of_full_disk() const
{
    constexpr qint64 too_little = 64 << 10;
    const QStorageInfo disk(m_run.location.plugin_directory);
    return disk.isValid() && disk.bytesAvailable() < too_little
               ? u"; the disk of the result folder is full"_s
               : QString();
}

/// `before` becomes the rows of earlier runs that stay.
run_outcome recorded_run::extract(row_counts &before, output_watch &results)
{
    before = rows_in_database();
    const run_hooks hooks{
        [&] {
            results.note(u"result database"_s, m_database);
            const QFileInfo made(m_database);
            return made.isFile() && made.size() == 0 ? u"the database stayed empty"_s : QString();
        },
        [&] { before = rows_in_database(); },
        [&](const QString &tab) -> std::optional<qint64> {
            const auto rows = count_rows(m_database, {tab}).of(tab);
            return rows ? std::optional(*rows - before.of(tab).value_or(0)) : std::nullopt;
        },
    };
    run_outcome outcome =
        run_extraction(*m_plugin.object, m_run.plan, progress_style_for(m_options.quiet), hooks);
    if (!outcome.trouble.isEmpty())
        outcome.trouble += note_of_full_disk();
    return outcome;
}

/// Looks for what was not read, and whether the files are still the same.
void recorded_run::check_evidence(bool is_cancelled)
{
    QStringList unread;
    if (!is_cancelled)
        unread = unread_key_warnings(m_volume, m_run.plan.accounts, m_run.tabs);
    std::atomic<bool> is_interrupted = false;
    const interrupt_watch interrupts([&is_interrupted] { is_interrupted = true; });
    unread += look_again(m_volume, m_facts.files,
                         {m_options.hashes, [&is_interrupted] { return is_interrupted.load(); }});
    print_warnings(unread);
    append_left_out(m_run.findings, unread);
}

exit_code recorded_run::make()
{
    print_warnings(texts_of(m_run.findings));
    m_run.findings = m_run.shown_findings + m_run.findings;
    output_watch folder;
    output_watch results;
    output_watch log;
    folder.note(u"result folder"_s, m_run.location.plugin_directory);
    results.note(u"result folder"_s, m_run.location.plugin_directory);
    log.note(u"debug log"_s, m_run.plan.debug_log); // notes nothing when there is none
    finished_run finished;
    finished.database_file = m_database;
    row_counts before;
    finished.outcome = extract(before, results);
    finished.tab_count = m_run.plan.tabs.size();
    finished.rows_kept = before.total();
    finished.output_problems = results.problems();
    finished.log_problems = log.problems();
    if (finished.output_problems.isEmpty())
        finished.counts = rows_since(before, rows_in_database());
    check_evidence(finished.outcome.cancelled);
    finished.is_any_left_out = is_any_left_out(m_run.findings);
    print_notice(line_about(m_run.plan.options));
    const exit_code code = report_run(finished);
    if (finished.output_problems.isEmpty() && QFileInfo::exists(m_database))
        print_notice(
            u"look at what was found: %1"_s.arg(command_that_shows(m_options.result_directory)));
    return finish_record(finished, code, folder) ? code : exit_run_failed;
}

/// Writes nothing to a folder that somebody has put in the place of the one that was checked.
bool recorded_run::finish_record(const finished_run &finished, exit_code code,
                                 const output_watch &folder)
{
    if (!folder.problems().isEmpty()) {
        m_lock.abandon();
        return false;
    }
    const QString failure =
        m_record->complete(entry_of_ended_run(m_entry, finished, m_facts, m_run.findings, code));
    if (!failure.isEmpty())
        print_notice(u"the run record %1 cannot be completed: %2"_s.arg(m_run.location.record_file,
                                                                        failure));
    return failure.isEmpty();
}

} // namespace

exit_code make_recorded_run(const loaded_plugin &plugin, const prepared_run &run,
                            const source_volume &volume, const extract_options &options)
{
    recorded_run recorded(plugin, run, volume, options);
    if (const auto refused = recorded.begin()) {
        print_notice(refused->reason);
        return refused->code;
    }
    return recorded.make();
}
