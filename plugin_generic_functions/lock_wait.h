#ifndef LOCK_WAIT_H
#define LOCK_WAIT_H

#include <QSqlDatabase>
#include <QSqlError>
#include <QString>

/// How long the statements of one operation wait for a lock that somebody else holds on the
/// database. Each statement waits as long as Qt tells SQLite, five seconds, so an operation of many
/// statements could take hours. Once a statement has waited in vain, the later ones fail at once
/// until the lock is known to be gone.
class lock_wait
{
public:
    /// Takes the error of a statement that failed on `database`. If the statement waited for a lock
    /// in vain, the connection waits no more.
    void note(const QSqlError &error, const QSqlDatabase &database);
    /// Lets the connection wait again, because the lock is gone or another lock is concerned.
    void restore(const QSqlDatabase &database);
    /// Qt's connect options for the operation's next connection.
    QString connect_options() const;

private:
    bool m_is_used_up = false;
};

#endif
