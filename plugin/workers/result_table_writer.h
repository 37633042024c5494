#ifndef RESULT_TABLE_WRITER_H
#define RESULT_TABLE_WRITER_H

#include "result_tab.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStringList>

#include <optional>

/// Inserts rows into one result table, in one transaction on a connection of its own that is named
/// after the extractor. Failures are logged in the tab's words. Whatever path leaves the writer,
/// the rows inserted so far are committed and the connection is closed.
class result_table_writer
{
public:
    /// `result_tab` must outlive the writer. `path` is the database file; it is not opened yet.
    result_table_writer(const result_tab &result_tab, const QString &path);
    result_table_writer(const result_table_writer &) = delete;
    result_table_writer &operator=(const result_table_writer &) = delete;
    ~result_table_writer();

    /// Replaces a stale connection of the same name, opens the database and begins the transaction.
    /// False, with two log lines, when the database cannot be opened.
    bool open();

    /// Inserts one row: `values` in the order of the statement's placeholders, all as text (a null
    /// text is written as an empty one). False, with three log lines, when that fails.
    bool insert(const QStringList &values);

private:
    void name_placeholders();
    bool prepare(const QString &statement);
    bool execute(const QStringList &values);
    void bind(qsizetype column, const QString &value);
    void log(const QString &message) const;
    void log_insert_failure(const QString &error) const;

    const result_tab &m_tab;
    QString m_database_path;
    QSqlDatabase m_database;
    std::optional<QSqlQuery> m_query; ///< prepared once for all rows until one fails
    QString m_named_statement;        ///< the tab's, with a name for each placeholder
    QStringList m_placeholders;       ///< their names; none once the tab's own statement is used
    QStringList m_bound_values;       ///< of the row before; none right after preparing
    bool m_is_prepared = false;
    bool m_has_executed = false; ///< whether a row was inserted since the statement was prepared
};

#endif
