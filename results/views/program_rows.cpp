#include "program_join.h"

#include <algorithm>
#include <tuple>

#include "made_columns.h"
#include "program_keys.h"

using namespace Qt::StringLiterals;

// The rows of the programs view.

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
