#include "record_entry.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QSysInfo>

#include "host_version.h"
#include "replay_text.h"
#include "sha256.h"

using namespace Qt::StringLiterals;

namespace {

QString utc_text(const QDateTime &time)
{
    return time.isValid() ? time.toUTC().toString(Qt::ISODateWithMs) : QString();
}

/// Entries without a text are left out.
QJsonObject without_empty(QJsonObject object)
{
    for (const QString &key : object.keys()) {
        if (object.value(key).isString() && object.value(key).toString().isEmpty())
            object.remove(key);
    }
    return object;
}

QJsonObject file_of_program(const QString &version, const QString &path)
{
    return without_empty(
        {{"version"_L1, version}, {"file"_L1, path}, {"sha256"_L1, sha256_of(path)}});
}

/// The options that the plug-in was asked for, by their names.
QJsonArray reading_entry(const reading_options &options)
{
    const QVariantMap property = property_of(options);
    QJsonArray names;
    for (auto entry = property.cbegin(); entry != property.cend(); ++entry) {
        if (entry.value().toBool())
            names.append(entry.key());
    }
    return names;
}

QJsonObject options_entry(const prepared_run &run, const extract_options &options)
{
    return {{"tabs"_L1, QJsonArray::fromStringList(run.plan.tabs)},
            {"accounts"_L1, QJsonArray::fromStringList(run.plan.accounts)},
            {"keeps_rows"_L1, run.plan.keep_rows},
            {"extraction_options"_L1, reading_entry(run.plan.options)},
            {"replays_logs"_L1, run.plan.options.replay_logs},
            {"hashes"_L1, options.hashes},
            {"wait_seconds"_L1, options.wait_seconds},
            {"debug_log"_L1, run.plan.debug_log}};
}

QJsonObject file_entry(const read_file &file)
{
    const bool is_looked_at_again = file.after.modified.isValid() || !file.after.failure.isEmpty();
    QJsonObject entry = without_empty({{"path"_L1, file.path},
                                       {"size"_L1, file.before.size},
                                       {"modified"_L1, utc_text(file.before.modified)},
                                       {"changed"_L1, utc_text(file.before.changed)},
                                       {"created"_L1, utc_text(file.before.created)},
                                       {"state"_L1, file.state},
                                       {"sha256_before"_L1, file.before.sha256},
                                       {"sha256_after"_L1, file.after.sha256},
                                       {"failure"_L1, file.before.failure}});
    if (!file.transaction_logs.isEmpty())
        entry.insert("transaction_logs"_L1, QJsonArray::fromStringList(file.transaction_logs));
    if (is_looked_at_again && file.after.size != file.before.size)
        entry.insert("size_after"_L1, file.after.size);
    if (is_looked_at_again && file.after.modified != file.before.modified)
        entry.insert("modified_after"_L1, utc_text(file.after.modified));
    return entry;
}

QJsonArray files_entry(const QList<read_file> &files)
{
    QJsonArray entries;
    for (const read_file &file : files)
        entries.append(file_entry(file));
    return entries;
}

QJsonArray folders_entry(const QList<listed_folder> &folders)
{
    QJsonArray entries;
    for (const listed_folder &folder : folders)
        entries.append(without_empty({{"path"_L1, folder.path},
                                      {"modified"_L1, utc_text(folder.modified)},
                                      {"entries"_L1, folder.entries}}));
    return entries;
}

QJsonArray logs_entry(const replayed_hive &hive)
{
    QJsonArray entries;
    for (const log_report &log : hive.replay.logs)
        entries.append(without_empty({{"name"_L1, log.name},
                                      {"result"_L1, text_about(log)},
                                      {"sha256"_L1, hive.log_hashes.value(log.name)}}));
    return entries;
}

QJsonObject keys_entry(const key_change_counts &keys)
{
    return {{"before"_L1, keys.before},
            {"after"_L1, keys.after},
            {"added"_L1, keys.added},
            {"changed"_L1, keys.changed},
            {"removed"_L1, keys.removed}};
}

QJsonArray replayed_entry(const QList<replayed_hive> &hives)
{
    QJsonArray entries;
    for (const replayed_hive &hive : hives) {
        QJsonObject entry = without_empty({{"path"_L1, hive.path},
                                           {"copy"_L1, hive.copy},
                                           {"copy_sha256"_L1, hive.copy_sha256},
                                           {"failure"_L1, hive.failure},
                                           {"logs"_L1, logs_entry(hive)}});
        if (hive.replay.is_replayed()) {
            entry.insert("sequence"_L1, qint64(hive.replay.sequence));
            entry.insert("keys"_L1, keys_entry(hive.keys));
        }
        entries.append(entry);
    }
    return entries;
}

/// Rows are those in the database if they could be counted.
QJsonArray tabs_entry(const finished_run &run)
{
    QJsonArray entries;
    for (const tab_result &tab : run.outcome.tabs)
        entries.append(QJsonObject{{"name"_L1, tab.name},
                                   {"rows"_L1, run.counts.of(tab.name).value_or(tab.rows)},
                                   {"seconds"_L1, tab.seconds},
                                   {"done"_L1, tab.is_done}});
    return entries;
}

QJsonArray findings_entry(const QList<finding> &findings, bool left_out)
{
    QStringList texts;
    for (const finding &each : findings) {
        if (each.is_left_out == left_out)
            texts.append(each.text);
    }
    return QJsonArray::fromStringList(texts);
}

QString name_of(exit_code code)
{
    switch (code) {
    case exit_complete:
        return u"complete"_s;
    case exit_incomplete:
        return u"incomplete"_s;
    case exit_cancelled:
        return u"cancelled"_s;
    default:
        return u"failed"_s;
    }
}

void insert_end(QJsonObject &entry, exit_code code)
{
    entry.insert("outcome"_L1, name_of(code));
    entry.insert("exit_code"_L1, static_cast<int>(code));
    entry.insert("end"_L1, utc_text(QDateTime::currentDateTimeUtc()));
}

} // namespace

