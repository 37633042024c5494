#ifndef RESULT_TABLE_WRITER_H
#define RESULT_TABLE_WRITER_H

#include "lock_wait.h"
#include "result_tab.h"

#include <QList>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringList>

#include <optional>

/// Inserts rows into one result table, in one transaction on a connection of its own that is named
/// after the operation. Failures are logged in the tab's words. The destructor closes the writer,
/// so that rows are kept whatever path leaves it. Values reach the statement as bound ones alone. A
/// lock that somebody else holds is waited for once, and again after a row went in.
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

    /// From now on inserts rows by another statement of the table; the writer must be open.
    void use_statement(QLatin1StringView insert_statement);

    /// Commits the rows and closes the connection; does nothing when it is not open.
    void close();

    /// Inserts one row: `values` in the order of the statement's placeholders, all as text (a null
    /// text is written as an empty one). False, with three log lines, when that fails.
    bool insert(const QStringList &values);

private:
    struct column
    {
        QString placeholder;   ///< its name in the statement
        QString value;         ///< of the row before
        bool is_bound = false; ///< whether the statement holds that value
    };

    bool stores_utf8();
    void expect_columns(qsizetype count);
    QString named_statement() const;
    bool prepare();
    bool execute(const QStringList &values);
    bool noted(bool succeeded);
    void bind(qsizetype position);
    void log(const QString &message) const;
    void log_insert_failure(const QString &error) const;

    const result_tab &m_tab;
    QLatin1StringView m_insert_statement;
    QString m_database_path;
    QSqlDatabase m_database;
    std::optional<QSqlQuery> m_query; ///< prepared once for all rows until one fails
    QList<column> m_columns;          ///< one for each value of a row
    bool m_is_named = true;           ///< whether placeholders have names, until a row fails
    bool m_takes_utf8 = false;        ///< whether values may be bound as the bytes of UTF-8
    bool m_is_prepared = false;
    bool m_is_fresh = true; ///< whether no row went in since the statement was prepared
    lock_wait m_lock_wait;
};

#endif
