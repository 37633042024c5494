#ifndef REPLAYED_HIVES_H
#define REPLAYED_HIVES_H

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include "finding.h"
#include "key_changes.h"
#include "log_replay.h"
#include "read_files.h"
#include "source_volume.h"

/// A hive of the evidence whose logs were looked at before a run.
struct replayed_hive
{
    QString path; ///< relative to the volume's root
    replay_report replay;
    QHash<QString, QString> log_hashes; ///< SHA-256 of each log, if asked for
    key_change_counts keys;
    QString copy;        ///< full path of the hive with its logs applied; empty if there is none
    QString copy_sha256; ///< hexadecimal
    QString failure;     ///< why there is none although logs apply
};

/// Applies the transaction logs beside those of the hives that were not closed cleanly, and writes
/// each result below `folder` at the hive's own path, unless a file with the same bytes is there. A
/// file with other bytes stays; the copy then gets a number. Nothing is written to the evidence.
QList<replayed_hive> replay_hives(const source_volume &volume, const QList<read_file> &hives,
                                  const QString &folder, bool with_hashes);

/// The copies to read, by the paths of their hives relative to the volume.
QHash<QString, QString> copies_of(const QList<replayed_hive> &hives);

/// The same by full paths, as the plug-in takes them.
QVariantMap copies_for_plugin(const QList<replayed_hive> &hives, const source_volume &volume);

/// What the examiner should know: one finding for each of the hives.
QList<finding> findings_about(const QList<replayed_hive> &hives);

/// One text for each copy that is another file by now.
QStringList changed_copies(const QList<replayed_hive> &hives);

#endif
