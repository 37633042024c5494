#include "recovered_hive.h"

#include <utility>

recovered_hive recover_hive(QByteArray hive, const QList<log_input> &logs,
                            const key_change_taker &take)
{
    recovered_hive recovered;
    const hive_condition condition = condition_of_hive(hive);
    const bool may_change =
        condition == hive_condition::dirty || condition == hive_condition::damaged_header;
    // The keys are read before, because the hive is then altered in its place.
    const key_tree before = may_change && !logs.isEmpty() ? key_tree(hive) : key_tree();
    recovered.bytes = std::move(hive);
    recovered.replay = replay_logs(recovered.bytes, logs);
    if (recovered.replay.is_replayed())
        recovered.keys = compare_keys(before, key_tree(recovered.bytes), take);
    return recovered;
}
