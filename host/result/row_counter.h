#ifndef ROW_COUNTER_H
#define ROW_COUNTER_H

#include <QList>
#include <QString>
#include <QStringList>

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
};

/// Counts the rows of `tables` in the SQLite file, which is opened for reading only.
row_counts count_rows(const QString &database_file, const QStringList &tables);

#endif
