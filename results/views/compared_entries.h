#ifndef COMPARED_ENTRIES_H
#define COMPARED_ENTRIES_H

#include <QList>
#include <QString>
#include <QStringList>

#include <map>

#include "comparison.h"

namespace results {

/// What a table says of one thing that both states may have.
struct compared_entry
{
    QString account;
    QString subject;
    QString name; ///< by which a key of another name is found; empty if there is no display name
    QString version;
    qint64 run_count = 0;
    qint64 last_run = 0;
    qint64 id = 0;
};

enum class table_kind
{
    installations,
    packages,
    counted_runs,
    seen_runs
};

/// A table, and the columns that tell its things apart.
struct compared_table
{
    QString name;
    table_kind kind;
    QStringList identity;
};

/// The tables that are compared, in their order.
const QList<compared_table> &compared_tables();

/// Entries by what tells them apart.
using compared_entries = std::map<QString, compared_entry>;

/// The things that the table has in the state; of several rows of one thing, the last. `failure`
/// becomes the reason if rows are missing.
compared_entries read_entries(const compared_state &state, const compared_table &table,
                              QString &failure);

} // namespace results

#endif
