#ifndef SOURCE_VOLUME_H
#define SOURCE_VOLUME_H

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>

#include "case_blind_paths.h"
#include "exit_code.h"
#include "reading_options.h"

/// Why `directory` cannot be read as an evidence source; nothing when it can.
std::optional<refusal> check_source(const QString &directory);

/// Whether the examiner lacks the permission to look whether something lies at `path`.
bool is_hidden(const QString &path);

/// Whether a link lies at `path` that leads nowhere, or to itself.
bool is_broken_link(const QString &path);

/// Where the software hive and its backup lie, relative to the volume's root.
inline constexpr auto software_hive_path = QLatin1StringView("Windows/System32/config/SOFTWARE");
inline constexpr auto software_backup_path =
    QLatin1StringView("Windows/System32/config/RegBack/SOFTWARE");

/// A Windows volume mounted or extracted under a directory. Nothing in it is ever changed. Paths
/// are relative to its root. Files are found where the plug-in finds them with the same options.
class source_volume
{
public:
    /// Takes a directory that passed check_source; links on the way to it are resolved. `source` is
    /// the folder that the examiner named where that one holds the volume further down.
    explicit source_volume(const QString &directory, const reading_options &options = {},
                           const QString &source = {});

    /// Absolute path without links, ending in "/".
    const QString &root() const { return m_root; }

    /// The same of the folder that the examiner named: all of it is evidence.
    const QString &source_root() const { return m_source_root; }

    const reading_options &options() const { return m_options; }

    /// Has the files at these paths, relative to the root, read from copies: full paths.
    void read_copies(const QHash<QString, QString> &copies) { m_copies = copies; }

    /// The full path of the file that is read where `relative` is meant.
    QString file_of(const QString &relative) const;

    /// Whether a symbolic link leads from `relative` to something outside of the volume.
    bool leads_out(const QString &relative) const;

    /// Whether something lies at `relative`.
    bool holds(const QString &relative) const;

    /// Where `relative` lies: elsewhere only if letter case is ignored and nothing lies there.
    QString place_of(const QString &relative) const;

    /// Every place whose path is `relative` but for its letter case, whether or not letter case is
    /// ignored; the exact one is the first.
    QStringList namesakes_of(const QString &relative) const;

    QString software_hive() const;
    QString software_backup() const;
    /// The folder that holds those of the accounts, as it is spelt in Windows.
    QString accounts_folder() const;
    QString account_folder(const QString &account) const;
    QString user_hive(const QString &account) const;
    QString package_folder(const QString &account) const;

private:
    QString first_that_exists(const QString &folder, const QString &older_folder) const;
    QString path_of_account(const QString &account) const;

    QString m_root;
    QString m_source_root;
    reading_options m_options;
    QHash<QString, QString> m_copies;
    mutable case_blind_paths m_paths; // remembers what it has listed
};

#endif
