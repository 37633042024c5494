#include "extraction_frame.h"
#include "parse_installed_applications.h"

#include <QStringBuilder>

using namespace Qt::StringLiterals;

// A run opens with the line that also ends it: these two extractors have no other opening.

const result_tab install_apps_64_tab = {
    "install_apps_64"_L1,
    "CREATE TABLE IF NOT EXISTS install_apps_64(bookmark integer,"
    "system_account varchar(100),INT INTEGER PRIMARY KEY,parent_name VARCHAR(500),"
    "display_name VARCHAR(200),display_version VARCHAR(200),publisher VARCHAR(200),"
    "install_location VARCHAR(1024),install_source VARCHAR(1024),url VARCHAR(1024),"
    "uninstall_string VARCHAR(1024),reg_file varchar(500),node_name varchar(500),"
    "reg_path varchar(1024),install_date VARCHAR(1024),modified_timestamp INTEGER,"
    "arken_tag_value varchar(100),notes_icon VARCHAR(1024),tags_icon VARCHAR(1024),"
    "os_scheme_display VARCHAR(100),source_count_name VARCHAR(500),"
    "source_file varchar(500),artifacts_relation_source_file VARCHAR(1024),"
    "notes varchar(500))"_L1,
    "INSERT INTO install_apps_64(bookmark,parent_name,display_name,display_version,"
    "publisher,install_location,install_source,url,uninstall_string,reg_file,node_name,"
    "reg_path,install_date,modified_timestamp,source_file, os_scheme_display ,"
    " source_count_name) VALUES(0,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"_L1,
    "void windows_installed_applications_winos::extract_installed_applications()"_L1,
    "[extract_installed_applications]"_L1,
    "---ENDS---"_L1,
    " query_insert -----FAILED----- install_apps_64"_L1,
    true,
};

const result_tab install_apps_32_tab = {
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
};

void windows_installed_applications_winos::extract_installed_applications()
{
    extract_uninstall_key(install_apps_64_tab, "Microsoft\\Windows\\CurrentVersion\\Uninstall"_L1);
}

void windows_installed_applications_winos::extract_installed_applications_for_32()
{
    extract_uninstall_key(install_apps_32_tab,
                          "WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall"_L1);
}

void windows_installed_applications_winos::extract_uninstall_key(const result_tab &tab,
                                                                 QLatin1StringView key_path)
{
    const key_reading<registry::struct_installed_apps> reading = {
        key_path, false, &registry::installed_apps_records};
    const QString reg_path = key_path;
    extract_from_software_hive<parse_installed_applications>(
        tab, reading,
        [&](const registry::struct_installed_apps &app, qsizetype) -> std::optional<QStringList> {
            return QStringList{app.key_name,
                               app.display_name,
                               app.display_version,
                               app.publisher,
                               app.install_location,
                               app.install_source,
                               app.url_info_about,
                               app.uninstall_string,
                               u"SOFTWARE"_s,
                               u"Uninstall"_s,
                               reg_path,
                               get_install_date(app.install_date),
                               app.modified_timestamp};
        });
}

QString windows_installed_applications_winos::get_install_date(QString install_date)
{
    if (install_date.isEmpty())
        return {};
    const QStringView date = install_date;
    return date.mid(6, 2) % u'/' % date.mid(4, 2) % u'/' % date.mid(0, 4);
}
