#ifndef SQLITE_OPERATION_H
#define SQLITE_OPERATION_H

#include "lock_wait.h"

#include <QString>

// The commands of plugin_static_function, for an operation of several statements that together wait
// once for a lock.

/// As execute_db_command_by_dbpath(). A statement that succeeds proves that the lock is gone.
bool execute_in_operation_by_dbpath(const QString &command, const QString &db_path,
                                    const QString &caller, lock_wait &wait);
/// As execute_db_command_by_dbreference().
bool execute_in_operation_by_dbreference(const QString &command, const QSqlDatabase &database,
                                         const QString &caller, lock_wait &wait);

#endif
