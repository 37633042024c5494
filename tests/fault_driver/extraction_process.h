#ifndef EXTRACTION_PROCESS_H
#define EXTRACTION_PROCESS_H

#include "evidence_volume.h"
#include "faulty_disk.h"

#include <QProcess>
#include <QString>
#include <QStringList>

namespace test_support {

/// What the process returns when this machine does not allow what was asked for.
constexpr int not_permitted_exit_code = 77;

/// What one run of the process left behind.
struct extraction_outcome
{
    bool completed = false;     ///< whether the extraction came to its end
    bool had_fault = false;     ///< whether the fault took place
    bool not_permitted = false; ///< whether this machine does not allow what was asked for
    int signal_number = 0;      ///< the signal that ended the process, or 0
    QStringList events;         ///< the signals' events as host_double notes them
    qint64 steps = 0;           ///< as disk_counts counts, and so are the next two
    qint64 writes = 0;
    qint64 hive_opens = 0;
    qint64 microseconds = 0; ///< from the first call of the plug-in to the last one's return
    qint64 cpu_ms = 0;       ///< of the whole process
    qint64 peak_kib = 0;     ///< most memory held at once
    qint64 waited_us = 0;    ///< how long SQLite meant to wait for locks
    QByteArray errors;       ///< what it wrote to standard error
    int finished_tabs = 0;   ///< as far as the events show
    int finished_tabs_before_fault = 0;
};

/// A run of all tabs over a volume, as host_double does it, in a process of its own that can be let
/// fail. The options chain.
class extraction_process
{
public:
    extraction_process(const evidence::evidence_volume &volume, const QString &result_folder);

    /// Accounts besides those that the volume knows.
    extraction_process &accounts(const QStringList &names);

    /// The tabs to extract; all by default.
    extraction_process &tabs(const QStringList &names);

    /// Has the rows of the tabs deleted before the extraction.
    extraction_process &clear_tables();

    /// Writes the debug log to this file, which must exist.
    extraction_process &log(const QString &path);

    /// Lets the disk of the result folder fail, or watches it for the counts alone.
    extraction_process &fault(disk_fault fault, qint64 at);

    /// Limits how long any file may become, in bytes.
    extraction_process &file_size_limit(qint64 bytes);

    /// Limits how much memory may be mapped during the run, in bytes beyond what the process has
    /// mapped before it. Linux only.
    extraction_process &memory_limit(qint64 bytes);

    /// Kills the process so long after the plug-in was first called.
    extraction_process &kill_after(qint64 microseconds);

    /// Mounts the source read-only, for the process alone. Not permitted everywhere.
    extraction_process &read_only_source();

    /// Lets file permissions bind the process even when the tests run as root.
    extraction_process &without_privileges();

    /// Runs the process under another program: its name and arguments.
    extraction_process &under(const QStringList &command);

    /// Runs the process and waits for its end.
    extraction_outcome run();

private:
    extraction_process &option(const QString &name, const QString &value);

    QStringList m_command;
    QStringList m_arguments;
    bool m_unprivileged = false;
};

} // namespace test_support

#endif
