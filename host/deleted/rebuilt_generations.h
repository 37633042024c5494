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
    bool has_values = false; ///< of keys whose values become rows, so that lookups are needed
};

/// Puts the records of a hive that are whole enough for a row into hives to be read. Of several
/// records that give the same row, each goes into a hive of its own. What finds no place in the
/// first `most_generations` gives no row.
std::vector<rebuilt_generation> rebuild(const deleted_records &records,
                                        const QList<recovered_key> &keys, bool is_of_users);

constexpr size_t most_generations = 64;

#endif
