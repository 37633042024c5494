#ifndef LOG_REPLAY_H
#define LOG_REPLAY_H

#include "log_report.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

/// A transaction log that may belong to a hive.
struct log_input
{
    QString name;
    /// Gives all bytes of the log; nothing when it cannot be read. It may be called twice, so that
    /// one log at a time is in memory.
    std::function<std::optional<QByteArray>()> read;
};

/// How a hive file was left, as its base block tells.
enum class hive_condition
{
    no_hive,       ///< neither a base block nor a first bin is there, or it is longer than any hive
    clean,         ///< closed cleanly: no log counts
    dirty,         ///< its newest changes stand in its logs
    damaged_header ///< the base block is damaged, so that its numbers tell nothing
};

/// How the hive file with these bytes was left.
hive_condition condition_of_hive(const QByteArray &hive);

/// What a replay found and did.
struct replay_report
{
    hive_condition condition = hive_condition::no_hive;
    QList<log_report> logs;         ///< one for each log, in their order
    quint32 primary_sequence = 0;   ///< of the hive before
    quint32 secondary_sequence = 0; ///< the same
    quint32 sequence = 0;           ///< both numbers of the hive afterwards
    qint64 size_before = 0;         ///< bytes of the file
    qint64 size_after = 0;

    /// Whether any log was applied.
    bool is_replayed() const;
};

/// Applies the logs that Windows would apply to `hive`, the bytes of a hive file, in the order in
/// which Windows would. The hive is then what Windows would have after loading it: its bins byte
/// for byte, and a clean base block with a right checksum. Bytes of the file behind the last bin
/// stay, as Windows leaves them. If no log applies, nothing changes.
///
/// Which logs apply follows from numbers and times of the headers and from the hashes of the
/// entries. An entry that is not sound ends its log; entries before it stay applied. Memory is
/// taken for the hive and for one log.
replay_report replay_logs(QByteArray &hive, const QList<log_input> &logs);

#endif
