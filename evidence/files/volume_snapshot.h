#ifndef VOLUME_SNAPSHOT_H
#define VOLUME_SNAPSHOT_H

#include <QString>
#include <QStringList>

namespace evidence {

/// Describes everything below a folder, itself included, in one line each, sorted: name
/// (percent-encoded), kind and mode in octal, size of a file, modification time in ns, and the
/// SHA-256 of a file's content or the target of a link. Links are not followed, and only regular
/// files are opened. Two equal snapshots mean that nothing was added, removed, renamed, altered or
/// touched in between. Throws std::runtime_error when something cannot be read.
QStringList volume_snapshot(const QString &folder);

} // namespace evidence

#endif