QJsonObject entry_of_begun_run(const loaded_plugin &plugin, const prepared_run &run,
                               const extract_options &options, const recorded_facts &facts)
{
    const QString program = QCoreApplication::applicationFilePath();
    return {{"outcome"_L1, u"running"_s},
            {"begin"_L1, utc_text(facts.begin)},
            {"process"_L1, QCoreApplication::applicationPid()},
            {"machine"_L1, QSysInfo::machineHostName()},
            {"system"_L1, QSysInfo::prettyProductName()},
            {"program"_L1, file_of_program(host_version(), program)},
            {"library"_L1, file_of_program(version_of(*plugin.object), plugin.file)},
            {"command_line"_L1, QJsonArray::fromStringList(options.arguments)},
            {"options"_L1, options_entry(run, options)},
            {"mode"_L1, name_of(facts.mode.is)},
            {"source"_L1, QJsonObject{{"given"_L1, options.source},
                                      {"volume"_L1, run.plan.source_root},
                                      {"number"_L1, run.plan.source_number}}},
            {"database"_L1, run.location.database_file},
            {"files"_L1, files_entry(facts.files)},
            {"replayed_hives"_L1, replayed_entry(facts.replayed)},
            {"package_folders"_L1, folders_entry(facts.folders)}};
}

QJsonObject entry_of_ended_run(QJsonObject entry, const finished_run &run,
                               const recorded_facts &facts, const QList<finding> &findings,
                               exit_code code)
{
    insert_end(entry, code);
    entry.insert("files"_L1, files_entry(facts.files));
    if (facts.deleted)
        entry.insert("deleted_records"_L1, entry_of(*facts.deleted));
    entry.insert("tabs"_L1, tabs_entry(run));
    entry.insert("rows"_L1, run.counts.total());
    entry.insert("rows_kept"_L1, run.rows_kept);
    entry.insert("not_read"_L1, findings_entry(findings, true));
    entry.insert("remarks"_L1, findings_entry(findings, false));
    entry.insert("early_ends"_L1, QJsonArray::fromStringList(run.outcome.early_ends));
    entry.insert("failures"_L1, run.outcome.failures);
    entry.insert("problems"_L1, QJsonArray::fromStringList(problems_of(run)));
    return entry;
}

QJsonObject entry_of_refused_run(QJsonObject entry, const refusal &refused)
{
    insert_end(entry, refused.code);
    entry.insert("problems"_L1, QJsonArray{refused.reason});
    return entry;
}

QString version_of(const artifact_plugin &plugin)
{
    return plugin.property("version").toString();
}
