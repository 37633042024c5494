#include "hive_rows.h"
#include "parse_installed_applications.h"

using namespace Qt::StringLiterals;

namespace {

bool write_applications(extraction &run)
{
    const QString reg_path = run.extracted().key.path;
    return write_rows_of_machine<parse_installed_applications>(
        run, &registry::data_records,
        [&](const hive_rows &, const registry::struct_data &application,
            qsizetype) -> std::optional<QStringList> {
            return QStringList{application.name, application.value, u"SOFTWARE"_s,
                               u"RegisteredApplications"_s, reg_path};
        });
}

} // namespace

extern const artifact registered_apps_artifact = {
    {
        "registered_apps"_L1,
        "CREATE TABLE IF NOT EXISTS registered_apps(bookmark integer,"
        "system_account varchar(100),INT INTEGER PRIMARY KEY,key_name VARCHAR(1024),"
        "value VARCHAR(1024),reg_file varchar(500),node_name varchar(500),"
        "reg_path varchar(1024),arken_tag_value varchar(100),notes_icon VARCHAR(1024),"
        "tags_icon VARCHAR(1024),os_scheme_display VARCHAR(100),"
        "source_count_name VARCHAR(500),source_file varchar(500),"
        "artifacts_relation_source_file VARCHAR(1024),notes varchar(500))"_L1,
        "insert into registered_apps(bookmark,key_name,value,reg_file,node_name,reg_path,"
        "source_file, os_scheme_display , source_count_name) values(0,?,?,?,?,?,?,?,?)"_L1,
        "void windows_installed_applications_winos::extract_registered_apps()"_L1,
        "[extract_registered_apps]"_L1,
        "---STARTS---"_L1,
        " query_insert -----FAILED----- registered_apps"_L1,
        true,
    },
    artifact_input::software_hive,
    values_of("\\RegisteredApplications"_L1),
    {},
    root_removal::where_it_stands,
    {},
    write_applications,
};
