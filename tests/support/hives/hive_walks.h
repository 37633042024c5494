#ifndef HIVE_WALKS_H
#define HIVE_WALKS_H

#include <QString>

namespace test_support {

/// Walks a hive file with every walker, over each key that the plug-in reads, over the root key and
/// over keys that none of them knows, and returns how many records came of it.
qsizetype walk_hive_in_every_way(const QString &hive_path);

} // namespace test_support

#endif
