#ifndef DELETED_CHECK_H
#define DELETED_CHECK_H

#include <QByteArray>

namespace test_support {

/// How many finds a scan gave.
struct found_counts
{
    int whole = 0; ///< keys and groups of values
    int partial = 0;
};

/// Looks for deleted keys and values below `Uninstall` and `Assist`, and throws std::runtime_error
/// if any of what holds for all hives does not: each record lies in free space and is told once;
/// data that are told to be there are as long as the value says, and together no longer than the
/// file; what is recovered can be written to a hive.
found_counts check_deleted(const QByteArray &hive);

} // namespace test_support

#endif
