#include "program_join.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "known_names.h"
#include "made_columns.h"
#include "sorted_rows.h"

using namespace Qt::StringLiterals;

namespace results {

namespace {

/// The places of columns_of_programs().
enum place : int
{
    program,
    version,
    publisher,
    account,
    state,
    run_count,
    shortcut_count,
    last_run,
    last_run_utc,
    uninstaller_last_run,
    uninstaller_last_run_utc,
    install_date,
    key_written,
    key_written_utc,
    location,
    joined_by,
    rows,
    source,
    column_count
};

/// Keys of one source never meet those of another.
QString scoped(const QString &source, const QString &text)
{
    return source + u'\n' + text;
}

const auto installation_prefix = u"key:"_s;
const auto folder_prefix = u"folder:"_s;

void set_text(cell &into, const QString &text)
{
    if (text.isEmpty())
        into.set_null();
    else
        into.set_text(text.toStdString());
}

void set_number(cell &into, const std::optional<qint64> &number)
{
    if (number)
        into.set_number(*number);
    else
        into.set_null();
}

/// "install_apps_64:3 previously_executed_apps:2,5": the rows, each once.
QString text_of(QList<row_reference> references)
{
    std::sort(references.begin(), references.end(),
              [](const row_reference &a, const row_reference &b) {
                  return std::tie(a.table, a.id) < std::tie(b.table, b.id);
              });
    QStringList tables;
    QString last_table;
    for (const row_reference &reference : std::as_const(references)) {
        if (reference.table == last_table)
            tables.last() += u",%1"_s.arg(reference.id);
        else
            tables.append(u"%1:%2"_s.arg(reference.table).arg(reference.id));
        last_table = reference.table;
    }
    return tables.join(u' ');
}

QString state_text(bool is_registered, bool has_package_folder, bool is_uninstaller_seen)
{
    const QString state = is_registered        ? u"registered"_s
                          : has_package_folder ? u"package folder"_s
                                               : u"not registered"_s;
    return is_uninstaller_seen ? state + ", uninstaller started"_L1 : state;
}

} // namespace

QList<column> columns_of_programs()
{
    QList<column> columns{
        made_column(u"program"_s, u"display name, or name or path where there is no key"_s),
        made_column(u"version"_s, u"version that the installer wrote"_s),
        made_column(u"publisher"_s, u"publisher that the installer wrote"_s, column_kind::text,
                    false),
        made_column(u"system_account"_s, u"account that used it, or that it was installed for"_s,
                    column_kind::account),
        made_column(u"state"_s, u"whether it has an Uninstall key, and an uninstaller was seen"_s),
        made_column(u"run_count"_s, u"counted starts of its programs"_s, column_kind::number),
        made_column(u"shortcut_count"_s, u"counted starts of its shortcuts"_s, column_kind::number,
                    false)};
    columns += made_time_columns(u"last_run"_s, u"Last run"_s);
    columns += made_time_columns(u"uninstaller_last_run"_s, u"Uninstaller last run"_s);
    columns.last().is_shown = false;
    columns += made_column(u"install_date"_s, u"install date that the installer wrote"_s);
    columns += made_time_columns(u"key_written"_s, u"Uninstall key last written"_s);
    columns.last().is_shown = false;
    columns +=
        {made_column(u"location"_s, u"folder or path"_s, column_kind::path, false),
         made_column(u"joined_by"_s, u"rules that joined the rows"_s, column_kind::text, false),
         made_column(u"rows"_s, u"the rows that this rests on: table and numbers"_s),
         made_column(u"source_count_name"_s, u"number of the source"_s, column_kind::text, false)};
    return columns;
}

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
    for (const auto &[key, of] : usages)
        made.push_back(row_of(key, of));
    sort_rows(made, columns_of_programs(), {u"program"_s, false});
    return made;
}

row program_join::row_of(const program_key &key, const usage &of) const
{
    row made;
    made.cells.resize(column_count);
    std::vector<cell> &cells = made.cells;
    const bool is_registered = key.program.startsWith(installation_prefix);
    QList<row_reference> references = of.rows;
    if (is_registered) {
        const installation &installed =
            m_installations.at(key.program.mid(installation_prefix.size()).toLongLong());
        references.append(installed.row);
        set_text(cells[program], installed.name);
        set_text(cells[version], installed.version);
        set_text(cells[publisher], installed.publisher);
        set_text(cells[install_date], installed.install_date);
        set_time(&cells[key_written], installed.key_written);
        set_text(cells[location], installed.location);
    } else if (key.program.startsWith(folder_prefix)) {
        const QString folder =
            m_uninstaller_folders.value(scoped(key.source, key.program.mid(folder_prefix.size())));
        set_text(cells[program], folder);
        set_text(cells[location], folder);
    } else {
        set_text(cells[program], of.first->name);
        set_text(cells[location], of.first->is_hash ? QString() : of.first->name);
    }
    set_text(cells[account], key.account);
    set_text(cells[state],
             state_text(is_registered, of.has_package_folder, of.is_uninstaller_seen));
    set_number(cells[run_count], of.run_count);
    set_number(cells[shortcut_count], of.shortcut_count);
    set_time(&cells[last_run], of.last_run);
    set_time(&cells[uninstaller_last_run], of.uninstaller_last_run);
    set_text(cells[joined_by], references.size() > 1 ? of.rules.join(", "_L1) : QString());
    set_text(cells[place::rows], text_of(references));
    set_text(cells[source], key.source);
    return made;
}

} // namespace results
