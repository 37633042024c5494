#include "recover_command.h"

#include <QDir>
#include <QFileInfo>

#include <utility>

#include "console.h"
#include "log_files.h"
#include "new_file.h"
#include "recovered_hive.h"
#include "replay_text.h"
#include "result_location.h"
#include "sha256.h"
#include "volume_search.h"

using namespace Qt::StringLiterals;

namespace {

void print(const QString &line)
{
    write_line(stdout, printable(line));
}

QString folder_of(const QString &file)
{
    return QFileInfo(QFileInfo(file).canonicalFilePath()).path();
}

/// The volume in which the hive lies, if that can be told; otherwise the hive's folder. A hive lies
/// a few folders below the root of its volume.
QString evidence_root_of(const QString &hive)
{
    constexpr int most_levels = 4;
    QDir folder(folder_of(hive));
    QString own = folder.path();
    for (int level = 0; level <= most_levels; ++level) {
        if (is_volume(folder.path()))
            return folder.path();
        if (folder.isRoot() || !folder.cdUp())
            break;
    }
    return own;
}

QStringList evidence_roots(const recover_options &options)
{
    QStringList roots{evidence_root_of(options.hive)};
    for (const QString &log : options.logs) {
        if (QFileInfo::exists(log))
            roots.append(folder_of(log));
    }
    roots.removeDuplicates();
    return roots;
}

QList<log_input> logs_of(const recover_options &options)
{
    QList<log_input> logs;
    for (const QString &path : options.logs)
        logs.append(log_file(path, QFileInfo(path).fileName()));
    if (!options.logs.isEmpty())
        return logs;
    const QDir folder(QFileInfo(options.hive).path());
    for (const QString &name : logs_beside(options.hive))
        logs.append(log_file(folder.filePath(name), name));
    return logs;
}

QString line_about_key(key_change change, const QString &path)
{
    const QString shown = path.isEmpty() ? u"(root key)"_s : path;
    switch (change) {
    case key_change::added:
        return "added    "_L1 + shown;
    case key_change::changed:
        return "changed  "_L1 + shown;
    case key_change::removed:
        return "removed  "_L1 + shown;
    }
    return {};
}

void tell_of_logs(const recover_options &options, const replay_report &report)
{
    print(u"hive %1: %2, %3 bytes"_s.arg(options.hive, text_about_condition(report),
                                         QString::number(report.size_before)));
    for (const log_report &log : report.logs)
        print(u"log %1: %2"_s.arg(log.name, text_about(log)));
}

QString reason_of_nothing(const replay_report &report)
{
    if (report.condition == hive_condition::clean)
        return u"the hive was closed cleanly"_s;
    return report.logs.isEmpty() ? u"no transaction log lies beside the hive"_s
                                 : u"no transaction log applies"_s;
}

void tell_of_copy(const recover_options &options, const recovered_hive &hive)
{
    print(text_about(hive.keys));
    print(u"copy %1: %2 bytes, sequence number %3, SHA-256 %4"_s.arg(
        options.copy, QString::number(hive.replay.size_after),
        QString::number(hive.replay.sequence), sha256_of_bytes(hive.bytes)));
}

} // namespace

exit_code recover(const recover_options &options)
{
    std::optional<QByteArray> bytes = bytes_of_hive(options.hive);
    if (!bytes)
        return refuse({exit_source, u"hive %1 cannot be read"_s.arg(options.hive)});
    if (condition_of_hive(*bytes) == hive_condition::no_hive)
        return refuse({exit_source, u"%1 is no registry hive"_s.arg(options.hive)});
    const QString name = u"copy %1"_s.arg(options.copy);
    if (const auto refused = check_new_file(options.copy, name, evidence_roots(options)))
        return refuse(*refused);
    QStringList keys;
    const auto take = [&keys](key_change change, const QString &path) {
        keys.append(line_about_key(change, path));
    };
    const recovered_hive hive =
        recover_hive(*std::exchange(bytes, std::nullopt), logs_of(options),
                     options.list ? key_change_taker(take) : key_change_taker());
    tell_of_logs(options, hive.replay);
    if (!hive.replay.is_replayed())
        return refuse(
            {exit_nothing_to_recover,
             u"nothing to recover: %1; no copy was written"_s.arg(reason_of_nothing(hive.replay))});
    if (const QString failure = write_new_file(options.copy, hive.bytes); !failure.isEmpty())
        return refuse({exit_result, u"%1 cannot be written: %2"_s.arg(name, failure)});
    tell_of_copy(options, hive);
    for (const QString &line : std::as_const(keys))
        print(line);
    return exit_complete;
}
