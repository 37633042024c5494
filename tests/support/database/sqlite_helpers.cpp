#include "sqlite_helpers.h"

#include "plugin_static_function.h"
#include "result_file.h"

#include <QSqlError>
#include <QSqlQuery>

namespace test_support {

using namespace Qt::StringLiterals;

using library = plugin_static_function;

const QString helpers_caller = u"void caller::of_the_helper()"_s;
const QString good_command = u"SELECT name FROM fruit ORDER BY rowid"_s;
const QString bad_command = u"SELECT name FROM vegetables"_s;

QStringList as_list(bool value)
{
    return {value ? u"true"_s : u"false"_s};
}

const QStringList spaced_open_failure = {u" Destination Db opening --------FAILED------ "_s,
                                         u"CALLER FUNCTION -  "_s, u" error -  "_s};
namespace {

const QStringList plain_open_failure = {u"Destination Db opening --------FAILED------ "_s,
                                        u"CALLER FUNCTION -  "_s, u"error -  "_s};
const QStringList list_by_path_failure = {u"query  --------FAILED------db file - "_s,
                                          u"CALLER FUNCTION -  "_s, u"command -  "_s,
                                          u"error -  "_s};
const QStringList list_by_reference_failure = {u" query  --------FAILED------db file - "_s,
                                               u" CALLER FUNCTION -  -  "_s, u" command -  "_s,
                                               u" error -  "_s};
const QStringList execute_by_reference_failure = {u" query  --------FAILED------ db file - "_s,
                                                  u" CALLER FUNCTION -  -  "_s, u" command -  "_s,
                                                  u" error -  "_s};

const QList<sqlite_helper> execute_helpers{
    {"execute_db_command_by_dbpath",
     helper_reach::by_path,
     false,
     false,
     [](helper_request &r) {
         return as_list(library::execute_db_command_by_dbpath(r.command, r.path, helpers_caller));
     },
     u"static bool plugin_static_function::execute_db_command_by_dbpath(QString, QString, QString)"_s,
     spaced_open_failure,
     {u" query  --------FAILED------ db file - "_s, u"CALLER FUNCTION -  "_s, u" command -  "_s,
      u" error -  "_s},
     {}},
    {"execute_db_command_with_addbindvalue_by_dbpath",
     helper_reach::by_path,
     true,
     false,
     [](helper_request &r) {
         return as_list(library::execute_db_command_with_addbindvalue_by_dbpath(
             r.command, r.bind_values, r.path, helpers_caller));
     },
     u"static bool plugin_static_function::execute_db_command_with_addbindvalue_by_dbpath(QString, QStringList, QString, QString)"_s,
     spaced_open_failure,
     {u" query  --------FAILED------ db file - "_s, u" CALLER FUNCTION -  "_s, u" command -  "_s,
      u" error -  "_s},
     {}},
    {"execute_db_command_by_dbreference",
     helper_reach::by_reference,
     false,
     false,
     [](helper_request &r) {
         return as_list(
             library::execute_db_command_by_dbreference(r.command, r.database, helpers_caller));
     },
     {},
     {},
     execute_by_reference_failure,
     {}},
    {"execute_db_command_with_addbindvalue_by_dbreference",
     helper_reach::by_reference,
     true,
     false,
     [](helper_request &r) {
         return as_list(library::execute_db_command_with_addbindvalue_by_dbreference(
             r.command, r.bind_values, r.database, helpers_caller));
     },
     {},
     {},
     execute_by_reference_failure,
     {}},
};

const QList<sqlite_helper> list_helpers{
    {"get_stringlist_from_db_by_dbreference",
     helper_reach::by_reference,
     false,
     true,
     [](helper_request &r) {
         return library::get_stringlist_from_db_by_dbreference(r.command, 0, r.database,
                                                               helpers_caller);
     },
     {},
     {},
     list_by_reference_failure,
     u" end "_s},
    {"get_stringlist_from_db_with_addbindvalues_by_dbreference",
     helper_reach::by_reference,
     true,
     true,
     [](helper_request &r) {
         return library::get_stringlist_from_db_with_addbindvalues_by_dbreference(
             r.command, r.bind_values, 0, r.database, helpers_caller);
     },
     {},
     {},
     list_by_reference_failure,
     u" end "_s},
    {"get_stringlist_from_db_by_dbpath",
     helper_reach::by_path,
     false,
     true,
     [](helper_request &r) {
         return library::get_stringlist_from_db_by_dbpath(r.command, 0, r.path, helpers_caller);
     },
     {},
     plain_open_failure,
     list_by_path_failure,
     u" end "_s},
    {"get_stringlist_from_db_with_addbindvalues_by_dbpath",
     helper_reach::by_path,
     true,
     true,
     [](helper_request &r) {
         return library::get_stringlist_from_db_with_addbindvalues_by_dbpath(
             r.command, r.bind_values, 0, r.path, helpers_caller);
     },
     {},
     plain_open_failure,
     list_by_path_failure,
     u" End "_s},
};

} // namespace

const QList<sqlite_helper> &sqlite_helpers()
{
    static const QList<sqlite_helper> all = execute_helpers + list_helpers;
    return all;
}

fruit_database::fruit_database()
{
    database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"fruit"_s);
    database.setDatabaseName(path());
    database.open();
    run(u"CREATE TABLE fruit (name TEXT, weight INTEGER)"_s);
    run(u"INSERT INTO fruit VALUES (' apple ', 1), ('pear', NULL), ('Plum', 3)"_s);
}

fruit_database::~fruit_database()
{
    database = QSqlDatabase();
    QSqlDatabase::removeDatabase(u"fruit"_s);
}

QString fruit_database::path() const
{
    return m_folder.filePath(u"fruit.sqlite"_s);
}

QString fruit_database::absent_path() const
{
    return m_folder.filePath(u"absent/fruit.sqlite"_s);
}

helper_request fruit_database::make(const QString &command, const QStringList &values) const
{
    return {command, values, path(), database};
}

void fruit_database::run(const QString &command) const
{
    execute(database, command);
}

QString fruit_database::execution_error(const QString &command, const QStringList &values) const
{
    QSqlQuery query(database);
    query.prepare(command);
    for (const QString &value : values)
        query.addBindValue(value);
    query.exec();
    return query.lastError().text();
}

QString fruit_database::open_error() const
{
    return sqlite_connection(absent_path()).database.lastError().text();
}

} // namespace test_support
