#ifndef HIVE_GENERATOR_H
#define HIVE_GENERATOR_H

#include "byte_choices.h"

#include <QByteArray>
#include <QStringList>
#include <QVariantList>

namespace evidence {

/// Which of the hives that name applications a hive stands for.
enum class hive_kind
{
    software, ///< the machine's: Uninstall keys and RegisteredApplications
    user      ///< a user's: UserAssist, the Store, desktop icons
};

/// A hive file and what is wrong with it.
struct generated_hive
{
    QByteArray bytes;
    QStringList damages; ///< in the order in which they were done; empty for an intact hive
};

/// Makes a hive of the given kind from a byte string: its keys below those that the plug-in reads,
/// their names, list kinds and last-write times, their values' names, types, sizes and data, and
/// then up to eight damages of sizes, counts, offsets and header fields. The checksum is right, so
/// that libhivex opens most of them. A used-up string makes an intact hive with a record under
/// every key that is read.
///
/// `artifacts` are those that the plug-in describes in its property "artifacts". Keys of theirs
/// that this generator does not know get subkeys and values with the names of applications.
generated_hive generate_hive(byte_choices &choices, hive_kind kind, const QVariantList &artifacts);

} // namespace evidence

#endif
