#ifndef CASE_BLIND_PATHS_H
#define CASE_BLIND_PATHS_H

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>

/// Finds files of a volume without regard to letter case, as Windows does. Two names are equal if
/// their code points are equal after simple case folding. Each folder is listed once; later changes
/// on the volume are not seen.
class case_blind_paths
{
public:
    /// Looks for files below the folder at `root_path` only, which must end in "/".
    explicit case_blind_paths(const QString &root_path);

    /// Returns `path` as it stands on the volume, or unchanged when nothing lies there, or when it
    /// is not below the root, or has a part "." or "..". A slash at its end stays.
    ///
    /// Of several names that are the same but for their letter case the exact one is tried first,
    /// the others in the order of their code points, until the whole path exists. `tell` gets one
    /// text for each such folder and name, once.
    QString find(const QString &path, const std::function<void(const QString &)> &tell);

    /// Returns every place below the root that `path` may mean, in the order in which find() tries
    /// them; none when nothing lies there.
    QStringList find_all(const QString &path);

private:
    using names_by_folded_name = QHash<QString, QStringList>;

    const names_by_folded_name &names_in(const QString &folder);
    QString find_below(const QString &folder, const QStringList &parts,
                       const std::function<void(const QString &)> &tell);
    void find_all_below(const QString &folder, const QStringList &parts, QStringList &found);
    QStringList parts_below_root(const QString &path) const;
    QStringList same_names(const QString &folder, const QString &name);
    QStringList candidates(const QString &folder, const QString &name,
                           const std::function<void(const QString &)> &tell);

    QString m_root_path;
    QHash<QString, names_by_folded_name> m_folders;
    QSet<QString> m_told; ///< folders with names that were told of
};

#endif
