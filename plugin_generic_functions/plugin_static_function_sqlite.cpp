#include "plugin_static_function.h"

#include "named_connection.h"
#include "sqlite_operation.h"

#include <QDateTime>
#include <QLatin1StringView>
#include <QRandomGenerator>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

using namespace Qt::StringLiterals;

namespace {

// One statement, and what its failure lines contain.
struct db_command
{
    QString text;
    QStringList bind_values;
    QString caller;
    QString function_info;     // signature of the helper that runs it
    lock_wait *wait = nullptr; // of the operation that the statement is a part of
};

enum class outcome
{
    done,
    failed,
    cancelled
};

struct query_result
{
    outcome how;
    QString error;
    QStringList rows;
};

// The texts that open the failure lines of a helper; the helpers differ in their blanks.
struct failure_texts
{
    QLatin1StringView open_failed;
    QLatin1StringView open_error;
    QLatin1StringView query_failed;
    QLatin1StringView query_caller;
    QLatin1StringView command;
    QLatin1StringView query_error;
};

constexpr auto open_caller = "CALLER FUNCTION -  "_L1;

constexpr failure_texts execute_texts = {
    " Destination Db opening --------FAILED------ "_L1,
    " error -  "_L1,
    " query  --------FAILED------ db file - "_L1,
    "CALLER FUNCTION -  "_L1,
    " command -  "_L1,
    " error -  "_L1,
};
constexpr failure_texts execute_bound_texts = {
    execute_texts.open_failed, execute_texts.open_error, execute_texts.query_failed,
    " CALLER FUNCTION -  "_L1, execute_texts.command,    execute_texts.query_error,
};
constexpr failure_texts execute_by_reference_texts = {
    {},
    {},
    execute_texts.query_failed,
    " CALLER FUNCTION -  -  "_L1,
    execute_texts.command,
    execute_texts.query_error,
};
constexpr failure_texts list_by_reference_texts = {
    {},
    {},
    " query  --------FAILED------db file - "_L1,
    " CALLER FUNCTION -  -  "_L1,
    " command -  "_L1,
    " error -  "_L1,
};
constexpr failure_texts list_texts = {
    "Destination Db opening --------FAILED------ "_L1,
    "error -  "_L1,
    "query  --------FAILED------db file - "_L1,
    "CALLER FUNCTION -  "_L1,
    "command -  "_L1,
    "error -  "_L1,
};

void log_open_failure(const failure_texts &texts, const QString &db_path, const QString &caller,
                      const QString &error, const QString &function_info)
{
    plugin_static_function::app_debug(texts.open_failed + db_path, function_info);
    plugin_static_function::app_debug(open_caller + caller, function_info);
    plugin_static_function::app_debug(texts.open_error + error, function_info);
}

void log_query_failure(const failure_texts &texts, const db_command &command,
                       const QString &db_file, const QString &error)
{
    const QString &function_info = command.function_info;
    plugin_static_function::app_debug(texts.query_failed + db_file, function_info);
    plugin_static_function::app_debug(texts.query_caller + command.caller, function_info);
    plugin_static_function::app_debug(texts.command + command.text, function_info);
    plugin_static_function::app_debug(texts.query_error + error, function_info);
}

void note_failure(const db_command &command, const QSqlQuery &query, const QSqlDatabase &database)
{
    if (command.wait != nullptr)
        command.wait->note(query.lastError(), database);
}

outcome run(QSqlQuery &query, const db_command &command, const QSqlDatabase &database)
{
    // Executing a statement that cannot be prepared would replace this error by another one.
    if (!query.prepare(command.text))
        note_failure(command, query, database);
    for (const QString &value : command.bind_values) {
        if (plugin_static_function::bool_cancel_extraction)
            return outcome::cancelled;
        query.addBindValue(value, QSql::In);
    }
    if (query.exec())
        return outcome::done;
    note_failure(command, query, database);
    return outcome::failed;
}

query_result execute(const db_command &command, const QSqlDatabase &database)
{
    QSqlQuery query(database);
    const outcome how = run(query, command, database);
    return {how, query.lastError().text(), {}};
}

query_result gather_column(const db_command &command, int column_index,
                           const QSqlDatabase &database)
{
    QSqlQuery query(database);
    query.setForwardOnly(true);
    const outcome how = run(query, command, database);
    query_result result = {how, query.lastError().text(), {}};
    while (result.how == outcome::done && query.next()) {
        if (plugin_static_function::bool_cancel_extraction)
            result.how = outcome::cancelled;
        else
            result.rows.append(query.value(column_index).toString().trimmed());
    }
    return result;
}

// A connection under a name that nobody else uses, closed and removed at the end of its scope.
class private_connection
{
public:
    explicit private_connection(const QString &db_path)
        : name(QString::number(QRandomGenerator::global()->generate()) +
               QString::number(QDateTime::currentMSecsSinceEpoch())),
          connection(open_named_connection(name, db_path))
    {
    }
    ~private_connection()
    {
        connection.close();
        connection = QSqlDatabase();
        QSqlDatabase::removeDatabase(name);
    }
    Q_DISABLE_COPY_MOVE(private_connection)

