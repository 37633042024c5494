#include "recorded_runs.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace results {

namespace {

constexpr qint64 most_bytes = qint64(256) << 20; // no record of real runs is nearly as long

recorded_runs no_record(const QString &reason)
{
    return {{}, reason};
}

/// No run writes other numbers. A run that went on behind a forged one would count from there.
bool has_possible_number(const QJsonObject &run)
{
    const QJsonValue number = run.value("source"_L1).toObject().value("number"_L1);
    return number.isUndefined() || (number.toInt() >= 1 && number.toInt() <= last_source_number);
}

} // namespace

recorded_runs read_recorded_runs(const QString &file_name)
{
    const QString foreign = u"it is no record of runs"_s;
    const QFileInfo info(file_name);
    if (!info.exists() && !info.isSymLink())
        return {};
    if (info.isSymLink() || !info.isFile())
        return no_record(foreign);
    if (info.size() > most_bytes)
        return no_record(u"it has more than %1 MiB"_s.arg(most_bytes >> 20));
    QFile file(file_name);
    if (!file.open(QIODevice::ReadOnly))
        return no_record(file.errorString());
    const QJsonObject record = QJsonDocument::fromJson(file.read(most_bytes)).object();
    if (record.value("format"_L1).toInt() != run_record_format ||
        !record.value("runs"_L1).isArray())
        return no_record(foreign);
    recorded_runs read;
    for (const QJsonValue entry : record.value("runs"_L1).toArray()) {
        if (!entry.isObject())
            return no_record(foreign);
        if (!has_possible_number(entry.toObject()))
            return no_record(u"it tells an impossible number of a source"_s);
        read.runs.append(entry.toObject());
    }
    return read;
}

} // namespace results
