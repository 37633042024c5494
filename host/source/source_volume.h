#ifndef SOURCE_VOLUME_H
#define SOURCE_VOLUME_H

#include <QString>
#include <QStringList>

#include <optional>

#include "exit_code.h"

/// Why `directory` cannot be read as an evidence source; nothing when it can.
std::optional<refusal> check_source(const QString &directory);

/// Whether the examiner lacks the permission to look whether something lies at `path`.
bool is_hidden(const QString &path);

/// A Windows volume mounted or extracted under a directory. Nothing in it is ever changed.
class source_volume
{
public:
    /// Takes a directory that passed check_source; links on the way to it are resolved.
    explicit source_volume(const QString &directory);

    /// Absolute path without links, ending in "/".
    const QString &root() const { return m_root; }

    /// Whether a symbolic link leads from `relative` to something outside of the volume.
    bool leads_out(const QString &relative) const;

    /// Whether something lies at `relative`.
    bool holds(const QString &relative) const;

private:
    QString m_root;
};

/// Where the software hive and its backup lie, relative to the volume's root.
inline constexpr auto software_hive_path = QLatin1StringView("Windows/System32/config/SOFTWARE");
inline constexpr auto software_backup_path =
    QLatin1StringView("Windows/System32/config/RegBack/SOFTWARE");

/// Where the account's registry hive and its package folder lie, relative to the volume's root.
QString user_hive_path(const QString &account);
QString package_folder_path(const QString &account);

/// The accounts that a run reads, and what the examiner should know about the others.
struct account_selection
{
    QStringList accounts;
    QStringList warnings;
};

/// The `requested` accounts. If there are none: all folders of "Users" that hold a registry hive or
/// a package folder, or that may hide one, sorted by name. A folder that is reached twice, through
/// a link beside it, is taken once. Accounts whose folder or files lie outside of the volume are
/// left out and reported.
account_selection select_accounts(const source_volume &volume, const QStringList &requested);

#endif