    const QSqlDatabase &database() const { return connection; }

private:
    QString name;
    QSqlDatabase connection;
};

bool execute_by_dbpath(const db_command &command, const QString &db_path,
                       const failure_texts &texts)
{
    QSqlDatabase database = open_named_connection(
        command.function_info + command.caller, db_path,
        command.wait != nullptr ? command.wait->connect_options() : QString());
    if (!database.isOpen()) {
        log_open_failure(texts, db_path, command.caller, database.lastError().text(),
                         command.function_info);
        return false;
    }
    const query_result result = execute(command, database);
    if (result.how == outcome::cancelled)
        return false;
    if (result.how == outcome::failed)
        log_query_failure(texts, command, db_path, result.error);
    else if (command.wait != nullptr)
        command.wait->restore(database);
    database.close();
    return result.how == outcome::done;
}

bool execute_by_dbreference(const db_command &command, const QSqlDatabase &database)
{
    const query_result result = execute(command, database);
    if (result.how == outcome::failed)
        log_query_failure(execute_by_reference_texts, command, database.databaseName(),
                          result.error);
    return result.how == outcome::done;
}

query_result gather_and_log_failure(const db_command &command, int column_index,
                                    const QSqlDatabase &database, const failure_texts &texts)
{
    query_result result = gather_column(command, column_index, database);
    if (result.how == outcome::failed)
        log_query_failure(texts, command, database.databaseName(), result.error);
    return result;
}

QStringList rows_with_end_line(const query_result &result, const QString &end_text,
                               const QString &function_info)
{
    if (result.how == outcome::done)
        plugin_static_function::app_debug(end_text, function_info);
    return result.rows;
}

QStringList stringlist_by_dbreference(const db_command &command, int column_index,
                                      const QSqlDatabase &database)
{
    plugin_static_function::app_debug(u" Start "_s, command.function_info);
    return rows_with_end_line(
        gather_and_log_failure(command, column_index, database, list_by_reference_texts),
        u" end "_s, command.function_info);
}

// The private connection is closed and gone when this returns.
query_result gather_by_dbpath(const db_command &command, int column_index, const QString &db_path)
{
    const private_connection connection(db_path);
    const QSqlDatabase &database = connection.database();
    if (database.isOpen())
        return gather_and_log_failure(command, column_index, database, list_texts);
    log_open_failure(list_texts, db_path, command.caller, database.lastError().text(),
                     command.function_info);
    return {outcome::failed, {}, {}};
}

QStringList stringlist_by_dbpath(const db_command &command, int column_index,
                                 const QString &db_path, const QString &end_text)
{
    plugin_static_function::app_debug(u" Start "_s, command.function_info);
    return rows_with_end_line(gather_by_dbpath(command, column_index, db_path), end_text,
                              command.function_info);
}

constexpr auto execute_by_dbpath_info =
    "static bool plugin_static_function::execute_db_command_by_dbpath(QString, QString, QString)"_L1;
constexpr auto execute_by_dbreference_info =
    "static bool plugin_static_function::execute_db_command_by_dbreference(QString, QSqlDatabase&, QString)"_L1;

} // namespace

bool execute_in_operation_by_dbpath(const QString &command, const QString &db_path,
                                    const QString &caller, lock_wait &wait)
{
    return execute_by_dbpath({command, {}, caller, execute_by_dbpath_info, &wait}, db_path,
                             execute_texts);
}

bool execute_in_operation_by_dbreference(const QString &command, const QSqlDatabase &database,
                                         const QString &caller, lock_wait &wait)
{
    return execute_by_dbreference({command, {}, caller, execute_by_dbreference_info, &wait},
                                  database);
}

bool plugin_static_function::execute_db_command_by_dbpath(const QString &command,
                                                          const QString &db_path,
                                                          const QString &caller)
{
    return execute_by_dbpath({command, {}, caller, execute_by_dbpath_info}, db_path, execute_texts);
}

bool plugin_static_function::execute_db_command_with_addbindvalue_by_dbpath(
    const QString &command, const QStringList &bind_values, const QString &db_path,
    const QString &caller)
{
    const QString function_info =
        u"static bool plugin_static_function::execute_db_command_with_addbindvalue_by_dbpath(QString, QStringList, QString, QString)"_s;
    return execute_by_dbpath({command, bind_values, caller, function_info}, db_path,
                             execute_bound_texts);
}

