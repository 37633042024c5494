#ifndef HOST_DOUBLE_H
#define HOST_DOUBLE_H

#include "evidence_volume.h"
#include "host_context_records.h"
#include "run_context_backup.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <memory>

class windows_installed_applications;

namespace test_support {

/// When the plug-in signals the number of rows.
enum class row_progress
{
    throttled, ///< as within one second: at the end of each tab alone
    every_row  ///< after each row too, as if a second had passed
};

/// Everything that a host sets before a run.
struct host_settings
{
    int engine_type = 0;
    int source_count = 1;
    bool clear_tables = false;
    QStringList tabs;      ///< all unless changed
    QString result_folder; ///< a temporary one unless changed
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info source;
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info general;
    struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info machine;
};

/// Drives a plug-in object as the host does, through its virtual operations in their documented
/// order, and notes its signals. At destruction the run context is what it was before.
class host_double
{
public:
    /// A host that has mounted the volume, with the accounts the volume has by now.
    explicit host_double(const evidence::evidence_volume &volume,
                         row_progress progress = row_progress::throttled);
    ~host_double();
    host_double(const host_double &) = delete;
    host_double &operator=(const host_double &) = delete;

    /// What set_up() will hand over; may be changed between runs.
    host_settings settings;

    /// The plug-in object that is driven.
    windows_installed_applications &plugin() { return *m_plugin; }

    /// Hands over all settings, creates the tables and, if asked to, clears those of the tabs.
    void set_up();

    /// Lets the plug-in find its source files and extract.
    void extract();

    /// Both.
    void run();

    /// Has the temporary folder removed, as the host does last.
    void clean_up();

    /// The signals so far in their order: "records TOTAL" and "tabs TOTAL".
    QStringList events() const { return m_events; }
    void clear_events() { m_events.clear(); }

    /// Called within each signal, after it was noted.
    void on_event(const std::function<void(const QString &event)> &action) { m_action = action; }

    /// Cancels from within the signal that is the given one of all noted, counted from 1.
    void cancel_at_event(qsizetype number);

    /// Cancels from within the first signal with this total of rows or more.
    void cancel_at_row(qint64 total);

    /// Where the result database must be.
    QString database_path() const;

private:
    void note(const QString &event);

    run_context_backup m_backup;
    QTemporaryDir m_result_folder;
    QStringList m_events;
    std::function<void(const QString &)> m_action;
    std::unique_ptr<windows_installed_applications> m_plugin;
};

/// The names of all result tables in the order in which they are filled.
QStringList all_tabs();

} // namespace test_support

#endif
