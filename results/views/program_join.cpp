#include "program_join.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "known_names.h"
#include "program_keys.h"
#include "sorted_rows.h"

using namespace Qt::StringLiterals;

namespace results {

bool program_join::program_key::operator<(const program_key &other) const
{
    return std::tie(source, program, account) <
           std::tie(other.source, other.program, other.account);
}

void program_join::add_installation(const installation &added)
{
    const qsizetype index = m_installations.size();
    m_installations.append(added);
    QString folder = comparable_path(added.location, added.account);
    if (folder.isEmpty())
        folder = folder_of_command(added.uninstall_command);
    if (!folder.isEmpty() && !is_shared_folder(folder))
        m_by_location.insert(scoped(added.source, folder), index);
    m_by_name.insert(scoped(added.source, comparable_name(added.name)), index);
}

/// The one installation in the folder that the account can use: its own, or one for all.
std::optional<qsizetype> program_join::installation_in(const QString &folder,
                                                       const program_use &use) const
{
    std::optional<qsizetype> found;
    for (const qsizetype index : m_by_location.values(scoped(use.source, folder))) {
        const QString &account = m_installations.at(index).account;
        if (!account.isEmpty() && account.compare(use.account, Qt::CaseInsensitive) != 0)
            continue;
        // Several keys of one folder are parts of one program; the first one stands for it.
        found = found ? std::min(*found, index) : index;
    }
    return found;
}

std::optional<qsizetype> program_join::installation_named(const program_use &use) const
{
    QString name = name_of_shortcut(use.name);
    const std::string_view known = display_name_of(name.toStdString());
    if (!known.empty())
        name = QString::fromUtf8(known.data(), qsizetype(known.size()));
    name = comparable_name(name);
    const QList<qsizetype> found = m_by_name.values(scoped(use.source, name));
    if (name.isEmpty() || found.size() != 1)
        return std::nullopt;
    const QString &owner = m_installations.at(found.first()).account;
    const bool is_usable = owner.isEmpty() || owner.compare(use.account, Qt::CaseInsensitive) == 0;
    return is_usable ? std::optional(found.first()) : std::nullopt;
}

/// The innermost folder above the program that an installation or an uninstaller has.
program_join::joined program_join::program_by_folder(const program_use &use) const
{
    for (QString folder = folder_of(use.path); !folder.isEmpty(); folder = folder_of(folder)) {
        if (const auto index = installation_in(folder, use))
            return {installation_prefix + QString::number(*index), u"install location"_s};
        const QString scoped_folder = scoped(use.source, folder);
        if (m_uninstaller_folders.contains(scoped_folder))
            return {folder_prefix + folder, u"folder of the uninstaller"_s};
    }
    return {};
}

program_join::joined program_join::program_of(const program_use &use) const
{
    if (!use.package.isEmpty())
        return {"package:"_L1 + use.package.toLower(), u"package name"_s};
    joined found = program_by_folder(use);
    if (!found.program.isEmpty())
        return found;
    if (use.is_shortcut) {
        if (const auto index = installation_named(use))
            return {installation_prefix + QString::number(*index), u"display name"_s};
    }
    if (use.path.isEmpty() || use.is_hash)
        return {"name:"_L1 + use.name, u"name"_s};
    return {"path:"_L1 + use.path, u"executable path"_s};
}

/// Where a program was uninstalled that has no key any more, its folder is known by its
/// uninstaller.
void program_join::note_folders_of_uninstallers()
{
    for (const program_use &use : m_uses) {
        const QString folder = folder_of(use.path);
        if (is_uninstaller(use.path) && !use.is_shortcut && !is_shared_folder(folder) &&
            program_by_folder(use).program.isEmpty())
            m_uninstaller_folders.insert(scoped(use.source, folder),
                                         folder_of(QString(use.name).replace(u'/', u'\\')));
    }
}

void program_join::add_to(usage &into, const program_use &use, const QString &rule)
{
    if (into.first == nullptr)
        into.first = &use;
    into.rows.append(use.row);
    if (!into.rules.contains(rule))
        into.rules.append(rule);
    into.has_package_folder = into.has_package_folder || use.is_package_folder;
    if (is_uninstaller(use.path)) {
        into.is_uninstaller_seen = true;
        into.uninstaller_last_run = std::max(into.uninstaller_last_run, use.last_run);
        return;
    }
    into.last_run = std::max(into.last_run, use.last_run);
    std::optional<qint64> &count = use.is_shortcut ? into.shortcut_count : into.run_count;
    if (use.is_counted)
        count = count.value_or(0) + use.run_count;
}

std::vector<row> program_join::rows()
{
    note_folders_of_uninstallers();
    std::map<program_key, usage> usages;
    QList<bool> is_used(m_installations.size(), false);
    for (const program_use &use : m_uses) {
        const joined found = program_of(use);
        add_to(usages[{use.source, found.program, use.account}], use, found.rule);
        if (found.program.startsWith(installation_prefix))
            is_used[found.program.mid(installation_prefix.size()).toLongLong()] = true;
    }
    for (qsizetype i = 0; i < m_installations.size(); ++i) {
        const installation &each = m_installations.at(i);
        if (!is_used.at(i))
            usages[{each.source, installation_prefix + QString::number(i), each.account}] = {};
    }
    std::vector<row> made;
    made.reserve(usages.size());
    for (const auto &[key, of] : usages)
        made.push_back(row_of(key, of));
    sort_rows(made, columns_of_programs(), {u"program"_s, false});
    return made;
}

} // namespace results
