#ifndef KEY_CHANGES_H
#define KEY_CHANGES_H

#include "key_tree.h"

#include <QString>

#include <functional>

/// How a key differs between two states of a hive.
enum class key_change
{
    added,
    changed, ///< another last-write time, or other values
    removed
};

/// How many keys two states of a hive have, and in how many they differ.
struct key_change_counts
{
    qint64 before = 0;
    qint64 after = 0;
    qint64 added = 0;
    qint64 changed = 0;
    qint64 removed = 0;
};

/// Gets each key that differs: how, and its path below the root.
using key_change_taker = std::function<void(key_change change, const QString &path)>;

/// Compares the keys of two states of a hive by their paths, letter case ignored as Windows does.
/// `take` may be empty.
key_change_counts compare_keys(const key_tree &before, const key_tree &after,
                               const key_change_taker &take = {});

#endif
