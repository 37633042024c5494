#ifndef EXTRACTION_CHECK_H
#define EXTRACTION_CHECK_H

#include <QByteArray>

namespace test_support {

/// Generates a volume from a byte string, runs all tabs over it through the plug-in object, now and
/// then with options or a cancellation, and checks what holds for any evidence: the database passes
/// SQLite's integrity check, the rows counted are the rows in the tables, each tab is counted once,
/// and the volume is as it was before. Throws std::logic_error with the reason for what does not
/// hold.
void check_extraction(const QByteArray &choices);

} // namespace test_support

#endif
