#ifndef EVIDENCE_VOLUME_H
#define EVIDENCE_VOLUME_H

#include "hive_builder.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <map>
#include <memory>
#include <optional>

namespace evidence {

/// A Windows volume as a host mounts it: hives, users and package folders below one folder. Paths
/// are relative to that folder. Files and folders are made at once, hives by write(); whatever
/// cannot be made throws std::runtime_error.
class evidence_volume
{
public:
    /// A volume in a temporary folder, which goes with the object.
    evidence_volume();

    /// A volume in the given folder, which is made when absent and stays.
    explicit evidence_volume(const QString &folder);

    evidence_volume(const evidence_volume &) = delete;
    evidence_volume &operator=(const evidence_volume &) = delete;
    ~evidence_volume();

    /// The volume's folder; ends in "/".
    QString root() const { return m_root; }

    /// The full path of a file or folder of the volume.
    QString path(const QString &relative_path) const { return m_root + relative_path; }

    /// The hives, made when first asked for; they stay, so that write() can be repeated.
    hive_builder &software();
    hive_builder &reg_back_software();
    hive_builder &system();
    hive_builder &user(const QString &account);

    /// The hive that shall stand at any other place.
    hive_builder &hive(const QString &relative_path);

    /// The accounts of user() and package() calls in the order of their first mention.
    QStringList accounts() const { return m_accounts; }

    /// Makes a folder of a user's package folder; the empty name makes the package folder alone.
    evidence_volume &package(const QString &account, const QString &name);

    /// Makes a file, below folders that are made when absent, with a modification time if given.
    evidence_volume &file(const QString &relative_path, const QByteArray &content = {},
                          std::optional<qint64> modified_unix_seconds = std::nullopt);

    /// Makes a folder with all missing parents.
    evidence_volume &folder(const QString &relative_path);

    /// Makes a folder whose name need not be valid UTF-8. The parent must exist.
    evidence_volume &raw_folder(const QByteArray &relative_path);

    /// Makes a symbolic link, below folders that are made when absent.
    evidence_volume &link(const QString &relative_path, const QString &target);

    /// Makes a named pipe, below folders that are made when absent.
    evidence_volume &fifo(const QString &relative_path);

    /// Writes every hive that was asked for.
    void write();

    /// The absolute paths of the hives and of an account's packages, which need not exist.
    QString software_path() const;
    QString reg_back_path() const;
    QString system_path() const;
    QString ntuser_path(const QString &account) const;
    QString packages_path(const QString &account) const; ///< ends in "/"

private:
    QByteArray prepared_place(const QString &relative_path) const;
    void note_account(const QString &account);

    std::optional<QTemporaryDir> m_temporary;
    QString m_root;
    QStringList m_accounts;
    std::map<QString, std::unique_ptr<hive_builder>> m_hives; // by relative path
};

} // namespace evidence

#endif
