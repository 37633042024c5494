#include "extraction_frame.h"
#include "plugin_static_function.h"

#include <QDirIterator>

using namespace Qt::StringLiterals;

const result_tab metro_apps_tab = {
    "metro_apps"_L1,
    "CREATE TABLE IF NOT EXISTS metro_apps(bookmark integer,system_account varchar(100),"
    "INT INTEGER PRIMARY KEY,filename VARCHAR(300),file_path VARCHAR(500),"
    "windows_path VARCHAR(500),creation_timestamp INTEGER,modification_timestamp INTEGER,"
    "last_access_timestamp INTEGER,arken_tag_value varchar(100),notes_icon VARCHAR(1024),"
    "tags_icon VARCHAR(1024),os_scheme_display VARCHAR(100),"
    "source_count_name VARCHAR(500),source_file varchar(500),"
    "artifacts_relation_source_file VARCHAR(1024),notes varchar(500))"_L1,
    "insert into metro_apps(bookmark,system_account,filename,file_path,windows_path,"
    "creation_timestamp,modification_timestamp,last_access_timestamp,source_file,"
    " os_scheme_display , source_count_name) values(0,?,?,?,?,?,?,?,?,?,?)"_L1,
    "void windows_installed_applications_winos::extract_metro_apps()"_L1,
    "[extract_metro_apps]"_L1,
    "---STARTS---"_L1,
    " query_insert -----FAILED----- metro_apps"_L1,
    true,
};

void windows_installed_applications_winos::extract_metro_apps()
{
    run_extraction(metro_apps_tab, [this](result_table_writer &writer) {
        for (const QString &folder : std::as_const(packages_dir_list)) {
            if (bool_cancel_extraction || !write_package_rows(writer, folder))
                return false;
        }
        return true;
    });
}

/// Writes one row for each entry of a user's package folder; false when cancelled.
bool windows_installed_applications_winos::write_package_rows(result_table_writer &writer,
                                                              const QString &folder)
{
    const user_source source =
        describe_user_source(folder, &windows_installed_applications_winos::without_source_root);
    QDirIterator entries(folder);
    while (entries.hasNext()) {
        const QString path = entries.next();
        const QString name = entries.fileName();
        if (name == "."_L1 || name == ".."_L1)
            continue;
        if (bool_cancel_extraction)
            return false;
        write_row(writer, package_columns(path, name, source.user_name) + source.source_columns);
    }
    return true;
}

/// The times are looked up at the source root followed by the entry's whole path. Only for a source
/// mounted at "/" does that name the entry; elsewhere they stay 0, which is what a row has to show.
QStringList windows_installed_applications_winos::package_columns(const QString &path,
                                                                  const QString &name,
                                                                  const QString &user_name) const
{
    QString file_path =
        plugin_static_function::get_complete_file_path(path, user_name, virtual_source_path);
    if (file_path.startsWith(u'/'))
        file_path.remove(0, 1);
    const auto times = plugin_static_function::get_posix_timestamp(file_path, source_root_path);
    return {user_name,
            name,
            plugin_static_function::get_relative_file_path(without_source_root(file_path),
                                                           user_name, virtual_source_path),
            prepare_windows_path(path),
            QString::number(times.creation_time),
            QString::number(times.last_modification_time),
            QString::number(times.last_access_time)};
}

QString windows_installed_applications_winos::prepare_windows_path(QString path) const
{
    if (path.isEmpty())
        return {};
    QString windows_path = "C:/"_L1 + cut_by_source_root_length(path);
    return windows_path.replace(u'/', u'\\');
}
