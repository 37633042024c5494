#include "extraction_frame.h"
#include "parse_hidden_desktop_icons.h"

#include <QFileInfo>
#include <algorithm>

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

// What the icons of one hive may cost. Windows lists a few dozen class ids with a name or two each.
// A hive made to keep the examiner waiting may list 70,000 that share 30,000 names: each class id
// is a walk of its own, and each name becomes a row.

constexpr qint64 least_budget = qint64(128) << 20; ///< of the shortest hive: 100,000 rows at least
constexpr qint64 budget_in_hive_lengths = 128;
constexpr qint64 opens_per_hive_length = 16;
constexpr qint64 cost_of_a_row = 1024; ///< beside the name itself
constexpr qint64 cost_of_a_letter = 4; ///< of the name: up to 3 bytes in the table

walk_budget icon_budget(qint64 hive_length)
{
    return walk_budget(std::max(least_budget, budget_in_hive_lengths * hive_length));
}

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
    const qint64 hive_length = QFileInfo(hive_path).size();
    walk_budget budget = icon_budget(hive_length);
    parse_hidden_desktop_icons names;
    for (const registry::struct_data &class_id : class_ids) {
        if (bool_cancel_extraction)
            return false;
        if (!budget.spend(hive_length / opens_per_hive_length + names.cost_of_last_walk()))
            return true;
        const bool is_hidden = hex_to_decimal_fourbytes(class_id.data, little_endian) == 1;
        const QString hidden = is_hidden ? u"YES"_s : u"NO"_s;
        names.hidden_icons_records.clear();
        names.start_registry_parse(
            hive_path, parse_hidden_desktop_icons::name_space_key + class_id.name, true);
        const auto row_of = [&](const registry::struct_hidden_icons &icon,
                                qsizetype) -> std::optional<QStringList> {
            if (!budget.spend(cost_of_a_row + cost_of_a_letter * icon.value.size()))
                return std::nullopt;
            return QStringList{hive.user_name,        icon.value, hidden, u"NTUSER.DAT"_s,
                               u"HideDesktopIcons"_s, reg_path};
        };
        if (!write_rows(writer, names.hidden_icons_records, hive.source_columns, row_of))
            return false;
    }
    return true;
}
