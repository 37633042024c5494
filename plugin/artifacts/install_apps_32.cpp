#include "uninstall_applications.h"

using namespace Qt::StringLiterals;

extern const artifact install_apps_32_artifact = {
    {
        "install_apps_32"_L1,
        "CREATE TABLE IF NOT EXISTS install_apps_32(bookmark integer,"
        "system_account varchar(100),INT INTEGER PRIMARY KEY,parent_name VARCHAR(500),"
        "display_name VARCHAR(200),display_version VARCHAR(200),publisher VARCHAR(200),"
        "install_location VARCHAR(1024),install_source VARCHAR(1024),url VARCHAR(1024),"
        "uninstall_string VARCHAR(1024),reg_file varchar(500),node_name varchar(500),"
        "reg_path varchar(1024),install_date VARCHAR(1024),modified_timestamp INTEGER,"
        "arken_tag_value varchar(100),notes_icon VARCHAR(1024),tags_icon VARCHAR(1024),"
        "os_scheme_display VARCHAR(100),source_count_name VARCHAR(500),"
        "source_file varchar(500),artifacts_relation_source_file VARCHAR(1024),"
        "notes varchar(500))"_L1,
        "INSERT INTO install_apps_32(bookmark,parent_name,display_name,display_version,"
        "publisher,install_location,install_source,url,uninstall_string,reg_file,node_name,"
        "reg_path,install_date,modified_timestamp,source_file, os_scheme_display ,"
        " source_count_name) VALUES(0,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"_L1,
        "void windows_installed_applications_winos::extract_installed_applications_for_32()"_L1,
        "[extract_installed_applications_for_32]"_L1,
        "---ENDS---"_L1,
        " query_insert -----FAILED----- install_apps_32"_L1,
        true,
    },
    artifact_input::software_hive,
    values_of_subkeys_of("WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall"_L1),
    {},
    root_removal::where_it_stands,
    {
        values_of_subkeys_of(
            "Software\\WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall"_L1),
        "INSERT INTO install_apps_32(bookmark,system_account,parent_name,display_name,"
        "display_version,publisher,install_location,install_source,url,uninstall_string,reg_file,"
        "node_name,reg_path,install_date,modified_timestamp,source_file, os_scheme_display ,"
        " source_count_name) VALUES(0,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"_L1,
    },
    write_uninstall_applications,
};
