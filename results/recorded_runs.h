#ifndef RECORDED_RUNS_H
#define RECORDED_RUNS_H

#include <QJsonObject>
#include <QList>
#include <QString>

namespace results {

/// The entries of a run record.
struct recorded_runs
{
    QList<QJsonObject> runs; ///< the first one first
    QString damage; ///< why the file is no record; empty when it is one, and when there is no file
};

/// The format of the run records that this program reads and writes.
inline constexpr int run_record_format = 1;

/// The numbers of sources ("Source2") go from 1 to this one.
inline constexpr int last_source_number = 1'000'000;

/// Reads the run record at `file`, which may be written meanwhile: a record is exchanged as a
/// whole.
recorded_runs read_recorded_runs(const QString &file);

} // namespace results

#endif
