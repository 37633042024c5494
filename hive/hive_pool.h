#ifndef HIVE_POOL_H
#define HIVE_POOL_H

#include "guarded_hive.h"

#include <QString>

#include <list>

/// Hives that stay open between walks, so that each is read from its file once. libhivex holds an
/// open hive in memory; when those open have more bytes than a limit, the ones that were not asked
/// for the longest are closed.
class hive_pool
{
public:
    static constexpr qint64 default_most_bytes = qint64(512) << 20;

    /// `most_bytes`: the length of all files that are open at most, of which one is always open.
    explicit hive_pool(qint64 most_bytes = default_most_bytes) : m_most_bytes(most_bytes) {}
    hive_pool(const hive_pool &) = delete;
    hive_pool &operator=(const hive_pool &) = delete;

    /// Starts a walk over the hive at `path`, which is opened unless it is open already. Null when
    /// it cannot be opened; the next call tries again. The hive is valid until the next call of
    /// open() or close().
    guarded_hive *open(const QString &path);

    /// Closes the hive at `path`, if it is open.
    void close(const QString &path);

    /// How many hives are open.
    qsizetype count() const { return static_cast<qsizetype>(m_hives.size()); }

private:
    struct kept_hive
    {
        QString path;
        guarded_hive hive;
    };

    void close_oldest();

    qint64 m_most_bytes;
    std::list<kept_hive> m_hives; ///< the one that was asked for last in front
};

#endif
