#ifndef OLD_LOG_H
#define OLD_LOG_H

#include "log_report.h"
#include "page_batch.h"

#include <QByteArrayView>

/// The pages of a log of the old format.
struct old_log
{
    log_flaw flaw = log_flaw::none; ///< if there is one, there are no pages
    page_batch batch;
};

/// Reads the log with these bytes, whose head is sound. A log that lacks one of its pages has none.
old_log pages_of_old_log(QByteArrayView log);

#endif
