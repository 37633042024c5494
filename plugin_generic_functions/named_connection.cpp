#include "named_connection.h"

using namespace Qt::StringLiterals;

QString heap_copy(QStringView text)
{
    return QString(text.data(), text.size());
}

QSqlDatabase open_named_connection(const QString &name, const QString &db_path,
                                   const QString &options)
{
    QSqlDatabase::removeDatabase(name);
    QSqlDatabase database = QSqlDatabase::addDatabase(heap_copy(u"QSQLITE"), heap_copy(name));
    database.setDatabaseName(heap_copy(db_path));
    database.setConnectOptions(heap_copy(options));
    database.open();
    return database;
}
