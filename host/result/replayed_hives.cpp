#include "replayed_hives.h"

#include <algorithm>
#include <utility>

#include "log_files.h"
#include "private_copy.h"
#include "recovered_hive.h"
#include "replay_text.h"
#include "sha256.h"

using namespace Qt::StringLiterals;

namespace {

bool may_have_changes_in_logs(const QString &hive_file)
{
    const hive_condition condition = condition_of_file(hive_file);
    return condition == hive_condition::dirty || condition == hive_condition::damaged_header;
}

/// The logs beside the hive. One to which a link leads out of the source is not read.
QList<log_input> logs_of(const source_volume &volume, const QString &path, bool with_hashes,
                         QHash<QString, QString> &hashes)
{
    QList<log_input> logs;
    for (const QString &name : logs_beside(volume.root() + path)) {
        const QString log = path.left(path.lastIndexOf(u'/') + 1) + name;
        const auto read = log_file(volume.root() + log, name).read;
        logs.append({name, [=, &volume, &hashes]() -> std::optional<QByteArray> {
                         std::optional<QByteArray> bytes;
                         if (!volume.leads_out(log))
                             bytes = read();
                         if (bytes && with_hashes && !hashes.contains(name))
                             hashes.insert(name, sha256_of_bytes(*bytes));
                         return bytes;
                     }});
    }
    return logs;
}

replayed_hive replay(const source_volume &volume, const QString &path, const QString &folder,
                     bool with_hashes)
{
    replayed_hive hive;
    hive.path = path;
    std::optional<QByteArray> bytes = bytes_of_hive(volume.root() + path);
    if (!bytes) {
        hive.failure = u"it cannot be read"_s;
        return hive;
    }
    const QList<log_input> logs = logs_of(volume, path, with_hashes, hive.log_hashes);
    const recovered_hive recovered = recover_hive(*std::exchange(bytes, std::nullopt), logs);
    hive.replay = recovered.replay;
    hive.keys = recovered.keys;
    if (!hive.replay.is_replayed())
        return hive;
    hive.copy_sha256 = sha256_of_bytes(recovered.bytes);
    hive.copy = private_copy(recovered.bytes, hive.copy_sha256, folder + u'/' + path,
                             {volume.source_root()}, hive.failure);
    return hive;
}

QString texts_about_logs(const replay_report &report)
{
    QStringList texts;
    for (const log_report &log : report.logs)
        texts.append(u"%1: %2"_s.arg(log.name, text_about(log)));
    return texts.join("; "_L1);
}

finding finding_about(const replayed_hive &hive)
{
    const QString logs = texts_about_logs(hive.replay);
    if (!hive.failure.isEmpty())
        return finding(
            u"%1: its transaction logs are not applied: %2"_s.arg(hive.path, hive.failure));
    if (hive.copy.isEmpty())
        return {u"%1: none of its transaction logs applies; %2"_s.arg(hive.path, logs), false};
    const auto &all = hive.replay.logs;
    const bool is_any_left = std::any_of(all.begin(), all.end(), is_any_change_left);
    return {u"%1: read from a copy with its transaction logs applied (%2); %3; %4"_s.arg(
                hive.path, text_about_condition(hive.replay), text_about(hive.keys), logs),
            is_any_left};
}

} // namespace

QList<replayed_hive> replay_hives(const source_volume &volume, const QList<read_file> &hives,
                                  const QString &folder, bool with_hashes)
{
    QList<replayed_hive> replayed;
    for (const read_file &hive : hives) {
        const QString file = volume.root() + hive.path;
        if (!volume.leads_out(hive.path) && may_have_changes_in_logs(file) &&
            !logs_beside(file).isEmpty())
            replayed.append(replay(volume, hive.path, folder, with_hashes));
    }
    return replayed;
}

QHash<QString, QString> copies_of(const QList<replayed_hive> &hives)
{
    QHash<QString, QString> copies;
    for (const replayed_hive &hive : hives) {
        if (!hive.copy.isEmpty())
            copies.insert(hive.path, hive.copy);
    }
    return copies;
}

QVariantMap copies_for_plugin(const QList<replayed_hive> &hives, const source_volume &volume)
{
    const QHash<QString, QString> copies = copies_of(hives);
    QVariantMap by_full_path;
    for (auto copy = copies.cbegin(); copy != copies.cend(); ++copy)
        by_full_path.insert(volume.root() + copy.key(), copy.value());
    return by_full_path;
}

QList<finding> findings_about(const QList<replayed_hive> &hives)
{
    QList<finding> findings;
    for (const replayed_hive &hive : hives)
        findings.append(finding_about(hive));
    return findings;
}

QStringList changed_copies(const QList<replayed_hive> &hives)
{
    QStringList changed;
    for (const replayed_hive &hive : hives) {
        if (!hive.copy.isEmpty() && sha256_of(hive.copy) != hive.copy_sha256)
            changed.append(
                hive.path +
                ": the copy that is read was changed by somebody else during the run"_L1);
    }
    return changed;
}
