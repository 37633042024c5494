#ifndef ACTIVITY_H
#define ACTIVITY_H

#include <QList>
#include <QString>

#include "opened_result.h"
#include "row_filter.h"
#include "time_texts.h"

namespace results {

/// The last runs of one account on one day.
struct runs_of_day
{
    qint64 day = 0; ///< its first second, in UTC
    QString source; ///< "Source2"
    QString account;
    qint64 runs = 0;
};

/// The Uninstall keys of one month, by the install date that the installer wrote; where it wrote
/// none, by the time when the key was last written.
struct keys_of_month
{
    int year = 0;
    int month = 0; ///< 1 to 12
    qint64 keys = 0;
};

/// The numbers that pictures of a result show.
struct activity
{
    QList<runs_of_day> days;     ///< in the order of days, sources and accounts
    qint64 runs_left_out = 0;    ///< those whose times do not lie within the span
    QList<keys_of_month> months; ///< in their order; months without keys are left out
    qint64 keys_left_out = 0;    ///< those whose times do not lie within the span
    QString failure;             ///< why rows are missing; empty when all were read
};

/// Counts what the tables tell within the span, of rows that the filter lets pass. Times outside of
/// it are damaged or forged, and would make every picture a line at its edge.
activity read_activity(const opened_result &result, const QStringList &tables,
                       const row_filter &filter, const time_span &span);

} // namespace results

#endif
