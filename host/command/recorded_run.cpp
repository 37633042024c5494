#include "recorded_run.h"

#include <QFileInfo>
#include <QStorageInfo>
#include <QThread>

#include <atomic>

#include "console.h"
#include "database_check.h"
#include "deleted_run.h"
#include "file_hashes.h"
#include "hive_precheck.h"
#include "host_version.h"
#include "interrupt_watch.h"
#include "output_watch.h"
#include "record_entry.h"
#include "recovered_database.h"
#include "run_lock.h"
#include "run_record.h"
#include "shell_word.h"
#include "unread_report.h"

using namespace Qt::StringLiterals;

namespace {

QString line_about(const file_hashes &hashes)
{
    return u"SHA-256 of what was read, before and after: %1 files hashed in %2 s, of which the run "
           "waited %3 s%4"_s.arg(QString::number(hashes.count()),
                                 QString::number(hashes.seconds(), 'f', 1),
                                 QString::number(hashes.seconds_waited(), 'f', 1),
                                 hashes.is_given_up() ? u"; the others have none"_s : QString());
}

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
    void replay_logs();
    std::optional<refusal> begin_record();
    described_source source() const;
    row_counts rows_in_database() const;
    QString note_of_full_disk() const;
    run_outcome extract(row_counts &before, output_watch &results);
    void hash_before();
    void recover_deleted(finished_run &finished);
    void check_evidence(run_outcome &outcome);
    bool finish_record(const finished_run &finished, exit_code code, const output_watch &folder);

    const loaded_plugin &m_plugin;
    prepared_run m_run;
    source_volume m_volume;
    const extract_options &m_options;
    QString m_database;
    run_lock m_lock;
    std::optional<run_record> m_record; // read once the lock is held
    QJsonObject m_entry;
    recorded_facts m_facts;
    file_hashes m_hashes; // its threads end before anything else
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
    if (m_options.deleted) {
        if (auto refused = check_deleted_database(m_run.location))
            return refused;
    }
    m_facts.begin = QDateTime::currentDateTimeUtc();
    m_facts.files =
        files_before_run(m_volume, m_run.software_hive, m_run.plan.accounts, m_run.tabs);
    hash_before();
    m_facts.folders = listed_folders(m_volume, m_run.plan.accounts, m_run.tabs);
    if (auto refused = choose_mode())
        return refused;
    if (!m_run.plan.debug_log.isEmpty()) {
        if (auto refused = create_debug_log(m_run.plan.debug_log))
            return refused;
    }
    if (m_run.plan.options.replay_logs)
        replay_logs();
    return begin_record();
}

/// Whether a source is that of earlier results, its hashes tell; else they are not waited for.
void recorded_run::hash_before()
{
    if (!m_options.hashes)
        return;
    m_hashes.begin(m_volume, m_facts.files, &read_file::before, 1);
    if (QFileInfo::exists(m_database) && !m_options.results.replace)
        m_hashes.finish(m_facts.files, [] { return false; });
}

/// From here on the copies are looked at in the place of their hives.
void recorded_run::replay_logs()
{
    const QString folder =
        m_run.location.recovered_directory + u"/Source%1"_s.arg(m_run.plan.source_number);
    m_facts.replayed = replay_hives(m_volume, m_facts.files, folder, m_options.hashes);
    m_run.plan.hive_copies = copies_for_plugin(m_facts.replayed, m_volume);
    m_volume.read_copies(copies_of(m_facts.replayed));
    if (!m_run.software_hive.isEmpty())
        m_run.software_hive = software_hive_to_read(m_volume);
    m_run.hive_findings =
        precheck_warnings(m_volume, m_run.software_hive, m_run.plan.accounts, m_run.tabs) +
        findings_about(m_facts.replayed);
}

described_source recorded_run::source() const
{
    described_source source{host_version(), version_of(*m_plugin.object), m_volume, {}};
    for (const read_file &file : m_facts.files) {
        if (file.is_read())
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
    const refusal refused{exit_result, u"the result database %1 cannot be removed: %2"_s.arg(
                                           m_database, not_removed)};
    m_record->complete(entry_of_refused_run(m_entry, refused)); // the run fails with that anyway
    return refused;
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

/// After the rows of the result, which stay as they are.
void recorded_run::recover_deleted(finished_run &finished)
{
    run_outcome &outcome = finished.outcome;
    if (!m_options.deleted || outcome.cancelled || !outcome.trouble.isEmpty())
        return;
    QHash<QString, QString> accounts_by_hive;
    for (const QString &account : m_run.plan.accounts)
        accounts_by_hive.insert(m_volume.user_hive(account), account);
    QHash<QString, QString> searched;
    for (const read_file &file : m_facts.files) {
        if (file.is_read() && check_hive_file(m_volume.file_of(file.path)).readable)
            searched.insert(file.path, accounts_by_hive.value(file.path));
    }
    const auto tell_search = [this] {
        if (!m_options.quiet)
            print_notice(u"looking for deleted records; Ctrl-C gives it up"_s);
    };
    m_facts.deleted = ::recover_deleted(*m_plugin.object, m_run.plan, m_run.location, m_volume,
                                        searched, tell_search);
    finished.deleted_problem = m_facts.deleted->failure;
    outcome.cancelled = outcome.cancelled || m_facts.deleted->is_cancelled;
    const QStringList warnings = warnings_about(*m_facts.deleted);
    print_warnings(warnings);
    append_left_out(m_run.findings, warnings);
    print_notice(line_about(*m_facts.deleted));
}

/// Looks for what was not read, and whether the files are still the same. What is not hashed yet
/// stays so when the run was cancelled, and when Ctrl-C comes during the wait for hashes.
void recorded_run::check_evidence(run_outcome &outcome)
{
    QStringList unread = unread_warnings(m_volume, outcome.unread);
    std::atomic<bool> is_interrupted = outcome.cancelled;
    const interrupt_watch interrupts([&is_interrupted] { is_interrupted = true; });
    const auto is_cancelled = [&is_interrupted] { return is_interrupted.load(); };
    const auto tell_wait = [] {
        print_notice(u"waiting for the SHA-256 of what was read; Ctrl-C gives it up"_s);
    };
    m_hashes.finish(m_facts.files, is_cancelled, tell_wait);
    look_again(m_volume, m_facts.files);
    if (m_options.hashes) {
        m_hashes.begin(m_volume, m_facts.files, &read_file::after, QThread::idealThreadCount());
        m_hashes.finish(m_facts.files, is_cancelled, tell_wait);
        if (!is_cancelled())
            unread += changed_copies(m_facts.replayed);
    }
    outcome.cancelled = outcome.cancelled || m_hashes.is_given_up();
    unread += changed_files(m_facts.files);
    print_warnings(unread);
    append_left_out(m_run.findings, unread);
}

exit_code recorded_run::make()
{
    print_warnings(texts_of(m_run.new_findings()));
    m_run.findings = m_run.shown_findings + m_run.new_findings();
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
    recover_deleted(finished);
    check_evidence(finished.outcome);
    finished.is_any_left_out = is_any_left_out(m_run.findings);
    print_notice(line_about(m_run.plan.options));
    if (m_options.hashes)
        print_notice(line_about(m_hashes));
    const exit_code code = report_run(finished);
    if (finished.output_problems.isEmpty() && QFileInfo::exists(m_database))
        print_notice(u"look at what was found: artifact_host show %1"_s.arg(
            results::shell_word(m_options.result_directory)));
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
    if (const auto refused = recorded.begin())
        return refuse(*refused);
    return recorded.make();
}
