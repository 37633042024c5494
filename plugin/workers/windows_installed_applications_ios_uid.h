#ifndef WINDOWS_INSTALLED_APPLICATIONS_IOS_UID_H
#define WINDOWS_INSTALLED_APPLICATIONS_IOS_UID_H

#include "os_scheme_worker.h"

class ios_uid_backup_parser;

/// Worker for iOS backups, which hold nothing of this artefact: keeps its settings and finishes at
/// once.
class windows_installed_applications_ios_uid : public os_scheme_worker
{
    Q_OBJECT

public:
    explicit windows_installed_applications_ios_uid(QWidget *parent = nullptr);
    ~windows_installed_applications_ios_uid() override;

    void ios_uid_set_plugin_helper_obj(plugin_helper_functions *helper)
    {
        set_plugin_helper_obj(helper);
    }
    void ios_uid_set_record_count(qint64 count) { set_record_count(count); }
    void ios_uid_set_tab_processed_count(int count) { set_tab_processed_count(count); }
    /// Keeps nothing.
    void ios_uid_set_examiner_machine_info(
        const struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info & /*info*/)
    {
    }
    /// Keeps nothing.
    void
    ios_uid_set_general_info(const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info & /*info*/)
    {
    }
    /// Takes the source's root path and displayed scheme.
    void
    ios_uid_set_source_info(const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info &source_info)
    {
        set_source_info(source_info);
    }
    void ios_uid_set_plugin_name(const QString &name) { set_plugin_name(name); }
    void ios_uid_set_destination_location(const QString &result_dir, const QString &tmp_dir,
                                          const QString &db_file)
    {
        set_destination_location(result_dir, tmp_dir, db_file);
    }
    void ios_uid_set_essential_for_arken_desk_extraction(const QStringList &selected_tabs)
    {
        set_essential_for_arken_desk_extraction(selected_tabs);
    }
    void ios_uid_set_engine_type(int type) { set_engine_type(type); }
    void ios_uid_set_essentials() { set_essentials(); }
    void ios_uid_cancel_extraction() { cancel_extraction(); }
    void ios_uid_set_source_count(int count) { set_source_count(count); }
    /// Keeps nothing.
    void ios_uid_set_artifacts_info(
        const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info & /*info*/)
    {
    }
    /// Takes the host's backup parser, which is only kept.
    void ios_uid_set_ios_backup_pointer(ios_uid_backup_parser *parser);

    /// Runs find_source_file().
    void ios_uid_find_artifacts_source();
    /// Starts the timer, runs extract_plugin_artifacts() and signals the record total.
    void ios_uid_extract_artifacts();

    /// iOS sources hold nothing of this artefact: does nothing.
    void find_source_file();
    /// iOS sources hold nothing of this artefact: does nothing.
    void extract_plugin_artifacts();

signals:
    /// `records`: running total of rows inserted.
    void signal_extracted_records_of_plugin_ios_uid(qint64 records);
    /// `count`: running total of tabs done.
    void signal_total_tabs_processed_ios_uid(int count);

protected:
    ios_uid_backup_parser *ios_backup_pointer = nullptr;
};

#endif
