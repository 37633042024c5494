#include "result_file.h"

#include "files.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>
#include <stdexcept>

namespace test_support {

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

// The version a writer of the file must know; readers have a field of their own.
constexpr qsizetype write_version_offset = 18;
constexpr char newer_version = 3;

insert_outcome insert_row(QSqlQuery &query, const QString &statement, const QStringList &values)
{
    query.prepare(statement);
    for (const QString &value : values)
        query.addBindValue(value);
    return query.exec() ? insert_outcome{}
                        : insert_outcome{query.lastError().text(), query.executedQuery()};
}

} // namespace

sqlite_connection::sqlite_connection(const QString &path)
    : database(QSqlDatabase::addDatabase(u"QSQLITE"_s, QUuid::createUuid().toString()))
{
    database.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=0"_s);
    database.setDatabaseName(path);
    database.open();
}

sqlite_connection::~sqlite_connection()
{
    const QString name = database.connectionName();
    database = {};
    QSqlDatabase::removeDatabase(name);
}

void execute(const QSqlDatabase &database, const QString &statement)
{
    QSqlQuery query(database);
    if (!query.exec(statement))
        throw std::runtime_error(
            u"%1: %2"_s.arg(statement, query.lastError().text()).toStdString());
}

void execute(const QString &path, const QString &statement)
{
    execute(sqlite_connection(path).database, statement);
}

int busy_timeout(const QSqlDatabase &database)
{
    QSqlQuery query(u"pragma busy_timeout"_s, database);
    return query.next() ? query.value(0).toInt() : -1;
}

void make_read_only(const QString &path)
{
    QByteArray content = read_file(path);
    content[write_version_offset] = newer_version;
    write_file(path, content);
}

QList<insert_outcome> insert_row_by_row(const QString &path, const QString &statement,
                                        const QList<QStringList> &rows,
                                        const row_action &before_row)
{
    sqlite_connection connection(path);
    connection.database.transaction();
    QList<insert_outcome> outcomes;
    {
        QSqlQuery query(connection.database);
        for (qsizetype row = 0; row < rows.size(); ++row) {
            if (before_row)
                before_row(connection.database, row);
            outcomes.append(insert_row(query, statement, rows[row]));
        }
    }
    connection.database.commit();
    return outcomes;
}

} // namespace test_support
