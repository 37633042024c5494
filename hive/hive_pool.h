#ifndef HIVE_POOL_H
#define HIVE_POOL_H

#include "guarded_hive.h"

#include <QHash>
#include <QString>

#include <list>

/// Hives that stay open between walks, so that each is read from its file once. libhivex holds an
/// open hive in memory, and the file itself stays open. When those open exceed a limit, the ones
/// that were not asked for the longest are closed.
class hive_pool
{
public:
    /// What may be open at most. One hive is always open, whatever its length.
    struct limit
    {
        qint64 bytes = qint64(512) << 20; ///< the lengths of all files together
        qsizetype hives = 64;             ///< far fewer files than any system lets a process open
    };

    explicit hive_pool(const limit &most) : m_most(most) {}
    hive_pool() : hive_pool(limit()) {}
    hive_pool(const hive_pool &) = delete;
    hive_pool &operator=(const hive_pool &) = delete;

    /// Starts a walk over the hive at `path`, which is opened unless it is open already. If memory
    /// or open files run out, all others are closed first. Null when the hive cannot be opened; the
    /// next call tries again. The hive is valid until the next call of open() or close().
    guarded_hive *open(const QString &path);

    /// Closes the hive at `path`, if it is open.
    void close(const QString &path);

    /// How many hives are open.
    qsizetype count() const { return m_by_path.size(); }

private:
    struct kept_hive
    {
        QString path;
        guarded_hive hive;
    };
    using hive_list = std::list<kept_hive>;

    void close(hive_list::iterator kept);
    void close_oldest();

    limit m_most;
    hive_list m_hives; ///< the one that was asked for last in front
    QHash<QString, hive_list::iterator> m_by_path;
    qint64 m_bytes = 0; ///< of all that are open
};

#endif
