#ifndef HIVE_ROWS_H
#define HIVE_ROWS_H

#include "extraction.h"
#include "registry.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <utility>

/// The rows that one hive gives to the table of a running extraction.
///
/// A row function gets a record and its position in the walker's list. It returns the row's own
/// columns, or nothing for a record that gives no row; the columns of the source are added here.
class hive_rows
{
public:
    /// The hive of a user's account.
    static hive_rows of_user(extraction &run, const QString &hive_path);

    /// The SOFTWARE hive, or its backup copy. Rows name the primary hive whichever was read.
    static hive_rows of_machine(extraction &run, const QString &hive_path);

    /// The account; empty for the machine's hive.
    const QString &user_name() const { return m_user_name; }

    /// Writes one row for each record until the extraction is cancelled; false when it was. The
    /// first `certain_rows` of them go into the table even beyond what it takes from one hive.
    template<typename record_list, typename row_function>
    bool write(const record_list &records, row_function columns_of, qsizetype certain_rows = 0);

    /// Logs what was unusual in the walker's last walk of the hive: it ended before its end, some
    /// of its texts hold half of a surrogate pair, or, if asked for, something could not be read.
    void log_findings(const registry &walker) const;

private:
    hive_rows(extraction &run, const QString &hive_path, const QString &user_name,
              const QString &named_path);

    void log_full_table();
    void log_left_out(const QString &key_path, const QString &what) const;
    QString place(const QString &key_path) const;

    extraction &m_run;
    QString m_hive_path;
    QString m_user_name;
    QStringList m_source_columns; ///< end every row
    hive_output m_output;
    bool m_is_full_table_logged = false;
};

/// Lets `walker` read the key of the user's hive at `path`, or of the file that is read in its
/// place, with the options of the run. A hive that cannot be opened gives no records.
void walk_user_hive(const extraction &run, registry &walker, const QString &path,
                    const listed_registry_key &key);

/// Lets `walker` read the artefact's key of the SOFTWARE hive, or of its backup copy when the hive
/// cannot be opened. Returns the path of the one that was read; empty when neither can be.
QString walk_software_hive(const extraction &run, registry &walker);

/// Prepares a walker for the options of the run.
void prepare_walker(const extraction &run, registry &walker);

/// Closes the hive at `path`, if it was kept open.
void close_hive(const extraction &run, const QString &path);

/// Calls `write_rows_of` with the path of each user's hive. False when that returned false, or when
/// the extraction was cancelled before a hive.
template<typename function>
bool for_each_user_hive(const extraction &run, function write_rows_of)
{
    for (const QString &path : run.context().user_hive_paths) {
        if (run.is_cancelled() || !write_rows_of(path))
            return false;
        if (run.context().is_last_of_users)
            close_hive(run, path);
    }
    return true;
}

/// Logs the walk's findings and writes one row for each of its records; false when cancelled.
template<typename record_list, typename row_function>
bool write_walked(hive_rows rows, const registry &walker, const record_list &records,
                  row_function columns_of)
{
    rows.log_findings(walker);
    return rows.write(records, [&](const auto &record, qsizetype position) {
        return columns_of(rows, record, position);
    });
}

/// Writes one row for each record that a walker of the type finds in the artefact's key of the
/// SOFTWARE hive. `columns_of` is a row function that gets the hive's rows first. False when
/// cancelled, or when there is no such hive to read.
template<typename walker_type, typename record_type, typename row_function>
bool write_rows_of_machine(extraction &run, QList<record_type> registry::*records,
                           row_function columns_of)
{
    walker_type walker;
    const QString path = walk_software_hive(run, walker);
    return !path.isEmpty() &&
           write_walked(hive_rows::of_machine(run, path), walker, walker.*records, columns_of);
}

/// The same for a key of every user's hive. False when cancelled.
template<typename walker_type, typename record_type, typename row_function>
bool write_rows_of_users(extraction &run, const listed_registry_key &key,
                         QList<record_type> registry::*records, row_function columns_of)
{
    walker_type walker;
    return for_each_user_hive(run, [&](const QString &path) {
        (walker.*records).clear();
        walk_user_hive(run, walker, path, key);
        return write_walked(hive_rows::of_user(run, path), walker, walker.*records, columns_of);
    });
}

template<typename record_list, typename row_function>
bool hive_rows::write(const record_list &records, row_function columns_of, qsizetype certain_rows)
{
    for (qsizetype position = 0; position < records.size(); ++position) {
        if (m_run.is_cancelled())
            return false;
        std::optional<QStringList> columns = columns_of(records[position], position);
        if (!columns)
            continue;
        if (!m_output.takes(*columns, position < certain_rows)) {
            log_full_table();
            return true;
        }
        m_run.write_row(*columns += m_source_columns);
    }
    return true;
}

#endif
