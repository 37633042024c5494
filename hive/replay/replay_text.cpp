#include "replay_text.h"

using namespace Qt::StringLiterals;

namespace {

/// What the reading of a log ended with, in words that follow "the next entry".
QString text_of(log_flaw flaw)
{
    switch (flaw) {
    case log_flaw::none:
    case log_flaw::no_entry:
        return u"is none"_s;
    case log_flaw::earlier_round:
    case log_flaw::sequence:
        return u"is not the next that was written"_s;
    case log_flaw::size:
        return u"reaches beyond the log"_s;
    case log_flaw::bins_size:
        return u"tells an impossible size of the bins"_s;
    case log_flaw::pages:
        return u"has pages beyond the bins or the log"_s;
    case log_flaw::hash:
        return u"has a wrong hash, as one that was not written to its end"_s;
    case log_flaw::hole:
        return u"lets the bins grow by more than its pages fill"_s;
    }
    return {};
}

/// What stands behind the entries that were applied.
QString text_of_end(const log_report &log)
{
    switch (log.flaw) {
    case log_flaw::none:
    case log_flaw::no_entry:
        return {};
    case log_flaw::earlier_round:
        return u"; entries of an earlier round follow"_s;
    case log_flaw::sequence:
        return u"; not applied from entry %1 on, before which entries are missing"_s.arg(
            log.next_sequence);
    default:
        return u"; not applied from entry %1 on, which %2"_s.arg(
            QString::number(log.last_sequence + 1), text_of(log.flaw));
    }
}

QString text_of_entries(const log_report &log)
{
    return log.first_sequence == log.last_sequence
               ? u"entry %1"_s.arg(log.first_sequence)
               : u"entries %1 to %2"_s.arg(log.first_sequence).arg(log.last_sequence);
}

QString text_of_applied(const log_report &log)
{
    const QString pages = u"%1 pages, %2 bytes"_s.arg(log.pages).arg(log.bytes);
    if (!log.is_new_format)
        return u"applied: %1 (old format)"_s.arg(pages);
    return u"applied: %1, %2%3"_s.arg(text_of_entries(log), pages, text_of_end(log));
}

QString begin_of(const log_report &log)
{
    return log.is_new_format ? u", it begins with entry %1"_s.arg(log.first_sequence) : QString();
}

} // namespace

QString text_about(const log_report &log)
{
    switch (log.state) {
    case log_state::applied:
        return text_of_applied(log);
    case log_state::not_looked_at:
        return u"not looked at"_s;
    case log_state::unreadable:
        return u"cannot be read"_s;
    case log_state::empty:
        return u"empty"_s;
    case log_state::no_log:
        return u"no transaction log"_s;
    case log_state::wrong_checksum:
        return u"its header is damaged (wrong checksum)"_s;
    case log_state::unfinished:
        return u"not written to its end"_s;
    case log_state::older:
        return u"older than the hive%1"_s.arg(begin_of(log));
    case log_state::of_another_hive:
        return u"not written with this hive: the times differ"_s;
    case log_state::no_sound_entry:
        return log.flaw == log_flaw::no_entry
                   ? u"without entries"_s
                   : u"no sound entry: entry %1 %2"_s.arg(QString::number(log.first_sequence),
                                                          text_of(log.flaw));
    case log_state::unsound_pages:
        return u"no sound pages: it %1"_s.arg(log.flaw == log_flaw::no_entry ? u"has no bitmap"_s
                                                                             : text_of(log.flaw));
    case log_state::not_adjoining:
        return u"does not continue what was applied%1"_s.arg(begin_of(log));
    case log_state::not_needed:
        return u"not needed: another log has the later changes"_s;
    }
    return {};
}

QString text_about(const key_change_counts &keys)
{
    return u"keys: %1 before, %2 after; %3 added, %4 changed, %5 removed"_s.arg(
        QString::number(keys.before), QString::number(keys.after), QString::number(keys.added),
        QString::number(keys.changed), QString::number(keys.removed));
}

QString text_about_condition(const replay_report &report)
{
    switch (report.condition) {
    case hive_condition::no_hive:
        return u"not a registry hive"_s;
    case hive_condition::clean:
        return u"closed cleanly"_s;
    case hive_condition::dirty:
        return u"not closed cleanly (sequence numbers %1 and %2)"_s.arg(report.primary_sequence)
            .arg(report.secondary_sequence);
    case hive_condition::damaged_header:
        return u"its header is damaged"_s;
    }
    return {};
}
