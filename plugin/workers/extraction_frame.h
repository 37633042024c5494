#ifndef EXTRACTION_FRAME_H
#define EXTRACTION_FRAME_H

#include "result_table_writer.h"
#include "windows_installed_applications_winos.h"

// What every extraction does around its records. A row function gets a record and its position in
// the walker's list and returns the row's own columns, or nothing for a record that gives no row;
// the frame adds the source columns that end every row.

/// Writes one row for each record until the extraction is cancelled; false when it was. The first
/// `certain_rows` of them go into the table even beyond what it takes from one hive.
template<typename record_list, typename row_function>
bool windows_installed_applications_winos::write_rows(result_table_writer &writer,
                                                      const record_list &records,
                                                      walked_source &source, row_function row_of,
                                                      qsizetype certain_rows)
{
    for (qsizetype position = 0; position < records.size(); ++position) {
        if (bool_cancel_extraction)
            return false;
        std::optional<QStringList> columns = row_of(records[position], position);
        if (!columns)
            continue;
        if (!source.output.takes(*columns, position < certain_rows)) {
            log_full_table(source);
            return true;
        }
        write_row(writer, *columns += source.columns);
    }
    return true;
}

/// Fills one table from a key of the SOFTWARE hive. Rows name the primary hive even when its
/// backup copy was read.
template<typename walker_type, typename record_type, typename row_function>
void windows_installed_applications_winos::extract_from_software_hive(
    const result_tab &tab, const key_reading<record_type> &reading, row_function row_of)
{
    run_extraction(tab, [&](result_table_writer &writer) {
        walker_type walker;
        const QString hive_path =
            parse_software_hive(walker, reading.key_path, reading.read_key_values);
        if (hive_path.isEmpty())
            return false;
        log_early_end(tab, hive_path, walker);
        walked_source source(tab, hive_path, reading.key_path,
                             source_columns(without_source_root(hive_path_software), {}),
                             most_output_of(hive_path));
        return write_rows(writer, walker.*reading.records, source, row_of);
    });
}

/// Fills one table from a key of every user's hive; the row function gets the hive as well.
template<typename walker_type, typename record_type, typename row_function>
void windows_installed_applications_winos::extract_from_user_hives(
    const result_tab &tab, const key_reading<record_type> &reading,
    relative_path_rule relative_path, row_function row_of)
{
    run_extraction(tab, [&](result_table_writer &writer) {
        walker_type walker;
        for (const QString &path : std::as_const(ntuser_path_list)) {
            if (bool_cancel_extraction)
                return false;
            const user_source hive = describe_user_source(path, relative_path);
            (walker.*reading.records).clear();
            walker.start_registry_parse(path, reading.key_path, reading.read_key_values);
            log_early_end(tab, path, walker);
            walked_source source(tab, path, reading.key_path, hive.source_columns,
                                 most_output_of(path));
            const auto row_of_hive = [&](const record_type &record, qsizetype position) {
                return row_of(hive, record, position);
            };
            if (!write_rows(writer, walker.*reading.records, source, row_of_hive))
                return false;
        }
        return true;
    });
}

#endif
