#ifndef DELETED_RUN_H
#define DELETED_RUN_H

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include "extraction_run.h"
#include "result_location.h"
#include "source_volume.h"

/// A hive in which deleted records were looked for.
struct searched_hive
{
    QString path; ///< relative to the volume's root
    QString failure;
    qint64 free_bytes = 0;
    qint64 bytes_behind_bins = 0;
    qint64 keys_in_free_space = 0; ///< of interest or not
    qint64 values_in_free_space = 0;
    qint64 finds = 0; ///< keys of interest, values of such keys, and values of unknown keys
    qint64 without_row =
        0; ///< records that give the same row as so many others that they have none
};

/// A hive that was made of deleted records.
struct rebuilt_copy
{
    QString path;       ///< of the evidence file, relative to the volume's root
    int generation = 1; ///< of several records that give the same row, the later ones count up
    QString copy;
    QString sha256;
};

/// What became of the deleted records of a run.
struct deleted_outcome
{
    QList<searched_hive> hives;
    QList<rebuilt_copy> rebuilt;
    QString database; ///< empty if nothing was found, or it could not be made
    qint64 rows = 0;
    qint64 finds = 0;
    bool is_cancelled = false;
    QString failure; ///< why there is no database, or not all rows are in it
};

/// Looks for deleted records in the hives, which are given by their paths relative to the volume
/// and by their accounts (none for the machine's), and makes a database of them at the location's
/// place, in which the plug-in's own tables have the rows that it makes of records that are whole
/// enough. An earlier database goes if the plan does not keep rows. The result's own database, and
/// the evidence, are not touched.
deleted_outcome recover_deleted(artifact_plugin &plugin, const extraction_plan &plan,
                                const result_location &location, const source_volume &volume,
                                const QHash<QString, QString> &accounts_by_hive);

/// The line that tells the examiner what was found.
QString line_about(const deleted_outcome &outcome);

/// What the examiner has to know besides: hives that were not searched, and the like.
QStringList warnings_about(const deleted_outcome &outcome);

/// Why the database of deleted records cannot be made; nothing if it can.
std::optional<refusal> check_deleted_database(const result_location &location);

#endif
