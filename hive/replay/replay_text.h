#ifndef REPLAY_TEXT_H
#define REPLAY_TEXT_H

#include "key_changes.h"
#include "log_replay.h"
#include "log_report.h"

#include <QString>

/// What became of a log, in words that follow its name: "applied: entries 566 to 588 ...".
QString text_about(const log_report &log);

/// How many keys there are and in how many the hive differs: "keys: 5 before, 6 after; ...".
QString text_about(const key_change_counts &keys);

/// How the hive was left, in words that follow its name: "not closed cleanly (...)".
QString text_about_condition(const replay_report &report);

#endif
