#ifndef DELETED_SEARCH_H
#define DELETED_SEARCH_H

#include <QList>
#include <QString>

#include <memory>

#include "deleted_outcome.h"
#include "deleted_records.h"
#include "rebuilt_generations.h"
#include "recovered_keys.h"
#include "source_volume.h"

/// What was found in one hive.
struct searched_records
{
    searched_hive told;
    QString account;                          ///< empty for the machine's hive
    std::unique_ptr<deleted_records> records; ///< null if the hive cannot be read
    rebuilt_generations generations;
};

/// Looks for records below the keys in the hive at `path`, relative to the volume, or in the copy
/// that is read in its place. Ends early when `cancelled` says so.
searched_records search_hive(const source_volume &volume, const QString &path,
                             const QString &account, const QList<recovered_key> &keys,
                             const cancel_test &cancelled);

#endif
