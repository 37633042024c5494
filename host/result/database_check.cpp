#include "database_check.h"

#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include "console.h"

using namespace Qt::StringLiterals;

namespace {

const auto connection_name = u"artifact_host database check"_s;

/// The kind of an SQLite error, which the lowest byte of its code tells.
bool is_lock(const QSqlError &error)
{
    constexpr int kind_mask = 0xff;
    constexpr int busy = 5;
    return (error.nativeErrorCode().toInt() & kind_mask) == busy;
}

/// The error of taking every lock that a run needs; of no type when they can be had.
QSqlError try_locks(const QSqlDatabase &database, int wait_seconds)
{
    QSqlQuery query(database);
    query.exec(u"PRAGMA busy_timeout = %1"_s.arg(wait_seconds * 1000));
    if (!query.exec(u"BEGIN EXCLUSIVE"_s) || !query.exec(u"SELECT COUNT(*) FROM sqlite_master"_s))
        return query.lastError();
    query.finish();
    query.exec(u"ROLLBACK"_s);
    return {};
}

QSqlError try_database(const QString &file, int wait_seconds)
{
    QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, connection_name);
    database.setDatabaseName(file);
    if (!database.open())
        return database.lastError();
    QSqlError error = try_locks(database, 0);
    if (is_lock(error) && wait_seconds > 0) {
        print_notice(
            u"waiting up to %1 s for the result database, which is locked"_s.arg(wait_seconds));
        error = try_locks(database, wait_seconds);
    }
    return error;
}

} // namespace

database_state check_database(const QString &database_file, int wait_seconds)
{
    if (!QFileInfo::exists(database_file))
        return {};
    const QSqlError error = try_database(database_file, wait_seconds);
    QSqlDatabase::removeDatabase(connection_name);
    return {is_lock(error), error.isValid() ? error.databaseText() : QString()};
}

std::optional<refusal> refusal_of(const database_state &state, const QString &database_file,
                                  bool is_replaced)
{
    if (state.is_locked)
        return refusal{exit_result, u"the result database %1 is locked by another program; --wait "
                                    "SECONDS waits for it"_s.arg(database_file)};
    if (state.failure.isEmpty() || is_replaced)
        return std::nullopt;
    return refusal{exit_result,
                   u"the result database %1 cannot be used: %2; --replace makes a new one"_s.arg(
                       database_file, state.failure)};
}
