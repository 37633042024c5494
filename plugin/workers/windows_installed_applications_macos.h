#ifndef WINDOWS_INSTALLED_APPLICATIONS_MACOS_H
#define WINDOWS_INSTALLED_APPLICATIONS_MACOS_H

#include "os_scheme_worker.h"

/// Worker for macOS sources, which hold nothing of this artefact: keeps its settings and finishes
/// at once.
class windows_installed_applications_macos : public os_scheme_worker
{
    Q_OBJECT

public:
    explicit windows_installed_applications_macos(QWidget *parent = nullptr);
    ~windows_installed_applications_macos() override;

    void macos_set_plugin_helper_obj(plugin_helper_functions *helper)
    {
        set_plugin_helper_obj(helper);
    }
    void macos_set_record_count(qint64 count) { set_record_count(count); }
    void macos_set_tab_processed_count(int count) { set_tab_processed_count(count); }
    /// Keeps nothing.
    void macos_set_examiner_machine_info(
        const struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info & /*info*/)
    {
    }
    /// Keeps nothing.
    void
    macos_set_general_info(const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info & /*info*/)
    {
    }
    /// Takes the source's root path, accounts and displayed scheme.
    void
    macos_set_source_info(const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info &source_info);
    void macos_set_plugin_name(const QString &name) { set_plugin_name(name); }
    void macos_set_destination_location(const QString &result_dir, const QString &tmp_dir,
                                        const QString &db_file)
    {
        set_destination_location(result_dir, tmp_dir, db_file);
    }
    void macos_set_essential_for_arken_desk_extraction(const QStringList &selected_tabs)
    {
        set_essential_for_arken_desk_extraction(selected_tabs);
    }
    void macos_set_engine_type(int type) { set_engine_type(type); }
    void macos_set_essentials() { set_essentials(); }
    void macos_cancel_extraction() { cancel_extraction(); }
    void macos_set_source_count(int count) { set_source_count(count); }
    /// Takes the extended attributes of interest.
    void macos_set_extended_attributes_list(const QStringList &attributes);

    /// Runs find_source_file().
    void macos_find_artifacts_source();
    /// Starts the timer, runs extract_plugin_artifacts() and signals the record total.
    void macos_extract_artifacts();

    /// macOS sources hold nothing of this artefact: does nothing.
    void find_source_file();
    /// macOS sources hold nothing of this artefact: does nothing.
    void extract_plugin_artifacts();
    /// This artefact reads no extended attributes: does nothing.
    void filter_extended_attribute_list();

signals:
    /// `records`: running total of rows inserted.
    void signal_extracted_records_of_plugin_macos(qint64 records);
    /// `count`: running total of tabs done.
    void signal_total_tabs_processed_macos(int count);

protected:
    QStringList extended_attributes_list;
    QList<struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_system_account> system_account_list;
};

#endif
