#ifndef LOG_FILES_H
#define LOG_FILES_H

#include "log_replay.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

/// The names of the transaction logs beside the hive at `hive_path`, sorted, whatever their letter
/// case.
QStringList logs_beside(const QString &hive_path);

/// All bytes of the file; nothing when it cannot be read, is longer than `most_bytes`, or is no
/// regular file: opening a pipe or a device would block for ever.
std::optional<QByteArray> bytes_of_file(const QString &path, qint64 most_bytes);

/// How the hive file at `path` was left, by its first bytes; no hive if it is no regular file.
hive_condition condition_of_file(const QString &path);

/// The hive file at `path`, as far as it is one at all.
std::optional<QByteArray> bytes_of_hive(const QString &path);

/// The log at `path`, which its report calls `name`.
log_input log_file(const QString &path, const QString &name);

#endif
