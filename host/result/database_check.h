#ifndef DATABASE_CHECK_H
#define DATABASE_CHECK_H

#include <QString>

#include <optional>

#include "exit_code.h"

/// Whether a result database that is there already can be written.
struct database_state
{
    bool is_locked = false;
    QString failure; ///< why it cannot be used; empty when it can, or when there is none
};

/// Takes all locks of the SQLite file that a run needs and gives them back; writes nothing. Waits
/// up to `wait_seconds` for somebody else's lock, and says so.
database_state check_database(const QString &database_file, int wait_seconds);

/// Why a run cannot write the database in that state; nothing when it can. A broken database is no
/// hindrance where it `is_replaced`.
std::optional<refusal> refusal_of(const database_state &state, const QString &database_file,
                                  bool is_replaced);

#endif
