#include "conversions.h"
#include "extraction.h"
#include "plugin_static_function.h"

#include <QDirIterator>

using namespace Qt::StringLiterals;

namespace {

/// The times are looked up at the source's root followed by the entry's whole path. Only for a
/// source mounted at "/" does that name the entry; elsewhere they stay 0, which is what a row has
/// to show.
QStringList package_columns(const extraction &run, const QString &path, const QString &name,
                            const QString &user_name)
{
    const extraction_context &context = run.context();
    QString file_path = plugin_static_function::get_complete_file_path(path, user_name,
                                                                       context.virtual_source_path);
    if (file_path.startsWith(u'/'))
        file_path.remove(0, 1);
    const auto times =
        plugin_static_function::get_posix_timestamp(file_path, context.source_root_path);
    return {user_name,
            name,
            plugin_static_function::get_relative_file_path(run.without_source_root(file_path),
                                                           user_name, context.virtual_source_path),
            windows_path_of(path, context.source_root_path),
            QString::number(times.creation_time),
            QString::number(times.last_modification_time),
            QString::number(times.last_access_time)};
}

/// Writes one row for each entry of a user's package folder; false when cancelled.
bool write_package_folder(extraction &run, const QString &folder)
{
    const QString user_name = run.user_of(folder);
    const QStringList source_columns = run.source_columns(folder, user_name);
    QDirIterator entries(folder);
    while (entries.hasNext()) {
        const QString path = entries.next();
        const QString name = entries.fileName();
        if (name == "."_L1 || name == ".."_L1)
            continue;
        if (run.is_cancelled())
            return false;
        run.write_row(package_columns(run, path, name, user_name) + source_columns);
    }
    return true;
}

bool write_packages(extraction &run)
{
    for (const QString &folder : run.context().package_folder_paths) {
        if (run.is_cancelled() || !write_package_folder(run, folder))
            return false;
    }
    return true;
}

} // namespace

extern const artifact metro_apps_artifact = {
    {
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
    },
    artifact_input::package_folders,
    {},
    {},
    root_removal::where_it_stands,
    {},
    write_packages,
};
