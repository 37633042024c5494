#ifndef DIRTY_HIVE_H
#define DIRTY_HIVE_H

#include "transaction_log.h"

#include <QByteArray>

namespace test_support {

/// A hive that was not closed cleanly, and its log.
struct dirty_hive
{
    QByteArray hive;
    QByteArray log;
};

/// The hive as it lay on the disk when it became `after` in the log's only entry, number 7.
inline dirty_hive dirty_hive_of(const QByteArray &before, const QByteArray &after)
{
    return {evidence::numbered(before, 7, 6),
            evidence::new_format_log(before, 7).change(before, after).bytes()};
}

} // namespace test_support

#endif
