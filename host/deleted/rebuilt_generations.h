#ifndef REBUILT_GENERATIONS_H
#define REBUILT_GENERATIONS_H

#include <QHash>
#include <QString>

#include <vector>

#include "deleted_records.h"
#include "rebuilt_hive.h"
#include "recovered_keys.h"

/// What a row of a table comes from.
struct placed_record
{
    qint64 offset = 0; ///< of the key, or value, in its file
    QString state;
    QString path_state;
};

/// What a row shows of the record that it comes from, in one text: the table, a group and a name.
QString row_id(const QString &tab, const QString &group, const QString &name);

/// A hive that holds recovered records, no two of which give the same row.
struct rebuilt_generation
{
    rebuilt_hive hive;
    QHash<QString, placed_record> by_row;
    bool needs_lookups = false; ///< its rows show what other keys of the hive tell
};

/// The hives that were made of one hive's records.
struct rebuilt_generations
{
    std::vector<rebuilt_generation> all;
    qint64 without_place = 0; ///< records that would give a row, but for which no hive is left
};

/// Puts the records of a hive that are whole enough for a row into hives to be read. Of several
/// records that give the same row, each goes into a hive of its own. What finds no place in the
/// first `most_generations` gives no row. Ends early when `cancelled` says so.
rebuilt_generations rebuild(const deleted_records &records, const QList<recovered_key> &keys,
                            bool is_of_users, const cancel_test &cancelled);

constexpr size_t most_generations = 64;

#endif
