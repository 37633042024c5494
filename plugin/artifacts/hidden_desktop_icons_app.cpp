#include "conversions.h"
#include "hive_rows.h"
#include "parse_hidden_desktop_icons.h"

#include <QPair>
#include <QSet>

using namespace Qt::StringLiterals;

namespace {

/// Each icon gets this many of its names into the table, whatever stands before it in the hive.
constexpr qsizetype certain_names = 64;

/// Writes one row for each value of each class id's NameSpace key in the same hive, which names the
/// icon; a class id that only the machine's hive knows gives no row. False when cancelled.
bool write_icons(extraction &run, hive_rows &rows, const QString &hive_path,
                 const QList<registry::struct_data> &class_ids)
{
    const QString reg_path = run.extracted().key.path;
    QSet<QPair<unsigned long, bool>> written_icons; ///< with the setting that their rows show
    parse_hidden_desktop_icons names;
    bool is_cancelled = false;
    prepare_walker(run, names);
    const QString file = run.context().options.file_to_read(hive_path);
    names.look_up_icon_names(file, class_ids, [&](qsizetype position, unsigned long key) {
        const bool is_hidden = integer_32_of(class_ids.at(position).data, byte_order::little_endian,
                                             *run.context().is_cancelled) == 1;
        const QString hidden = is_hidden ? u"YES"_s : u"NO"_s;
        const auto columns_of = [&](const registry::struct_hidden_icons &icon,
                                    qsizetype) -> std::optional<QStringList> {
            return QStringList{rows.user_name(),      icon.value, hidden, u"NTUSER.DAT"_s,
                               u"HideDesktopIcons"_s, reg_path};
        };
        const bool is_repeated = written_icons.contains({key, is_hidden});
        written_icons.insert({key, is_hidden});
        is_cancelled = run.is_cancelled() || !rows.write(names.hidden_icons_records, columns_of,
                                                         is_repeated ? 0 : certain_names);
        return !is_cancelled;
    });
    rows.log_findings(names);
    return !is_cancelled;
}

bool write_hidden_icons(extraction &run)
{
    parse_hidden_desktop_icons settings;
    return for_each_user_hive(run, [&](const QString &path) {
        hive_rows rows = hive_rows::of_user(run, path);
        settings.data_records.clear();
        walk_user_hive(run, settings, path, run.extracted().key);
        rows.log_findings(settings);
        return settings.data_records.isEmpty() ||
               write_icons(run, rows, path, settings.data_records);
    });
}

} // namespace

extern const artifact hidden_desktop_icons_app_artifact = {
    {
        "hidden_desktop_icons_app"_L1,
        "CREATE TABLE IF NOT EXISTS hidden_desktop_icons_app(bookmark integer,"
        "system_account varchar(100),INT INTEGER PRIMARY KEY,app_name VARCHAR(300),"
        "hidden VARCHAR(300),reg_file VARCHAR(500),node_name VARCHAR(500),"
        "reg_path VARCHAR(1024),arken_tag_value varchar(100),notes_icon VARCHAR(1024),"
        "tags_icon VARCHAR(1024),os_scheme_display VARCHAR(100),"
        "source_count_name VARCHAR(500),source_file varchar(500),"
        "artifacts_relation_source_file VARCHAR(1024),notes varchar(500))"_L1,
        "INSERT INTO hidden_desktop_icons_app(bookmark,system_account,app_name,hidden,"
        "reg_file,node_name,reg_path,source_file, os_scheme_display ,"
        " source_count_name) VALUES(0,?,?,?,?,?,?,?,?,?)"_L1,
        "void windows_installed_applications_winos::extract_hidden_desktop_icons()"_L1,
        "[extract_hidden_desktop_icons]"_L1,
        "---STARTS---"_L1,
        "query_insert -----FAILED----- hidden_desktop_icons_app"_L1,
        true,
    },
    artifact_input::user_hives,
    values_of_subkeys_of(parse_hidden_desktop_icons::hidden_icons_key),
    values_of_subkeys_of(parse_hidden_desktop_icons::name_space_key),
    root_removal::where_it_stands,
    {},
    write_hidden_icons,
};
