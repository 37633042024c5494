#include "extraction_frame.h"

#include "plugin_static_function.h"

#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr auto software_backup_path = "Windows/System32/config/RegBack/SOFTWARE"_L1;
constexpr qint64 progress_interval_ms = 1000;

/// Names come from the evidence: none of them may end or reorder a line of the log.
QString printable(QString text)
{
    for (QChar &character : text) {
        const bool is_line_end =
            character == QChar::LineSeparator || character == QChar::ParagraphSeparator;
        if (is_line_end || (!character.isPrint() && !character.isSurrogate()))
            character = u'?';
    }
    return text;
}

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

hive_output::limit windows_installed_applications_winos::most_output_of(const QString &path) const
{
    return hive_output::limit_for(QFileInfo(path).size());
}

/// Walks a key of the SOFTWARE hive, or of its backup copy when the hive cannot be opened. Returns
/// the path of the one that was walked; empty when neither can be.
QString windows_installed_applications_winos::parse_software_hive(registry &walker,
                                                                  QLatin1StringView key_path,
                                                                  bool read_key_values)
{
    for (const QString &path : {hive_path_software, source_root_path + software_backup_path}) {
        if (walker.start_registry_parse(path, key_path, read_key_values) != -1)
            return path;
    }
    return {};
}

/// Logs that the last walk of the hive ended before its end, if it did.
void windows_installed_applications_winos::log_early_end(const result_tab &tab,
                                                         const QString &hive_path,
                                                         const registry &walker)
{
    if (!walker.early_end().isEmpty())
        log_left_out(tab, hive_path, walker.early_end(),
                     u"it has the same data read again and again; what follows is not read"_s);
}

/// Logs, once for each hive, that rows are left out.
void windows_installed_applications_winos::log_full_table(walked_source &source)
{
    if (std::exchange(source.is_full_table_logged, true))
        return;
    log_left_out(source.tab, source.hive_path, source.key_path,
                 u"the table takes %1 rows and %2 bytes of text from a hive; "
                 "further rows are left out"_s.arg(source.output.most().rows)
                     .arg(source.output.most().text_bytes));
}

void windows_installed_applications_winos::log_left_out(const result_tab &tab,
                                                        const QString &hive_path,
                                                        const QString &key_path,
                                                        const QString &what)
{
    plugin_static_function::app_debug(
        tab.log_line("---ENDS EARLY--- "_L1) +
            printable(hive_path + ", key "_L1 + key_path + ": "_L1 + what),
        tab.signature);
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
