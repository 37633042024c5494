#ifndef NEW_LOG_H
#define NEW_LOG_H

#include "log_report.h"
#include "page_batch.h"

#include <QByteArrayView>

/// An entry of a log of the new format.
struct new_log_entry
{
    log_flaw flaw = log_flaw::none; ///< if there is one, nothing else counts but the sequence
    quint32 sequence = 0;
    quint32 flags = 0;
    qint64 size = 0; ///< up to the next entry
    page_batch batch;
};

/// The entry at `offset` of the log, which should have the number `sequence`. Its size, pages and
/// hashes are checked against the log's bytes.
new_log_entry entry_at(QByteArrayView log, qint64 offset, quint32 sequence);

#endif
