#include "row_counter.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <numeric>

using namespace Qt::StringLiterals;

namespace {

const auto connection_name = u"artifact_host row counts"_s;

row_counts count_in(const QSqlDatabase &database, const QStringList &tables)
{
    row_counts counts;
    for (const QString &table : tables) {
        QSqlQuery query(database);
        if (query.exec(u"SELECT COUNT(*) FROM \"%1\""_s.arg(table)) && query.next())
            counts.tables.append({table, query.value(0).toLongLong()});
        else
            counts.failure = query.lastError().databaseText();
    }
    return counts;
}

/// A connection to a database file that is open for reading only while this object lives.
class reading_connection
{
public:
    explicit reading_connection(const QString &database_file)
        : m_database(QSqlDatabase::addDatabase(u"QSQLITE"_s, connection_name))
    {
        m_database.setConnectOptions(u"QSQLITE_OPEN_READONLY"_s);
        m_database.setDatabaseName(database_file);
        m_database.open();
    }
    ~reading_connection()
    {
        m_database = QSqlDatabase();
        QSqlDatabase::removeDatabase(connection_name);
    }
    Q_DISABLE_COPY_MOVE(reading_connection)

    QSqlDatabase &database() { return m_database; }

private:
    QSqlDatabase m_database;
};

} // namespace

qint64 row_counts::total() const
{
    return std::accumulate(tables.begin(), tables.end(), qint64(0),
                           [](qint64 sum, const table_rows &table) { return sum + table.rows; });
}

row_counts count_rows(const QString &database_file, const QStringList &tables)
{
    reading_connection connection(database_file);
    if (!connection.database().isOpen())
        return {{}, connection.database().lastError().databaseText()};
    return count_in(connection.database(), tables);
}
