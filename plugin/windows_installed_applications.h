#ifndef WINDOWS_INSTALLED_APPLICATIONS_H
#define WINDOWS_INSTALLED_APPLICATIONS_H

#include "host_context_records.h"

#include <QFrame>
#include <QSet>
#include <QString>
#include <QStringList>

class Ui_windows_installed_applications;
class ios_uid_backup_parser;
class plugin_helper_functions;
class windows_installed_applications_ios_uid;
class windows_installed_applications_macos;
class windows_installed_applications_winos;

/// The plug-in object that the host drives. It hands every setting to the run context and to the
/// three OS-scheme workers, lets the worker of the source's scheme extract, and relays the workers'
/// progress.
///
/// The host calls through the table of virtual operations: their order, and their passing of
/// records and lists by value, are a binary contract. Settings come before the operations that use
/// them, pub_set_essentials() first and pub_find_source_file() before pub_extract_artifacts();
/// nothing is checked. Nothing is thrown and nothing returned: failures are lines of the debug log.
/// All calls come on one thread, and signals are delivered synchronously.
///
/// A host that wants to know what the plug-in extracts reads the object's dynamic property
/// "artifacts", see described_artifacts(). A host that wants more than every host gets sets the
/// dynamic property "extraction_options" before pub_find_source_file(), see extraction_options; it
/// is read there and at pub_extract_artifacts(), and the object never changes it.
class windows_installed_applications : public QFrame
{
    Q_OBJECT

public:
    explicit windows_installed_applications(QWidget *parent = nullptr);
    ~windows_installed_applications() override;

    /// The host's operations. host/artifact_plugin_interface.h says what each takes, does and
    /// leaves behind; the test "operations" compares the two lists.
    virtual void pub_set_engine_type(int type);
    virtual QString pub_get_artifact_name();
    virtual void pub_set_essentials();
    virtual void pub_set_source_count(int count);
    virtual void pub_set_ios_uid_backup_pointer(ios_uid_backup_parser *parser);
    virtual void pub_set_examiner_machine_info(
        struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info info);
    virtual void pub_set_general_info(struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info info);
    virtual void pub_set_source_info(struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info info);
    virtual void pub_set_essential_for_arken_desk_extraction(QStringList selected_tabs,
                                                             QStringList ignored);
    virtual void pub_set_result_directory(QString result_dir);
    virtual void pub_create_db_tables();
    virtual void pub_set_clear_db(bool clear);
    virtual void pub_cancel_extraction();
    virtual void pub_find_source_file();
    virtual void pub_set_extended_attributes_list(QStringList attributes);
    virtual void pub_extract_artifacts();
    virtual void pub_generate_chat_html_pages();
    virtual void pub_remove_temporary_asthetics();

    /// Stores the three destination paths below `result_dir` (with or without a trailing slash),
    /// makes the result and the temporary directory and tells the helper and the workers. A
    /// directory that cannot be made is not reported here: opening the database will.
    void set_destination_location(QString result_dir);
    /// Logs its start, runs create_db_tables() and logs its end.
    void create_destination_database();
    /// Creates those of the tables that are missing. A failure is logged and the next table
    /// tried.
    void create_db_tables();
    /// Deletes all rows of the selected tables; stops when cancelled.
    void clear_db_tables();
    /// Resets both totals and lifts a cancellation, here and everywhere below.
    void set_essentials();

signals:
    /// `records`: running total of rows inserted.
    void signal_extracted_records_of_plugin_overall(qint64 records);
    /// `tab_count`: running total of tabs done.
    void signal_tab_processed_of_plugin_overall(int tab_count);

public slots:
    /// Marks the process as finished, whatever `status`.
    void slot_m_process_finished(int status);
    /// Takes a worker's record total and passes it to the host.
    void slot_extracted_records_of_plugin(qint64 rec);
    /// Takes a worker's tab total and passes it to the host.
    void slot_total_tabs_processed(int tab_count);

protected:
    Ui_windows_installed_applications *ui;
    int tabs_processed_count = 0;
    bool bool_process_finished = false; ///< kept for the host's process slot; nothing reads it
    qint64 extracted_records_count = 0;
    QString destination_tmp_dir_path;
    QString destination_db_file;
    QString destination_result_dir_path;
    int engine_type = -1;
    bool bool_cancel_extraction = false;
    QString os_scheme_internal; ///< chooses the worker: "macOS", "iOS_UID" or "winOS"
    QStringList selected_tabs_list;
    plugin_helper_functions *helper_obj = nullptr;
    windows_installed_applications_macos *macos_obj = nullptr;
    windows_installed_applications_ios_uid *ios_uid_obj = nullptr;
    windows_installed_applications_winos *winos_obj = nullptr;

private:
    enum class os_scheme
    {
        macos,
        ios_uid,
        winos,
        unknown
    };

    os_scheme source_scheme() const;
    void log_unknown_scheme(const QString &caller);
    void hand_over_totals();
    void read_extraction_options(const QString &caller);

    QSet<QString> m_told_of_options; ///< since pub_set_essentials()
};

#endif
