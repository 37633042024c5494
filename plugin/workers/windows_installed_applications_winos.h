#ifndef WINDOWS_INSTALLED_APPLICATIONS_WINOS_H
#define WINDOWS_INSTALLED_APPLICATIONS_WINOS_H

#include "case_blind_paths.h"
#include "extraction_options.h"
#include "hive_output.h"
#include "os_scheme_worker.h"

#include <functional>
#include <optional>

struct artifact;
class hive_pool;

/// Worker for Windows sources, the only one that extracts anything: finds the registry hives and
/// the users' package folders of a mounted volume and fills the selected result tables from them.
class windows_installed_applications_winos : public os_scheme_worker
{
    Q_OBJECT

public:
    /// Byte order of the integers that the hex_to_decimal operations read.
    enum ENDIANS
    {
        little_endian = 1,
        big_endian = 2,
    };

    explicit windows_installed_applications_winos(QWidget *parent = nullptr);
    ~windows_installed_applications_winos() override;

    void winos_set_plugin_helper_obj(plugin_helper_functions *helper)
    {
        set_plugin_helper_obj(helper);
    }
    void winos_set_record_count(qint64 count) { set_record_count(count); }
    void winos_set_tab_processed_count(int count) { set_tab_processed_count(count); }
    /// Keeps nothing.
    void winos_set_examiner_machine_info(
        const struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info & /*info*/)
    {
    }
    /// Keeps nothing.
    void
    winos_set_general_info(const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info & /*info*/)
    {
    }
    /// Takes the source's root path, the accounts' names and the displayed scheme.
    void
    winos_set_source_info(const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info &source_info);
    void winos_set_plugin_name(const QString &name) { set_plugin_name(name); }
    void winos_set_destination_location(const QString &result_dir, const QString &tmp_dir,
                                        const QString &db_file)
    {
        set_destination_location(result_dir, tmp_dir, db_file);
    }
    void winos_set_essential_for_arken_desk_extraction(const QStringList &selected_tabs)
    {
        set_essential_for_arken_desk_extraction(selected_tabs);
    }
    void winos_set_engine_type(int type) { set_engine_type(type); }
    void winos_set_essentials() { set_essentials(); }
    void winos_cancel_extraction() { cancel_extraction(); }
    void winos_set_source_count(int count) { set_source_count(count); }
    /// Keeps nothing.
    void
    winos_set_artifacts_info(const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info & /*info*/)
    {
    }

    /// Takes what the host asks for beyond the contract; holds until the next call.
    void winos_set_extraction_options(const extraction_options &options) { m_options = options; }

    /// Runs find_source_file().
    void winos_find_artifacts_source();
    /// Starts the timer, runs extract_plugin_artifacts() and signals the record total.
    void winos_extract_artifacts();

    /// Records which of the source's hives and package folders exist, and logs those that do not.
    /// Users come from the account list alone; a cancellation stops before the next account.
    void find_source_file();

    /// Extracts the artefacts of the selected tabs in their fixed order, signalling both totals
    /// after each. Does nothing but log for a host edition other than 0, 1 and 2.
    void extract_plugin_artifacts();

    // One operation for each of the first eight artefacts. They belong to the contract; later
    // artefacts have none. Each fills one table and reports through the debug log and the record
    // signal. A cancellation commits what was written and leaves no line.

    /// The native view of the SOFTWARE hive's Uninstall key, into install_apps_64.
    void extract_installed_applications();
    /// The 32-bit view of the SOFTWARE hive's Uninstall key, into install_apps_32.
    void extract_installed_applications_for_32();
    /// UserAssist entries whose decoded name contains "uninstall", into uninstall_apps.
    void extract_uninstall_applications();
    /// The values of the SOFTWARE hive's RegisteredApplications key, into registered_apps.
    void extract_registered_apps();
    /// The entries of the users' package folders, into metro_apps.
    void extract_metro_apps();
    /// UserAssist entries but the session entry, into previously_executed_apps.
    void extract_previously_executed_programs();
    /// The Compatibility Assistant's Store of each user, into third_party_applications.
    void extract_third_party_applications();
    /// The desktop icons that the users' hives list as hidden or shown, into
    /// hidden_desktop_icons_app.
    void extract_hidden_desktop_icons();

    // Conversions of the contract, see conversions.h. A cancellation of this worker ends them.

    /// shown_install_date().
    QString get_install_date(QString install_date);

    /// rotated_name().
    QString decrypt_program_name(QString name);

    /// integer_32_of().
    qint32 hex_to_decimal_fourbytes(QByteArray bytes, ENDIANS order);

    /// integer_64_of().
    qint64 hex_to_decimal_eight_bytes(QByteArray bytes, ENDIANS order);

    /// windows_path_of() with the root of this worker's source.
    QString prepare_windows_path(QString path) const;

signals:
    /// `records`: running total of rows inserted.
    void signal_extracted_records_of_plugin_winos(qint64 records);
    /// `count`: running total of tabs done.
    void signal_total_tabs_processed_winos(int count);

protected:
    QString virtual_source_path; ///< always empty: the source kind of the path helpers
    QList<struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_system_account>
        system_account_list;       ///< the accounts' names; their second text stays empty
    QString hive_path_system;      ///< the SYSTEM hive; empty when missing
    QString hive_path_software;    ///< the SOFTWARE hive; empty when missing
    QStringList ntuser_path_list;  ///< the NTUSER.DAT files that exist, in account order
    QStringList packages_dir_list; ///< the package folders that exist, in account order

    /// Milliseconds since the last progress signal, or since the extraction began.
    virtual qint64 elapsed_milliseconds() const;

    /// What a table gets at most from the hive at `path`.
    virtual hive_output::limit most_output_of(const QString &path) const;

    /// Extracts the artefact into its table. Hives that one of `later_artifacts` reads stay open in
    /// `kept_hives`, if there is one.
    void run(const artifact &extracted, hive_pool *kept_hives = nullptr,
             const QList<const artifact *> &later_artifacts = {});

private:
    QList<const artifact *> selected_artifacts() const;
    void count_row();
    QString find_on_volume(const QString &path, const std::function<void(const QString &)> &tell);
    QString existing_path(const QString &path, QLatin1StringView failure);
    QString first_existing_folder(QLatin1StringView folder, QLatin1StringView older_folder);

    extraction_options m_options;
    std::optional<case_blind_paths> m_paths; ///< set while letter case is ignored
};

#endif
