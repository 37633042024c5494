#include "extraction_frame.h"
#include "parse_hidden_desktop_icons.h"

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

/// Each class id costs a walk that reads the whole hive. Windows lists a few dozen; a hive made to
/// keep the examiner waiting may list hundreds of thousands, of which no more are looked up.
constexpr qsizetype most_class_ids = 512;

/// A desktop item has a name or two in its NameSpace key; of a key with more values no more become
/// rows.
constexpr qsizetype most_names = 128;

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
            if (!write_icon_rows(writer, path, hidden_icons.data_records))
                return false;
        }
        return true;
    });
}

/// Writes one row for each value of each class id's NameSpace key in the same hive, which names the
/// icon; a class id that only the machine's hive knows gives no row. False when cancelled.
bool windows_installed_applications_winos::write_icon_rows(
    result_table_writer &writer, const QString &hive_path,
    const QList<registry::struct_data> &class_ids)
{
    const user_source hive =
        describe_user_source(hive_path, &windows_installed_applications_winos::without_source_root);
    const QString reg_path = parse_hidden_desktop_icons::hidden_icons_key;
    parse_hidden_desktop_icons names;
    const QList<registry::struct_data> looked_up = class_ids.mid(0, most_class_ids);
    for (const registry::struct_data &class_id : looked_up) {
        if (bool_cancel_extraction)
            return false;
        const bool is_hidden = hex_to_decimal_fourbytes(class_id.data, little_endian) == 1;
        const QString hidden = is_hidden ? u"YES"_s : u"NO"_s;
        names.hidden_icons_records.clear();
        names.start_registry_parse(
            hive_path, parse_hidden_desktop_icons::name_space_key + class_id.name, true);
        const auto row_of = [&](const registry::struct_hidden_icons &icon,
                                qsizetype) -> std::optional<QStringList> {
            return QStringList{hive.user_name,        icon.value, hidden, u"NTUSER.DAT"_s,
                               u"HideDesktopIcons"_s, reg_path};
        };
        const QList<registry::struct_hidden_icons> icons =
            names.hidden_icons_records.mid(0, most_names);
        if (!write_rows(writer, icons, hive.source_columns, row_of))
            return false;
    }
    return true;
}
