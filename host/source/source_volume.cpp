#include "source_volume.h"

#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <filesystem>

using namespace Qt::StringLiterals;

namespace {

QString account_path(const QString &account)
{
    return "Users/"_L1 + account;
}

/// The first path of the account that a link leads out of the volume, or an empty text.
QString path_leading_out(const source_volume &volume, const QString &account)
{
    for (const QString &path :
         {account_path(account), user_hive_path(account), package_folder_path(account)}) {
        if (volume.leads_out(path))
            return path;
    }
    return {};
}

bool may_hold_artifacts(const source_volume &volume, const QString &account)
{
    const QStringList paths{user_hive_path(account), package_folder_path(account)};
    return std::any_of(paths.begin(), paths.end(), [&volume](const QString &path) {
        return volume.holds(path) || is_hidden(volume.root() + path);
    });
}

/// The entries of "Users" as the file system names them, in no order.
QList<QByteArray> raw_names_in_users(const source_volume &volume, QStringList &warnings)
{
    QList<QByteArray> names;
    std::error_code error;
    const std::filesystem::path users = QFile::encodeName(volume.root() + "Users"_L1).toStdString();
    for (auto entry = std::filesystem::directory_iterator(users, error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
        names.append(QByteArray::fromStdString(entry->path().filename().string()));
    if (error && error != std::errc::no_such_file_or_directory)
        warnings.append(
            u"Users: cannot be listed: %1"_s.arg(QString::fromLocal8Bit(error.message().c_str())));
    return names;
}

/// Their names as texts. Folders come before links to them, so that a link never hides the folder.
/// Qt cannot open a file whose name is not UTF-8; such names are reported.
QStringList names_in_users(const source_volume &volume, QStringList &warnings)
{
    QStringList folders;
    QStringList links;
    for (const QByteArray &raw_name : raw_names_in_users(volume, warnings)) {
        const QString name = QString::fromUtf8(raw_name);
        if (name.toUtf8() != raw_name)
            warnings.append(
                u"%1: its name is not valid UTF-8, so it is not read"_s.arg(account_path(name)));
        else
            (QFileInfo(volume.root() + account_path(name)).isSymLink() ? links : folders)
                .append(name);
    }
    folders.sort();
    links.sort();
    return folders + links;
}

/// The accounts, without those whose folder an earlier one has too: through a link, or on a file
/// system that ignores letter case.
QStringList each_folder_once(const source_volume &volume, const QStringList &accounts)
{
    QStringList kept;
    QSet<QString> seen;
    for (const QString &account : accounts) {
        const QString folder = QFileInfo(volume.root() + account_path(account)).canonicalFilePath();
        if (!seen.contains(folder))
            kept.append(account);
        seen.insert(folder);
    }
    return kept;
}

QStringList accounts_found(const source_volume &volume, QStringList &warnings)
{
    QStringList accounts = names_in_users(volume, warnings);
    accounts.removeIf(
        [&volume](const QString &account) { return !may_hold_artifacts(volume, account); });
    return accounts;
}

} // namespace

std::optional<refusal> check_source(const QString &directory)
{
    const QFileInfo info(directory);
    if (directory.isEmpty() || !info.exists())
        return refusal{exit_source, u"source %1 does not exist"_s.arg(directory)};
    if (!info.isDir())
        return refusal{
            exit_source,
            u"source %1 is no folder: mount or extract the volume first"_s.arg(directory)};
    if (!info.isReadable() || !info.isExecutable())
        return refusal{exit_source, u"source %1 cannot be read"_s.arg(directory)};
    return std::nullopt;
}

bool is_hidden(const QString &path)
{
    std::error_code error;
    static_cast<void>(std::filesystem::status(QFile::encodeName(path).toStdString(), error));
    return error == std::errc::permission_denied;
}

source_volume::source_volume(const QString &directory)
    : m_root(QFileInfo(directory).canonicalFilePath())
{
    if (!m_root.endsWith(u'/'))
        m_root += u'/';
}

bool source_volume::leads_out(const QString &relative) const
{
    const QString place = QFileInfo(m_root + relative).canonicalFilePath();
    return !place.isEmpty() && !place.startsWith(m_root);
}

bool source_volume::holds(const QString &relative) const
{
    return QFileInfo::exists(m_root + relative);
}

QString user_hive_path(const QString &account)
{
    return account_path(account) + "/NTUSER.DAT"_L1;
}

QString package_folder_path(const QString &account)
{
    return account_path(account) + "/AppData/Local/Packages"_L1;
}

account_selection select_accounts(const source_volume &volume, const QStringList &requested)
{
    account_selection selection;
    QStringList &warnings = selection.warnings;
    QStringList accounts;
    const QStringList candidates =
        requested.isEmpty() ? accounts_found(volume, warnings) : requested;
    for (const QString &account : candidates) {
        const QString outside = path_leading_out(volume, account);
        if (!outside.isEmpty())
            warnings.append(u"%1: a link leads out of the source; account %2 is left out"_s.arg(
                outside, account));
        else if (!volume.holds(account_path(account)))
            warnings.append(u"%1: not found"_s.arg(account_path(account)));
        else
            accounts.append(account);
    }
    selection.accounts = each_folder_once(volume, accounts);
    if (requested.isEmpty())
        selection.accounts.sort();
    else if (selection.accounts.size() < accounts.size())
        warnings.append(u"Users: some of the accounts share a folder, which is read once"_s);
    return selection;
}
