#include "extraction_frame.h"
#include "parse_hidden_desktop_icons.h"

#include <QPair>
#include <QSet>

using namespace Qt::StringLiterals;

const result_tab hidden_desktop_icons_app_tab = {
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
};

namespace {

/// Each icon gets so many of its names into the table, whatever stands before it in the hive.
constexpr qsizetype certain_names = 64;

} // namespace

void windows_installed_applications_winos::extract_hidden_desktop_icons()
{
    run_extraction(hidden_desktop_icons_app_tab, [this](result_table_writer &writer) {
        parse_hidden_desktop_icons hidden_icons;
        for (const QString &path : std::as_const(ntuser_path_list)) {
            if (bool_cancel_extraction)
                return false;
            hidden_icons.data_records.clear();
            hidden_icons.start_registry_parse(path, parse_hidden_desktop_icons::hidden_icons_key,
                                              false);
            log_early_end(hidden_desktop_icons_app_tab, path, hidden_icons);
            if (!write_icons_of_hive(writer, path, hidden_icons.data_records))
                return false;
        }
        return true;
    });
}

/// Writes one row for each value of each class id's NameSpace key in the same hive, which names the
/// icon; a class id that only the machine's hive knows gives no row. False when cancelled.
bool windows_installed_applications_winos::write_icons_of_hive(
    result_table_writer &writer, const QString &hive_path,
    const QList<registry::struct_data> &class_ids)
{
    if (class_ids.isEmpty())
        return true;
    const QString reg_path = parse_hidden_desktop_icons::hidden_icons_key;
    const user_source hive =
        describe_user_source(hive_path, &windows_installed_applications_winos::without_source_root);
    walked_source source(hidden_desktop_icons_app_tab, hive_path, reg_path, hive.source_columns,
                         most_output_of(hive_path));
    QSet<QPair<unsigned long, bool>> written_icons; ///< with the setting that their rows tell
    parse_hidden_desktop_icons names;
    bool is_cancelled = false;
    names.look_up_icon_names(hive_path, class_ids, [&](qsizetype position, unsigned long key) {
        const QByteArray &setting = class_ids.at(position).data;
        const bool is_hidden = hex_to_decimal_fourbytes(setting, little_endian) == 1;
        const QString hidden = is_hidden ? u"YES"_s : u"NO"_s;
        const auto row_of = [&](const registry::struct_hidden_icons &icon,
                                qsizetype) -> std::optional<QStringList> {
            return QStringList{hive.user_name,        icon.value, hidden, u"NTUSER.DAT"_s,
                               u"HideDesktopIcons"_s, reg_path};
        };
        const bool is_repeated = written_icons.contains({key, is_hidden});
        written_icons.insert({key, is_hidden});
        is_cancelled =
            bool_cancel_extraction || !write_rows(writer, names.hidden_icons_records, source,
                                                  row_of, is_repeated ? 0 : certain_names);
        return !is_cancelled;
    });
    log_early_end(hidden_desktop_icons_app_tab, hive_path, names);
    return !is_cancelled;
}
