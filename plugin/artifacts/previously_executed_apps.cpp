#include "user_assist_entries.h"

using namespace Qt::StringLiterals;

namespace {

/// The entry that Windows keeps for the session itself is no program.
constexpr auto session_entry = "UEME_CTLSESSION"_L1;

bool write_executed_programs(extraction &run)
{
    return write_user_assist_entries(run, [](QString name) -> std::optional<QString> {
        name.replace(u'\\', u'/');
        if (name.startsWith(session_entry) && name.endsWith(session_entry))
            return std::nullopt;
        return name;
    });
}

} // namespace

extern const artifact previously_executed_apps_artifact = {
    {
        "previously_executed_apps"_L1,
        "create table IF NOT EXISTS previously_executed_apps(bookmark integer,"
        "system_account varchar(100),INT INTEGER PRIMARY KEY,class_id varchar(1024),"
        "exename varchar(1024),entry_index INTEGER,runcount INTEGER,reg_file varchar(500),"
        "node_name varchar(500),reg_path varchar(1024),lastruntime INTEGER,"
        "arken_tag_value varchar(100),notes_icon VARCHAR(1024),tags_icon VARCHAR(1024),"
        "os_scheme_display VARCHAR(100),source_count_name VARCHAR(500),"
        "source_file varchar(500),artifacts_relation_source_file VARCHAR(1024),"
        "notes varchar(500))"_L1,
        "INSERT INTO previously_executed_apps(bookmark,system_account,class_id,exename,"
        "entry_index,runcount,reg_file,node_name,reg_path,lastruntime,source_file,"
        " os_scheme_display , source_count_name) VALUES(0,?,?,?,?,?,?,?,?,?,?,?,?)"_L1,
        "void windows_installed_applications_winos::extract_previously_executed_programs()"_L1,
        "[extract_previously_executed_programs]"_L1,
        "---STARTS---"_L1,
        " query_insert previously_executed_apps ---FAILED---, table"_L1,
        false,
    },
    artifact_input::user_hives,
    user_assist_entries_key,
    {},
    root_removal::where_it_stands,
    {},
    write_executed_programs,
};