bool plugin_static_function::execute_db_command_by_dbreference(const QString &command,
                                                               QSqlDatabase &database,
                                                               const QString &caller)
{
    return execute_by_dbreference({command, {}, caller, execute_by_dbreference_info}, database);
}

bool plugin_static_function::execute_db_command_with_addbindvalue_by_dbreference(
    const QString &command, const QStringList &bind_values, QSqlDatabase &database,
    const QString &caller)
{
    const QString function_info =
        u"static bool plugin_static_function::execute_db_command_with_addbindvalue_by_dbreference(QString, QStringList, QSqlDatabase&, QString)"_s;
    return execute_by_dbreference({command, bind_values, caller, function_info}, database);
}

QStringList plugin_static_function::get_stringlist_from_db_by_dbreference(const QString &command,
                                                                          int column_index,
                                                                          QSqlDatabase &database,
                                                                          const QString &caller)
{
    const QString function_info =
        u"static QStringList plugin_static_function::get_stringlist_from_db_by_dbreference(QString, int, QSqlDatabase&, QString)"_s;
    return stringlist_by_dbreference({command, {}, caller, function_info}, column_index, database);
}

QStringList plugin_static_function::get_stringlist_from_db_with_addbindvalues_by_dbreference(
    const QString &command, const QStringList &bind_values, int column_index,
    QSqlDatabase &database, const QString &caller)
{
    const QString function_info =
        u"static QStringList plugin_static_function::get_stringlist_from_db_with_addbindvalues_by_dbreference(QString, QStringList, int, QSqlDatabase&, QString)"_s;
    return stringlist_by_dbreference({command, bind_values, caller, function_info}, column_index,
                                     database);
}

QStringList plugin_static_function::get_stringlist_from_db_by_dbpath(const QString &command,
                                                                     int column_index,
                                                                     const QString &db_path,
                                                                     const QString &caller)
{
    const QString function_info =
        u"static QStringList plugin_static_function::get_stringlist_from_db_by_dbpath(QString, int, QString, QString)"_s;
    return stringlist_by_dbpath({command, {}, caller, function_info}, column_index, db_path,
                                u" end "_s);
}

QStringList plugin_static_function::get_stringlist_from_db_with_addbindvalues_by_dbpath(
    const QString &command, const QStringList &bind_values, int column_index,
    const QString &db_path, const QString &caller)
{
    const QString function_info =
        u"static QStringList plugin_static_function::get_stringlist_from_db_with_addbindvalues_by_dbpath(QString, QStringList, int, QString, QString)"_s;
    return stringlist_by_dbpath({command, bind_values, caller, function_info}, column_index,
                                db_path, u" End "_s);
}

bool plugin_static_function::check_value_existence_in_db_by_dbreference(const QString &command,
                                                                        int column_index,
                                                                        const QString &value,
                                                                        QSqlDatabase database)
{
    const QString function_info =
        u"static bool plugin_static_function::check_value_existence_in_db_by_dbreference(QString, int, QString, QSqlDatabase)"_s;
    const query_result result = gather_column({command, {}, {}, {}}, column_index, database);
    if (result.how == outcome::failed) {
        // These texts are fixed, although the tag names another member and the first line names the
        // connection instead of its file.
        const QString tag = u"[check_value_existence_in_db_by_dbpath]"_s;
        app_debug(tag + " query --------FAILED------"_L1 + database.connectionName(),
                  function_info);
        app_debug(tag + "command"_L1 + command, function_info);
        app_debug(tag + " error"_L1 + result.error, function_info);
    }
    return result.how == outcome::done && result.rows.contains(value.trimmed());
}

QStringList plugin_static_function::get_total_tables_list_by_dbpath(const QString &db_path,
                                                                    const QString &caller)
{
    const QString function_info =
        u"static QStringList plugin_static_function::get_total_tables_list_by_dbpath(QString, QString)"_s;
    QSqlDatabase database = open_named_connection(function_info + caller, db_path);
    if (!database.isOpen()) {
        log_open_failure(execute_texts, db_path, caller, database.lastError().text(),
                         function_info);
        return {};
    }
    QStringList tables = database.tables(QSql::Tables);
    database.close();
    // The driver lists SQLite's own tables too, such as sqlite_sequence.
    tables.removeIf([](const QString &table) { return table.startsWith("sqlite_"_L1); });
    return tables;
}

QStringList
plugin_static_function::get_unmatched_varible_list_of_parentlist(const QStringList &parent_list,
                                                                 const QStringList &other_list)
{
    const QSet<QString> others(other_list.begin(), other_list.end());
    QStringList unmatched;
    for (const QString &entry : parent_list) {
        if (bool_cancel_extraction)
            return unmatched;
        if (!others.contains(entry))
            unmatched.append(entry);
    }
    return unmatched;
}
