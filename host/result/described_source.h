#ifndef DESCRIBED_SOURCE_H
#define DESCRIBED_SOURCE_H

#include <QHash>
#include <QJsonObject>
#include <QString>

#include "source_volume.h"

/// What a run would add to a folder.
struct described_source
{
    QString host_version;
    QString library_version;
    const source_volume &volume;
    QHash<QString, QString> hashes; ///< of hives that open: path within the volume to SHA-256
};

/// The root of the volume that an entry of a run record tells.
QString volume_of(const QJsonObject &run);

/// Whether an entry of a run record tells of this source. If hives of both have hashes, these
/// decide, wherever the volume lies. If none can be compared, the volume must lie at the same path,
/// and hives, package folders and accounts of the entry must be there as they were: the same sizes,
/// modification times and numbers of entries, as far as the entry tells them.
bool is_of_source(const QJsonObject &run, const described_source &source);

#endif
