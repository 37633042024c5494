#ifndef OS_SCHEME_WORKER_H
#define OS_SCHEME_WORKER_H

#include "host_context_records.h"

#include <QElapsedTimer>
#include <QString>
#include <QStringList>
#include <QWidget>

class plugin_helper_functions;

/// What the three OS-scheme workers share: the settings that the plug-in object hands to each of
/// them. The workers offer these operations under names that carry their scheme as prefix
/// (macos_set_engine_type() and so on). Settings may be set again at any time and replace the
/// earlier values; nothing is checked.
class os_scheme_worker : public QWidget
{
public:
    ~os_scheme_worker() override;

protected:
    explicit os_scheme_worker(QWidget *parent);

    /// Takes the helper object, which stays the plug-in object's.
    void set_plugin_helper_obj(plugin_helper_functions *helper);
    /// Takes the number of rows from which this worker goes on counting.
    void set_record_count(qint64 count);
    /// Takes the number of tabs from which this worker goes on counting.
    void set_tab_processed_count(int count);
    /// Takes the source's root path and its scheme as shown to the examiner.
    void set_source_info(const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info &source_info);
    /// Takes the artefact's name; white space around it is removed.
    void set_plugin_name(const QString &name);
    /// Takes the result directory, the temporary directory and the result database's path.
    void set_destination_location(const QString &result_dir, const QString &tmp_dir,
                                  const QString &db_file);
    /// Takes the names of the result tables to fill.
    void set_essential_for_arken_desk_extraction(const QStringList &selected_tabs);
    /// Takes the host edition.
    void set_engine_type(int type);
    /// Lifts a cancellation; the counts stay.
    void set_essentials();
    /// Makes the loops of a running extraction stop at their next test.
    void cancel_extraction();
    /// Takes the source's number.
    void set_source_count(int count);

    qint64 record_count = 0;     ///< running total of rows inserted
    int tab_processed_count = 0; ///< running total of tabs done
    QElapsedTimer elapsed_timer; ///< since the last progress signal; started at each extraction
    plugin_helper_functions *helper_obj = nullptr; ///< owned by the plug-in object
    QString destination_tmp_dir_path;
    QString destination_db_file;
    QString destination_result_dir_path;
    QString source_root_path;            ///< where the source is mounted, ending in "/"
    int engine_type = -1;                ///< host edition
    bool bool_cancel_extraction = false; ///< polled by the loops of an extraction
    int source_count = -1;
    QString os_scheme_display;      ///< written into every row
    QStringList selected_tabs_list; ///< names of the result tables to fill
    QString plugin_name;
};

#endif
