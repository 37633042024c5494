#ifndef OPENED_RESULT_H
#define OPENED_RESULT_H

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

#include "readable_copy.h"
#include "sqlite_access.h"
#include "table_layout.h"

namespace results {

/// A result database that is open for reading. It is never written to, and no lock is held but
/// while rows are being read into memory, so that a run may write to it meanwhile.
class opened_result
{
public:
    /// Opens the database file. `failure()` tells if it is no result.
    explicit opened_result(const QString &database_file);

    /// Why there is nothing to read; empty if there is.
    const QString &failure() const { return m_failure; }
    /// What a person should know of the database: that it is of another version, or was copied.
    const QStringList &remarks() const { return m_remarks; }
    const QString &database_file() const { return m_file; }

    /// The tables of the result: the described ones first, in their order.
    const QStringList &tables() const { return m_tables; }
    /// The columns of a table of the result.
    table_layout layout_of(const QString &table, bool with_derived = true) const;
    /// The texts that a column of the tables holds, sorted, each once. Tables without it have none.
    QStringList values_of(const QStringList &tables, const QString &column) const;
    /// The number of rows of a table; nothing if they cannot be counted.
    std::optional<qint64> row_count(const QString &table) const;
    /// Whether somebody has written to the database since it was opened.
    bool has_changed() const;
    /// What that means, as a sentence.
    static QString text_of_change();

    const sqlite_connection &connection() const { return *m_connection; }

private:
    void connect();
    void connect_to_copy(const QString &reason);
    void list_tables();
    void accept_table(const QString &table, const QString &statement);
    QStringList columns_of(const QString &table) const;
    void tell_unknown_columns(const QString &table);

    QString m_file;
    QString m_failure;
    QStringList m_remarks;
    QStringList m_tables;
    qint64 m_data_version = -1;
    std::unique_ptr<readable_copy> m_copy; // goes after the connection
    std::optional<sqlite_connection> m_connection;
};

} // namespace results

#endif
