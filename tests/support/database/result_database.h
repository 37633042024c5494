#ifndef RESULT_DATABASE_H
#define RESULT_DATABASE_H

#include <QString>
#include <QStringList>

namespace test_support {

/// How a NULL differs from the empty text in result_database: U+2400, "symbol for null".
extern const QString null_text;

/// Reads an SQLite file, opened read-only on a connection of its own. Whatever cannot be read, an
/// absent file included, throws std::runtime_error.
class result_database
{
public:
    explicit result_database(const QString &path);

    /// The table's rows in the order of their row ids, each as the texts of the given columns or
    /// expressions.
    QList<QStringList> rows(const QString &table, const QStringList &columns) const;

    /// The texts of one column or expression, in the order of the row ids.
    QStringList column(const QString &table, const QString &column) const;

    qint64 row_count(const QString &table) const;

    /// The names of the tables in the order of their creation.
    QStringList tables() const;

    /// The names of the table's columns in their order.
    QStringList columns(const QString &table) const;

    /// The statement that created the table, as SQLite keeps it.
    QString create_statement(const QString &table) const;

    /// "ok", or what SQLite's integrity check found.
    QString integrity_check() const;

    /// The rows of any query.
    QList<QStringList> query(const QString &statement) const;

private:
    /// The name of a connection, which it removes from Qt's list at destruction.
    class connection_name
    {
    public:
        connection_name();
        ~connection_name();
        connection_name(const connection_name &) = delete;
        connection_name &operator=(const connection_name &) = delete;

        const QString text;
    };

    connection_name m_connection;
};

} // namespace test_support

#endif
