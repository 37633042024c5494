#ifndef RESULT_FILE_H
#define RESULT_FILE_H

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <functional>

namespace test_support {

// What tests do to a result database behind the plug-in's back. What cannot be done throws
// std::runtime_error. Nothing here waits for a lock.

/// A connection of its own to an SQLite file, which is made when absent. Where it cannot be opened,
/// the database gives the error.
class sqlite_connection
{
public:
    explicit sqlite_connection(const QString &path);
    ~sqlite_connection();
    sqlite_connection(const sqlite_connection &) = delete;
    sqlite_connection &operator=(const sqlite_connection &) = delete;

    QSqlDatabase database;
};

/// Runs one statement.
void execute(const QSqlDatabase &database, const QString &statement);
void execute(const QString &path, const QString &statement);

/// How long the statements of a connection wait for a lock, in milliseconds.
int busy_timeout(const QSqlDatabase &database);

/// Marks the file as one of a newer format, which keeps even a superuser from writing to it.
void make_read_only(const QString &path);

/// What became of a row; both texts are empty when it went in.
struct insert_outcome
{
    QString error;
    QString statement; ///< as the query says that it was executed
};

/// Called with the connection and the number of the row, from 0, before the row is inserted.
using row_action = std::function<void(const QSqlDatabase &, qsizetype)>;

/// Inserts rows in the plainest way: in one transaction, the statement prepared, bound and executed
/// for each row anew.
QList<insert_outcome> insert_row_by_row(const QString &path, const QString &statement,
                                        const QList<QStringList> &rows,
                                        const row_action &before_row = {});

} // namespace test_support

#endif
