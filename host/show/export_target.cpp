#include "export_target.h"

#include <QDir>
#include <QFileInfo>

#include "evidence_guard.h"

using namespace Qt::StringLiterals;

namespace {

refusal refused(const QString &reason)
{
    return {exit_result, reason};
}

/// The folders that the runs have read, as far as they are still there.
QStringList sources_of(const QList<QJsonObject> &runs)
{
    QStringList sources;
    for (const QJsonObject &run : runs) {
        const QJsonObject source = run.value("source"_L1).toObject();
        for (const auto name : {"given"_L1, "volume"_L1}) {
            const QString path = source.value(name).toString();
            if (QDir::isAbsolutePath(path) && QFileInfo(path).isDir())
                sources.append(resolved(path));
        }
    }
    sources.removeDuplicates();
    return sources;
}

std::optional<refusal> check_evidence(const QString &directory, const QList<QJsonObject> &runs)
{
    for (const QString &source : sources_of(runs)) {
        const evidence_relation relation = evidence_guard(source).relation_of({directory});
        if (relation.is == evidence_relation::kind::within)
            return refused(
                u"%1 lies in the source %2, which is never written to"_s.arg(directory, source));
        if (relation.is == evidence_relation::kind::unknown)
            return refused(
                u"%1 may lie in the source: %2 cannot be looked through to find out"_s.arg(
                    directory, relation.hidden_folder));
    }
    return std::nullopt;
}

std::optional<refusal> check_file(const QString &path, bool replaces)
{
    const QFileInfo info(path);
    if (info.isSymLink() || (info.exists() && !info.isFile()))
        return refused(u"%1 is not written to: it is no plain file"_s.arg(path));
    if (info.exists() && !replaces)
        return refused(u"%1 is there already; --replace writes over it"_s.arg(path));
    return std::nullopt;
}

/// The databases with the files that SQLite keeps beside them, the run record, and the hives that
/// were made for the plug-in.
std::optional<refusal> check_result_itself(const QString &path, const results::result_place &place)
{
    const QString database = resolved(place.database_file);
    const QString target = resolved(path);
    const QString folder = QFileInfo(database).path();
    const bool is_hive = target.startsWith(folder + "/recovered_hives/"_L1) ||
                         target.startsWith(folder + "/rebuilt_hives/"_L1);
    const QFileInfo info(target);
    const auto facts = facts_of(target);
    bool is_part = is_hive || (info.path() == folder && info.fileName().contains(".sqlite"_L1));
    for (const QString &part : {database, resolved(place.record_file)}) {
        const auto facts_of_part = facts_of(part);
        is_part = is_part || target == part ||
                  (facts && facts_of_part && facts->identity == facts_of_part->identity);
    }
    return is_part ? std::optional(refused(u"%1 is part of the result itself"_s.arg(path)))
                   : std::nullopt;
}

} // namespace

std::optional<refusal> check_export(const QString &directory, const QStringList &files,
                                    const looked_at_result &looked, bool replaces)
{
    const QString place = resolved(directory);
    const QString nearest = place.isEmpty() ? QString() : nearest_existing(place);
    if (!QFileInfo(nearest).isDir())
        return refused(u"folder %1 cannot be made"_s.arg(directory));
    if (auto within = check_evidence(place, looked.record.runs))
        return within;
    for (const QString &file : files) {
        const QString path = QDir(directory).filePath(file);
        if (auto reason = check_result_itself(path, looked.place))
            return reason;
        if (auto reason = check_file(path, replaces))
            return reason;
    }
    return std::nullopt;
}
