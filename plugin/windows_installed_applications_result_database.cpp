#include "artifact_list.h"
#include "named_connection.h"
#include "plugin_helper_functions.h"
#include "plugin_static_function.h"
#include "sqlite_operation.h"
#include "windows_installed_applications.h"
#include "windows_installed_applications_ios_uid.h"
#include "windows_installed_applications_macos.h"
#include "windows_installed_applications_winos.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>

using namespace Qt::StringLiterals;

// The result database: where it lies, how its tables are created and how their rows are deleted.

void windows_installed_applications::set_destination_location(QString result_dir)
{
    const QString caller =
        u"void windows_installed_applications::set_destination_location(QString)"_s;
    plugin_static_function::app_debug(u"[set_destination_location] starts"_s, caller);

    if (!result_dir.endsWith(u'/'))
        result_dir.append(u'/');
    const QString file_name = pub_get_artifact_name().replace(u' ', u'_');
    destination_result_dir_path = result_dir + "Artifacts_Result/"_L1 + file_name + u'/';
    QDir().mkpath(destination_result_dir_path);
    destination_tmp_dir_path = destination_result_dir_path + "tmp/"_L1;
    QDir().mkpath(destination_tmp_dir_path);
    helper_obj->set_adhoc_parent_path(destination_tmp_dir_path);
    destination_db_file = destination_result_dir_path + file_name + ".sqlite"_L1;

    macos_obj->macos_set_destination_location(destination_result_dir_path, destination_tmp_dir_path,
                                              destination_db_file);
    ios_uid_obj->ios_uid_set_destination_location(destination_result_dir_path,
                                                  destination_tmp_dir_path, destination_db_file);
    winos_obj->winos_set_destination_location(destination_result_dir_path, destination_tmp_dir_path,
                                              destination_db_file);
    plugin_static_function::app_debug(u"[set_destination_location] ends"_s, caller);
}

void windows_installed_applications::create_destination_database()
{
    const QString caller = u"void windows_installed_applications::create_destination_database()"_s;
    plugin_static_function::app_debug(u"[create_destination_database] starts"_s, caller);
    create_db_tables();
    plugin_static_function::app_debug(u"[create_destination_database] ends"_s, caller);
}

void windows_installed_applications::create_db_tables()
{
    const QString caller = u"void windows_installed_applications::create_db_tables()"_s;
    plugin_static_function::app_debug(u"[create_db_tables] -starts"_s, caller);

    QSqlDatabase database = open_named_connection(caller, destination_db_file);
    if (!database.isOpen()) {
        plugin_static_function::app_debug(
            u"[create_db_tables]Destination Db opening failed for table creation"_s, caller);
        plugin_static_function::app_debug(database.lastError().text(), caller);
        plugin_static_function::app_debug(destination_db_file, caller);
        return;
    }
    database.transaction();
    lock_wait wait;
    for (const artifact *extracted : artifact_list()) {
        const result_tab &table = extracted->table;
        if (!execute_in_operation_by_dbreference(table.create_statement, database, caller, wait))
            plugin_static_function::app_debug(
                " table creation -----FAILED---- "_L1 + QString(table.name), caller);
    }
    // If a lock kept the tables from being created, there is nothing to commit and nothing to wait
    // for. If a reader holds the lock, the commit has to wait for it.
    wait.restore(database);
    database.commit();
    database.close();
    plugin_static_function::app_debug(u"[create_db_tables] -ends"_s, caller);
}

void windows_installed_applications::clear_db_tables()
{
    const QString caller = u"void windows_installed_applications::clear_db_tables()"_s;
    if (!QFile::exists(destination_db_file)) {
        plugin_static_function::app_debug(u"[clear_db_tables]DB not exists and so returning..."_s,
                                          caller);
        return;
    }
    if (engine_type < 0 || engine_type > 2)
        return;
    lock_wait wait;
    for (const QString &tab : std::as_const(selected_tabs_list)) {
        if (bool_cancel_extraction)
            return;
        execute_in_operation_by_dbpath("delete from '"_L1 + tab + u'\'', destination_db_file,
                                       caller, wait);
    }
}
