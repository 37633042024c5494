#include "extraction_frame.h"

#include "plugin_static_function.h"

using namespace Qt::StringLiterals;

namespace {

constexpr auto software_backup_path = "Windows/System32/config/RegBack/SOFTWARE"_L1;
constexpr qint64 progress_interval_ms = 1000;

} // namespace

/// Opens the result table, lets `write_rows_of_source` fill it, and logs the end of the run unless
/// that returned false (cancelled, or no hive to read). Rows written are committed either way.
void windows_installed_applications_winos::run_extraction(
    const result_tab &tab, const std::function<bool(result_table_writer &)> &write_rows_of_source)
{
    plugin_static_function::app_debug(tab.log_line(tab.opening), tab.signature);
    bool is_complete = false;
    {
        result_table_writer writer(tab, destination_db_file);
        is_complete = writer.open() && write_rows_of_source(writer);
    }
    if (is_complete)
        plugin_static_function::app_debug(tab.log_line("---ENDS---"_L1), tab.signature);
}

/// Inserts one row, counts it and signals progress, at most about once a second.
void windows_installed_applications_winos::write_row(result_table_writer &writer,
                                                     const QStringList &values)
{
    if (!writer.insert(values))
        return;
    ++record_count;
    if (elapsed_milliseconds() > progress_interval_ms) {
        emit signal_extracted_records_of_plugin_winos(record_count);
        elapsed_timer.restart();
    }
}

qint64 windows_installed_applications_winos::elapsed_milliseconds() const
{
    return elapsed_timer.elapsed();
}

/// Walks a key of the SOFTWARE hive, or of its backup copy when the hive cannot be opened; false
/// when neither can.
bool windows_installed_applications_winos::parse_software_hive(registry &walker,
                                                               QLatin1StringView key_path,
                                                               bool read_key_values)
{
    return walker.start_registry_parse(hive_path_software, key_path, read_key_values) != -1 ||
           walker.start_registry_parse(source_root_path + software_backup_path, key_path,
                                       read_key_values) != -1;
}

windows_installed_applications_winos::user_source
windows_installed_applications_winos::describe_user_source(const QString &path,
                                                           relative_path_rule relative_path) const
{
    const QString user_name =
        plugin_static_function::extract_user_name_from_sourcefile(path, source_root_path);
    return {user_name, source_columns((this->*relative_path)(path), user_name)};
}

/// The columns that end every row: source_file, os_scheme_display and source_count_name.
QStringList windows_installed_applications_winos::source_columns(const QString &relative_path,
                                                                 const QString &user_name) const
{
    const QString source_file = plugin_static_function::get_final_artifact_source_file(
                                    relative_path, user_name, virtual_source_path)
                                    .display_path;
    return {source_file, os_scheme_display, plugin_static_function::get_source_count_name()};
}

/// Removes the source root from the start of `path`, if it stands there.
QString windows_installed_applications_winos::without_source_root(const QString &path) const
{
    return path.startsWith(source_root_path) ? path.mid(source_root_path.size()) : path;
}

/// Removes as many leading characters as the source root has, whatever they are.
QString windows_installed_applications_winos::cut_by_source_root_length(const QString &path) const
{
    return path.mid(source_root_path.size());
}
