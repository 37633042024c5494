#include "user_assist_entries.h"

using namespace Qt::StringLiterals;

namespace {

bool write_uninstallers(extraction &run)
{
    return write_user_assist_entries(run, [](const QString &name) {
        return name.contains("uninstall"_L1) ? std::make_optional(name) : std::nullopt;
    });
}

} // namespace

extern const artifact uninstall_apps_artifact = {
    {
        "uninstall_apps"_L1,
        "create table IF NOT EXISTS uninstall_apps(bookmark integer,"
        "system_account varchar(100),INT INTEGER PRIMARY KEY,class_id varchar(1024),"
        "exename varchar(1024),entry_index INTEGER,runcount INTEGER,reg_file varchar(500),"
        "node_name varchar(500),reg_path varchar(1024),lastruntime INTEGER,"
        "arken_tag_value varchar(100),notes_icon VARCHAR(1024),tags_icon VARCHAR(1024),"
        "os_scheme_display VARCHAR(100),source_count_name VARCHAR(500),"
        "source_file varchar(500),artifacts_relation_source_file VARCHAR(1024),"
        "notes varchar(500))"_L1,
        "INSERT INTO uninstall_apps(bookmark,system_account,class_id,exename,entry_index,"
        "runcount,reg_file,node_name,reg_path,lastruntime,source_file, os_scheme_display ,"
        " source_count_name) VALUES(0,?,?,?,?,?,?,?,?,?,?,?,?)"_L1,
        "void windows_installed_applications_winos::extract_uninstall_applications()"_L1,
        "[extract_uninstall_applications]"_L1,
        "---STARTS---"_L1,
        " query_insert  uninstall_apps -----FAILED-----, table"_L1,
        false,
    },
    artifact_input::user_hives,
    user_assist_entries_key,
    {},
    root_removal::where_it_stands,
    {},
    write_uninstallers,
};
