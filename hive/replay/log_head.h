#ifndef LOG_HEAD_H
#define LOG_HEAD_H

#include "log_report.h"

#include <QByteArray>

/// The first sector of a transaction log.
struct log_head
{
    log_state problem = log_state::applied; ///< why nothing of the log counts, or `applied`
    bool is_new_format = false;
    quint32 sequence = 0;     ///< the primary sequence number
    quint64 last_written = 0; ///< as a FILETIME
    QByteArray fields;        ///< the copy of the hive's base block, as far as it has fields
};

/// Reads the head of the log with these bytes. Its fields are read only if nothing is wrong.
log_head head_of_log(const QByteArray &log);

#endif
