#include "row_counter.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <algorithm>
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

/// The number in "Source7"; 0 for other texts.
int source_number(const QString &name)
{
    const auto prefix = "Source"_L1;
    return name.startsWith(prefix) ? name.mid(prefix.size()).toInt() : 0;
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

std::optional<qint64> row_counts::of(const QString &table) const
{
    for (const table_rows &counted : tables) {
        if (counted.table == table)
            return counted.rows;
    }
    return std::nullopt;
}

row_counts rows_since(const row_counts &before, const row_counts &now)
{
    row_counts since = now;
    for (table_rows &table : since.tables)
        table.rows = std::max<qint64>(0, table.rows - before.of(table.table).value_or(0));
    return since;
}

int largest_source_number(const QString &database_file, const QStringList &tables)
{
    reading_connection connection(database_file);
    int largest = 0;
    for (const QString &table : tables) {
        QSqlQuery query(connection.database());
        query.exec(u"SELECT DISTINCT source_count_name FROM \"%1\""_s.arg(table));
        while (query.next())
            largest = std::max(largest, source_number(query.value(0).toString()));
    }
    return largest;
}

QStringList tables_in(const QString &database_file)
{
    reading_connection connection(database_file);
    QStringList tables;
    QSqlQuery query(connection.database());
    query.exec(u"SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT GLOB 'sqlite_*' "
               "ORDER BY name"_s);
    while (query.next())
        tables.append(query.value(0).toString());
    return tables;
}

row_counts count_rows(const QString &database_file, const QStringList &tables)
{
    reading_connection connection(database_file);
    if (!connection.database().isOpen())
        return {{}, connection.database().lastError().databaseText()};
    return count_in(connection.database(), tables);
}
