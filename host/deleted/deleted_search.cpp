#include "deleted_search.h"

#include "log_files.h"

using namespace Qt::StringLiterals;

namespace {

/// The keys and values found that are told of; those of unknown keys are values alone.
qint64 finds_in(const deleted_records &records)
{
    qint64 finds = 0;
    for (const deleted_key &key : records.keys()) {
        const bool is_find = !key.is_alive && key.path != path_state::unknown;
        finds += qint64(key.values.size()) + (is_find ? 1 : 0);
    }
    return finds;
}

} // namespace

searched_records search_hive(const source_volume &volume, const QString &path,
                             const QString &account, const QList<recovered_key> &keys,
                             const cancel_test &cancelled)
{
    searched_records hive;
    hive.told.path = path;
    hive.account = account;
    const std::optional<QByteArray> bytes = bytes_of_hive(volume.file_of(path));
    if (!bytes) {
        hive.told.failure = u"it cannot be read"_s;
        return hive;
    }
    const bool is_of_users = !account.isEmpty();
    hive.records =
        std::make_unique<deleted_records>(*bytes, wanted_of(keys, is_of_users), cancelled);
    hive.told.free_bytes = hive.records->free_bytes();
    hive.told.bytes_behind_bins = hive.records->bytes_behind_bins();
    hive.told.keys_in_free_space = hive.records->keys_in_free_space();
    hive.told.values_in_free_space = hive.records->values_in_free_space();
    hive.told.finds = finds_in(*hive.records);
    hive.generations = rebuild(*hive.records, keys, is_of_users, cancelled);
    hive.told.without_row = hive.generations.without_place;
    return hive;
}
