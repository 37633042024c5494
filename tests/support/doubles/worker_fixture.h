#ifndef WORKER_FIXTURE_H
#define WORKER_FIXTURE_H

#include "artifact_list.h"
#include "evidence_volume.h"
#include "log_capture.h"
#include "result_database.h"
#include "windows_installed_applications_winos.h"

#include <QList>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>

namespace test_support {

/// The Windows worker with its settings and findings open to tests, and with their clock.
class winos_probe : public windows_installed_applications_winos
{
    using worker = windows_installed_applications_winos;

public:
    using worker::bool_cancel_extraction;
    using worker::destination_db_file;
    using worker::elapsed_timer;
    using worker::engine_type;
    using worker::hive_path_software;
    using worker::hive_path_system;
    using worker::ntuser_path_list;
    using worker::os_scheme_display;
    using worker::packages_dir_list;
    using worker::record_count;
    using worker::run;
    using worker::selected_tabs_list;
    using worker::source_root_path;
    using worker::tab_processed_count;
    using worker::virtual_source_path;

    /// What the worker gets as the milliseconds since its last progress signal.
    qint64 milliseconds = 0;

    /// What it would get without the probe.
    qint64 real_milliseconds() const { return worker::elapsed_milliseconds(); }

    /// What a table gets from one hive at most.
    hive_output::limit most_output;

protected:
    qint64 elapsed_milliseconds() const override { return milliseconds; }
    hive_output::limit most_output_of(const QString & /*path*/) const override
    {
        return most_output;
    }
};

/// A Windows worker between an evidence volume and a result database that has its tables; the
/// debug log is captured. The source is number 3, its scheme is shown as "Windows", and the clock
/// stands still.
class worker_fixture
{
public:
    worker_fixture();

    log_capture log;
    evidence::evidence_volume volume;
    winos_probe worker;

    /// Hands a source over to the worker and to the run context.
    void set_source(const QString &root, const QStringList &accounts);

    /// Writes the volume's hives, hands the volume with its accounts over as the source, lets the
    /// worker look for its files and forgets the log so far.
    void find_files();

    /// Extracts the artefact with the table; throws std::out_of_range for another name.
    void extract(const QString &tab);

    /// Calls \a action with the running total after each row, as if a second had passed.
    void on_row(const std::function<void(qint64 total)> &action);

    /// The totals that the worker signalled.
    QList<qint64> signalled_totals() const { return m_signalled_totals; }

    result_database database() const { return result_database(database_path()); }
    QString database_path() const;

    /// The texts of the table's own columns, those between the row id and the host's columns, with
    /// the account in front and the source file, the scheme and the source's name behind.
    QList<QStringList> rows(const QString &tab) const;

private:
    QTemporaryDir m_result_folder;
    QList<qint64> m_signalled_totals;
};

/// The artefact with the table; throws std::out_of_range when there is none.
const artifact &artifact_named(const QString &table);

/// The two lines of the log of an undisturbed run of the operation.
QStringList whole_run_log(const QString &operation);

/// The line of its log for something that is left out.
QString early_end_line(const QString &operation, const QString &hive_path, const QString &key,
                       const QString &what);

} // namespace test_support

#endif
