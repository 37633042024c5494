#ifndef REPLAY_CHECK_H
#define REPLAY_CHECK_H

#include "log_replay.h"

#include <QByteArray>
#include <QList>

namespace test_support {

/// Applies the logs to the hive, compares its keys before and after, and throws
/// std::runtime_error if any of what holds for all hives and logs does not: without a log that is
/// applied the hive stays as it is; with one its base block is clean; it grows by no more than the
/// logs have, but for a bin behind each page; a second replay has nothing to do.
replay_report check_replay(const QByteArray &hive, const QList<QByteArray> &logs);

} // namespace test_support

#endif
