#ifndef LOCK_WAIT_H
#define LOCK_WAIT_H

#include <QSqlDatabase>
#include <QSqlError>
#include <QString>

/// How long the statements of one operation wait for a lock that somebody else holds on the
/// database. SQLite waits as long as Qt tells it, five seconds, with each statement; a lock that
/// has outlasted that once would make an operation of many statements take hours, so that the later
/// ones fail at once until the lock is known to be gone.
class lock_wait
{
public:
    /// Takes the error of a statement that failed on `database`. When a lock outlasted the wait,
    /// the connection waits no more.
    void note(const QSqlError &error, const QSqlDatabase &database);
    /// The lock is gone, or another one is in question: the connection waits as long as at first.
    void restore(const QSqlDatabase &database);
    /// Qt's connect options for the operation's next connection.
    QString connect_options() const;

private:
    bool m_is_used_up = false;
};

#endif
