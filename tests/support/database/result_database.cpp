#include "result_database.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QUuid>
#include <QVariant>
#include <stdexcept>

namespace test_support {

using namespace Qt::StringLiterals;

const QString null_text = u"\u2400"_s;

namespace {

[[noreturn]] void fail(const QString &action, const QSqlError &error)
{
    throw std::runtime_error(u"%1: %2"_s.arg(action, error.text()).toStdString());
}

QStringList texts_of_row(const QSqlQuery &query, int column_count)
{
    QStringList texts;
    for (int column = 0; column < column_count; ++column)
        texts.append(query.isNull(column) ? null_text : query.value(column).toString());
    return texts;
}

QString quoted(QString name)
{
    return u'\'' + name.replace(u'\'', u"''"_s) + u'\'';
}

QStringList first_column(const QList<QStringList> &rows)
{
    QStringList texts;
    for (const QStringList &row : rows)
        texts.append(row.first());
    return texts;
}

} // namespace

result_database::connection_name::connection_name()
    : text(u"test_support::result_database "_s + QUuid::createUuid().toString())
{
}

result_database::connection_name::~connection_name()
{
    QSqlDatabase::removeDatabase(text);
}

result_database::result_database(const QString &path)
{
    QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connection.text);
    database.setConnectOptions(u"QSQLITE_OPEN_READONLY"_s);
    database.setDatabaseName(path);
    if (!database.open())
        fail(u"cannot open "_s + path, database.lastError());
}

QList<QStringList> result_database::query(const QString &statement) const
{
    QSqlQuery query(QSqlDatabase::database(m_connection.text));
    query.setForwardOnly(true);
    if (!query.exec(statement))
        fail(statement, query.lastError());
    QList<QStringList> rows;
    while (query.next())
        rows.append(texts_of_row(query, query.record().count()));
    return rows;
}

QList<QStringList> result_database::rows(const QString &table, const QStringList &columns) const
{
    return query(u"select %1 from %2 order by rowid"_s.arg(columns.join(u','), quoted(table)));
}

QStringList result_database::column(const QString &table, const QString &column) const
{
    return first_column(rows(table, {column}));
}

qint64 result_database::row_count(const QString &table) const
{
    return query(u"select count(*) from "_s + quoted(table)).first().first().toLongLong();
}

QStringList result_database::tables() const
{
    return first_column(query(u"select name from sqlite_master where type = 'table' and "
                              "name not like 'sqlite~_%' escape '~' order by rowid"_s));
}

QStringList result_database::columns(const QString &table) const
{
    return first_column(query(u"select name from pragma_table_info("_s + quoted(table) + u')'));
}

QString result_database::create_statement(const QString &table) const
{
    const QStringList statements = first_column(
        query(u"select sql from sqlite_master where type = 'table' and name = "_s + quoted(table)));
    if (statements.isEmpty())
        throw std::runtime_error(u"no table %1"_s.arg(table).toStdString());
    return statements.first();
}

QString result_database::integrity_check() const
{
    return first_column(query(u"pragma integrity_check"_s)).join(u'\n');
}

} // namespace test_support
