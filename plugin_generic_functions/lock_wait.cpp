#include "lock_wait.h"

#include <QSqlQuery>

using namespace Qt::StringLiterals;

namespace {

constexpr int default_wait_ms = 5000; // what Qt sets for every connection

// SQLite gives the kind of an error in the lowest byte of its code and the case in the others.
bool is_of_a_lock(const QSqlError &error)
{
    constexpr int kind_mask = 0xff;
    constexpr int busy = 5;
    return (error.nativeErrorCode().toInt() & kind_mask) == busy;
}

void set_wait(const QSqlDatabase &database, int milliseconds)
{
    QSqlQuery(database).exec(u"PRAGMA busy_timeout = "_s + QString::number(milliseconds));
}

} // namespace

void lock_wait::note(const QSqlError &error, const QSqlDatabase &database)
{
    if (m_is_used_up || !is_of_a_lock(error))
        return;
    m_is_used_up = true;
    set_wait(database, 0);
}

void lock_wait::restore(const QSqlDatabase &database)
{
    if (!m_is_used_up)
        return;
    m_is_used_up = false;
    set_wait(database, default_wait_ms);
}

QString lock_wait::connect_options() const
{
    return m_is_used_up ? u"QSQLITE_BUSY_TIMEOUT=0"_s : QString();
}
