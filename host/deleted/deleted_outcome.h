#ifndef DELETED_OUTCOME_H
#define DELETED_OUTCOME_H

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

/// A hive in which deleted records were looked for.
struct searched_hive
{
    QString path; ///< relative to the volume's root
    QString failure;
    qint64 free_bytes = 0;
    qint64 bytes_behind_bins = 0;
    qint64 keys_in_free_space = 0; ///< of interest or not
    qint64 values_in_free_space = 0;
    qint64 finds = 0;       ///< keys of interest, values of such keys, and values of unknown keys
    qint64 without_row = 0; ///< records without one, because too many others give the same
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
    qint64 rows_without_origin = 0; ///< that the plug-in made of no record; they are removed
    qint64 finds = 0;
    bool is_cancelled = false;
    QString failure; ///< why there is no database, or not all rows are in it
};

/// The line that tells the examiner what was found.
QString line_about(const deleted_outcome &outcome);

/// What the examiner has to know besides: hives that were not searched, and the like.
QStringList warnings_about(const deleted_outcome &outcome);

/// The same for the run record.
QJsonObject entry_of(const deleted_outcome &outcome);

#endif
