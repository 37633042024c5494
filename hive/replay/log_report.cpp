#include "log_report.h"

bool is_any_change_left(const log_report &log)
{
    const bool ends_as_logs_do = log.flaw == log_flaw::none || log.flaw == log_flaw::no_entry ||
                                 log.flaw == log_flaw::earlier_round;
    return !ends_as_logs_do || log.state == log_state::not_adjoining ||
           log.state == log_state::unreadable;
}
