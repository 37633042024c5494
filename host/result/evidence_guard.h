#ifndef EVIDENCE_GUARD_H
#define EVIDENCE_GUARD_H

#include <QString>
#include <QStringList>

#include <set>

#include "file_identity.h"
#include "mount_table.h"

/// Whether writing somewhere would write to the evidence.
struct evidence_relation
{
    enum class kind
    {
        apart,
        within,
        unknown ///< a part of the source could not be searched
    };

    kind is = kind::apart;
    QString hidden_folder; ///< of an unknown relation: what could not be listed
};

/// Recognises the evidence under any name: through links, in other letter case, below a second
/// mount of its file system, and through a bind mount of one of its folders or files.
///
/// A place lies in the source when the place, or a folder above it, is the source's root or lies
/// below the root. The root is recognised by its identity. What lies below it is recognised by the
/// system's table of mounts, which tells where each folder above the place really lies. Where the
/// table cannot tell, the whole source is searched.
class evidence_guard
{
public:
    /// `source_root` is an absolute path without links.
    explicit evidence_guard(const QString &source_root,
                            const mount_table &mounts = mount_table::of_this_process());

    /// Judges what would be written at `paths`, which need not exist: within if one of them is.
    evidence_relation relation_of(const QStringList &paths) const;

private:
    QString m_source_root;
    mount_table m_mounts;
};

/// Searches below `root` for a folder or, when `files_too`, a file that is one of `wanted`.
evidence_relation look_through(const QString &root, const std::set<file_identity> &wanted,
                               bool files_too);

/// The absolute path, with the links of the part that exists resolved. Empty when `path` is
/// relative and the working directory is gone.
QString resolved(const QString &path);

/// The file or folder at the absolute `path` or, when there is none, the nearest folder above it. A
/// link that leads nowhere counts: writing through it would create its target.
QString nearest_existing(const QString &path);

#endif
