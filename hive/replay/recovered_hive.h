#ifndef RECOVERED_HIVE_H
#define RECOVERED_HIVE_H

#include "key_changes.h"
#include "log_replay.h"

/// A hive after its logs were applied in memory.
struct recovered_hive
{
    replay_report replay;
    key_change_counts keys; ///< what that changed; zeros if no log was applied
    QByteArray bytes;       ///< the hive as Windows would have it; as it came if none was applied
};

/// Applies the logs to the hive file with these bytes, and compares its keys before and after.
/// `take` gets each key that differs.
recovered_hive recover_hive(QByteArray hive, const QList<log_input> &logs,
                            const key_change_taker &take = {});

#endif
