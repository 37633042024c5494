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
    for (const QJsonValue &entry : record.value("runs"_L1).toArray()) {
        if (!entry.isObject())
            return no_record(foreign);
        read.runs.append(entry.toObject());
    }
    return read;
}

} // namespace results
