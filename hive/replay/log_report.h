#ifndef LOG_REPORT_H
#define LOG_REPORT_H

#include <QString>

/// What became of a transaction log.
enum class log_state
{
    applied,
    not_looked_at,   ///< the hive was closed cleanly
    unreadable,      ///< the file cannot be read, or is longer than any log
    empty,           ///< it has no bytes, or begins with zeros
    no_log,          ///< it does not begin like a log
    wrong_checksum,  ///< of its header
    unfinished,      ///< old format: it was being written
    older,           ///< it ends before the hive's state
    of_another_hive, ///< old format: it was not written with the hive
    no_sound_entry,  ///< new format: its first entry is not sound
    unsound_pages,   ///< old format: its pages do not fit what its header tells
    not_adjoining,   ///< new format: entries between it and the log before are missing
    not_needed       ///< another log was applied that has the same or more
};

/// Why the reading of a log's entries, or of an old log's pages, ended.
enum class log_flaw
{
    none,
    no_entry,      ///< the log ends, or something else follows
    earlier_round, ///< entries follow that were written before those of this round
    sequence,      ///< the next entry is not the next one that was written
    size,          ///< an entry's size is none, or reaches beyond the log
    bins_size,     ///< no bins can have such a size
    pages,         ///< pages reach beyond the bins, or beyond what the log has
    hash,
    hole ///< the bins would grow by more than the pages fill
};

/// What was found in one log, and what was taken from it.
struct log_report
{
    QString name;
    log_state state = log_state::not_looked_at;
    log_flaw flaw = log_flaw::none; ///< what ended the reading
    bool is_new_format = false;
    quint32 first_sequence = 0; ///< as its header tells
    quint32 last_sequence = 0;  ///< of the last entry applied
    quint32 next_sequence = 0;  ///< of an entry that ended the reading by its number
    qint64 entries = 0;         ///< applied; an old log that is applied counts as one
    qint64 pages = 0;           ///< applied
    qint64 bytes = 0;           ///< applied
};

/// Whether the log has, or may have, changes that were not applied although they are later than
/// those that were.
bool is_any_change_left(const log_report &log);

#endif
