#ifndef TABLE_DESCRIPTIONS_H
#define TABLE_DESCRIPTIONS_H

#include <QLatin1StringView>
#include <QString>
#include <QStringList>

#include "column.h"

namespace results {

/// The table that only a database of recovered rows has: one row for each deleted key and value.
inline constexpr auto table_of_finds = QLatin1StringView("deleted_records");

/// The tables that every result has, in the order in which they are shown.
QStringList described_tables();

/// What the rows of the table are, as half a sentence; empty for an unknown table.
QString title_of(const QString &table);

/// What rows of a table say before a court, and what they do not.
struct table_evidence
{
    QString proves;
    QString does_not_prove;
};

/// Both texts are empty for an unknown table.
table_evidence evidence_of(const QString &table);

/// The column of that name in the table. A column of an unknown name is a text without a meaning.
column described_column(const QString &table, const QString &name);

} // namespace results

#endif
