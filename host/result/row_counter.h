#ifndef ROW_COUNTER_H
#define ROW_COUNTER_H

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// The rows of one table of a result database.
struct table_rows
{
    QString table;
    qint64 rows = 0;
};

/// Rows per table, or why they cannot be counted.
struct row_counts
{
    QList<table_rows> tables;
    QString failure; ///< why one is missing from `tables`; empty when all were counted

    /// Rows of all tables.
    qint64 total() const;

    /// Rows of one table; nothing when it was not counted.
    std::optional<qint64> of(const QString &table) const;
};

/// The rows of `now` that were not there before. A table that only `now` has counts as a whole, one
/// that has lost rows as empty.
row_counts rows_since(const row_counts &before, const row_counts &now);

/// The names of the tables in the SQLite file, without SQLite's own; none if it cannot be read.
QStringList tables_in(const QString &database_file);

/// Counts the rows of `tables` in the SQLite file, which is opened for reading only.
row_counts count_rows(const QString &database_file, const QStringList &tables);

/// The largest number of a source that rows of the tables name as theirs ("Source2"); 0 if none
/// does.
int largest_source_number(const QString &database_file, const QStringList &tables);

#endif
