#ifndef READABLE_COPY_H
#define READABLE_COPY_H

#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace results {

/// A copy of a database in a temporary folder, with the journal that belongs to it. Reading such a
/// database where it lies would write: SQLite takes an unfinished transaction back, or makes an
/// index of the log.
class readable_copy
{
public:
    /// Copies the database. `failure()` tells if that did not go.
    explicit readable_copy(const QString &database_file);

    QString file() const { return m_folder.filePath(QStringLiteral("copy.sqlite")); }
    const QString &failure() const { return m_failure; }

private:
    QTemporaryDir m_folder;
    QString m_failure;
};

/// Whether the database keeps a write-ahead log, by its header.
bool has_write_ahead_log(const QString &database_file);

/// Whether SQLite refused to read because a journal would have to be worked off first.
bool needs_copy(int sqlite_code, const QString &database_file);

} // namespace results

#endif
