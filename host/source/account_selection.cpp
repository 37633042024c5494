#include "account_selection.h"

#include <QFileInfo>
#include <QSet>

#include <algorithm>

#include "raw_names.h"

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype most_names_told = 20;

/// The first path of the account that a link leads out of the volume, or an empty text.
QString path_leading_out(const source_volume &volume, const QString &account)
{
    for (const QString &path : {volume.account_folder(account), volume.user_hive(account),
                                volume.package_folder(account)}) {
        if (volume.leads_out(path))
            return path;
    }
    return {};
}

bool may_hold_artifacts(const source_volume &volume, const QString &account)
{
    const QStringList paths{volume.user_hive(account), volume.package_folder(account)};
    return std::any_of(paths.begin(), paths.end(), [&volume](const QString &path) {
        return volume.holds(path) || is_hidden(volume.root() + path);
    });
}

/// The folders that hold those of the accounts: several only if letter case is ignored.
QStringList folders_of_accounts(const source_volume &volume)
{
    const QString folder = volume.accounts_folder();
    const QStringList folders =
        volume.options().ignore_letter_case ? volume.namesakes_of(folder) : QStringList();
    return folders.isEmpty() ? QStringList{folder} : folders;
}

/// The names of what lies beside the accounts' folders and of these.
struct folder_names
{
    QStringList folders;
    QStringList links;
};

/// Qt cannot open a file whose name is not UTF-8; such names are reported.
void list_names(const source_volume &volume, const QString &folder, folder_names &names,
                QStringList &warnings)
{
    const std::error_code error =
        for_each_raw_name(volume.root() + folder, [&](QByteArrayView raw_name) {
            const QString name = QString::fromUtf8(raw_name);
            const QString path = folder + u'/' + name;
            if (is_utf_8(raw_name))
                (QFileInfo(volume.root() + path).isSymLink() ? names.links : names.folders)
                    .append(name);
            else
                warnings.append(u"%1: its name is not valid UTF-8, so it is not read"_s.arg(path));
        });
    if (error && error != std::errc::no_such_file_or_directory)
        warnings.append(u"%1: cannot be listed: %2"_s.arg(
            folder, QString::fromLocal8Bit(error.message().c_str())));
}

/// All of them. Folders come before links to them, so that a link never hides the folder.
QStringList names_of_accounts(const source_volume &volume, QStringList &warnings)
{
    folder_names names;
    for (const QString &folder : folders_of_accounts(volume))
        list_names(volume, folder, names, warnings);
    names.folders.sort();
    names.links.sort();
    QStringList all = names.folders + names.links;
    all.removeDuplicates();
    return all;
}

/// The accounts, without those whose folder an earlier one has too: through a link, or on a file
/// system that ignores letter case.
QStringList each_folder_once(const source_volume &volume, const QStringList &accounts)
{
    QStringList kept;
    QSet<QString> seen;
    for (const QString &account : accounts) {
        const QString folder =
            QFileInfo(volume.root() + volume.account_folder(account)).canonicalFilePath();
        if (!seen.contains(folder))
            kept.append(account);
        seen.insert(folder);
    }
    return kept;
}

void find_accounts(const source_volume &volume, account_selection &selection)
{
    for (const QString &account : names_of_accounts(volume, selection.warnings)) {
        const bool is_read = may_hold_artifacts(volume, account);
        (is_read ? selection.accounts : selection.others).append(account);
    }
}

/// The account that is meant by the name; empty when there is none.
QString account_named(const source_volume &volume, const QString &name)
{
    const QString path = volume.accounts_folder() + u'/' + name;
    for (const QString &place : volume.namesakes_of(path)) {
        QString account = QFileInfo(place).fileName();
        const QString folder = volume.root() + volume.account_folder(account);
        if (QFileInfo(folder).isDir())
            return account;
    }
    return is_hidden(volume.root() + path) ? name : QString();
}

/// Nothing when the folders of accounts can be listed, or when there are none.
std::error_code failure_of_listing(const source_volume &volume)
{
    for (const QString &folder : folders_of_accounts(volume)) {
        const std::error_code error =
            for_each_raw_name(volume.root() + folder, [](QByteArrayView) {});
        if (error && error != std::errc::no_such_file_or_directory)
            return error;
    }
    return {};
}

refusal no_such_account(const source_volume &volume, const QString &name)
{
    if (const std::error_code error = failure_of_listing(volume))
        return {exit_usage, u"no account \"%1\" is found in %2, which cannot be listed: %3"_s.arg(
                                name, volume.accounts_folder(),
                                QString::fromLocal8Bit(error.message().c_str()))};
    account_selection found;
    find_accounts(volume, found);
    found.accounts.sort();
    const qsizetype more = found.accounts.size() - most_names_told;
    const QString end = more > 0 ? u" and %1 more"_s.arg(more) : QString();
    const QString names = found.accounts.mid(0, most_names_told).join(", "_L1);
    return {exit_usage,
            u"no account \"%1\" in %2; the accounts are %3%4"_s.arg(
                name, volume.accounts_folder(), names.isEmpty() ? u"none"_s : names, end)};
}

void name_accounts(const source_volume &volume, const QStringList &requested,
                   account_selection &selection)
{
    for (const QString &name : requested) {
        const QString account = account_named(volume, name);
        if (account.isEmpty()) {
            selection.refused = no_such_account(volume, name);
            return;
        }
        selection.accounts.append(account);
    }
    selection.accounts.removeDuplicates();
}

/// Leaves out, and reports, the accounts that lie elsewhere.
void keep_those_within(const source_volume &volume, account_selection &selection)
{
    selection.accounts.removeIf([&](const QString &account) {
        const QString outside = path_leading_out(volume, account);
        if (!outside.isEmpty())
            selection.warnings.append(
                u"%1: a link leads out of the source; account %2 is left out"_s.arg(outside,
                                                                                    account));
        return !outside.isEmpty();
    });
}

} // namespace

account_selection select_accounts(const source_volume &volume, const QStringList &requested)
{
    account_selection selection;
    if (requested.isEmpty())
        find_accounts(volume, selection);
    else
        name_accounts(volume, requested, selection);
    keep_those_within(volume, selection);
    const qsizetype count = selection.accounts.size();
    selection.accounts = each_folder_once(volume, selection.accounts);
    if (requested.isEmpty())
        selection.accounts.sort();
    else if (selection.accounts.size() < count)
        selection.remarks.append(
            u"%1: some of the accounts share a folder, which is read once"_s.arg(
                volume.accounts_folder()));
    return selection;
}

bool has_any_account(const source_volume &volume)
{
    QStringList warnings;
    const QStringList names = names_of_accounts(volume, warnings);
    return std::any_of(names.begin(), names.end(), [&volume](const QString &account) {
        return may_hold_artifacts(volume, account);
    });
}
