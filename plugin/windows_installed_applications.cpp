#include "windows_installed_applications.h"

#include "artifact_list.h"
#include "extraction_options.h"
#include "plugin_helper_functions.h"
#include "plugin_static_function.h"
#include "ui_windows_installed_applications.h"
#include "windows_installed_applications_ios_uid.h"
#include "windows_installed_applications_macos.h"
#include "windows_installed_applications_winos.h"

using namespace Qt::StringLiterals;

windows_installed_applications::windows_installed_applications(QWidget *parent)
    : QFrame(parent), ui(new Ui_windows_installed_applications)
{
    ui->setupUi(this);

    macos_obj = new windows_installed_applications_macos(this);
    connect(macos_obj,
            &windows_installed_applications_macos::signal_extracted_records_of_plugin_macos, this,
            &windows_installed_applications::slot_extracted_records_of_plugin);
    connect(macos_obj, &windows_installed_applications_macos::signal_total_tabs_processed_macos,
            this, &windows_installed_applications::slot_total_tabs_processed);

    ios_uid_obj = new windows_installed_applications_ios_uid(this);
    connect(ios_uid_obj,
            &windows_installed_applications_ios_uid::signal_extracted_records_of_plugin_ios_uid,
            this, &windows_installed_applications::slot_extracted_records_of_plugin);
    connect(ios_uid_obj,
            &windows_installed_applications_ios_uid::signal_total_tabs_processed_ios_uid, this,
            &windows_installed_applications::slot_total_tabs_processed);

    winos_obj = new windows_installed_applications_winos(this);
    connect(winos_obj,
            &windows_installed_applications_winos::signal_extracted_records_of_plugin_winos, this,
            &windows_installed_applications::slot_extracted_records_of_plugin);
    connect(winos_obj, &windows_installed_applications_winos::signal_total_tabs_processed_winos,
            this, &windows_installed_applications::slot_total_tabs_processed);

    helper_obj = new plugin_helper_functions(this);
    setProperty("artifacts", described_artifacts());
    setProperty("version", QString(PLUGIN_VERSION ""_L1));
}

windows_installed_applications::~windows_installed_applications()
{
    delete ui;
}

void windows_installed_applications::pub_set_engine_type(int type)
{
    engine_type = type;
    plugin_static_function::set_engine_type(type);
    macos_obj->macos_set_engine_type(type);
    ios_uid_obj->ios_uid_set_engine_type(type);
    winos_obj->winos_set_engine_type(type);
    macos_obj->macos_set_plugin_name(pub_get_artifact_name());
    ios_uid_obj->ios_uid_set_plugin_name(pub_get_artifact_name());
    winos_obj->winos_set_plugin_name(pub_get_artifact_name());
}

QString windows_installed_applications::pub_get_artifact_name()
{
    // The host's translations know the name under the plain object's context.
    return QObject::tr("Windows Installed Applications");
}

void windows_installed_applications::pub_set_essentials()
{
    set_essentials();
}

void windows_installed_applications::set_essentials()
{
    bool_cancel_extraction = false;
    extracted_records_count = 0;
    tabs_processed_count = 0;
    m_told_of_options.clear();
    plugin_static_function::set_essentials();
    helper_obj->set_essentials();
    macos_obj->macos_set_essentials();
    ios_uid_obj->ios_uid_set_essentials();
    winos_obj->winos_set_essentials();
}

void windows_installed_applications::pub_set_source_count(int count)
{
    macos_obj->macos_set_source_count(count);
    ios_uid_obj->ios_uid_set_source_count(count);
    winos_obj->winos_set_source_count(count);
    plugin_static_function::set_source_count(count);
}

void windows_installed_applications::pub_set_ios_uid_backup_pointer(ios_uid_backup_parser *parser)
{
    ios_uid_obj->ios_uid_set_ios_backup_pointer(parser);
}

void windows_installed_applications::pub_set_examiner_machine_info(
    struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info info)
{
    plugin_static_function::set_examiner_machine_info(info);
    macos_obj->macos_set_examiner_machine_info(info);
    ios_uid_obj->ios_uid_set_examiner_machine_info(info);
    winos_obj->winos_set_examiner_machine_info(info);
}

void windows_installed_applications::pub_set_general_info(
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info info)
{
    plugin_static_function::set_general_info(info);
    macos_obj->macos_set_general_info(info);
    ios_uid_obj->ios_uid_set_general_info(info);
    winos_obj->winos_set_general_info(info);
}

void windows_installed_applications::pub_set_source_info(
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info info)
{
    os_scheme_internal = info.os_scheme_internal;
    plugin_static_function::set_source_info(info);
    macos_obj->macos_set_source_info(info);
    ios_uid_obj->ios_uid_set_source_info(info);
    winos_obj->winos_set_source_info(info);
}

void windows_installed_applications::pub_set_essential_for_arken_desk_extraction(
    QStringList selected_tabs, QStringList /*ignored*/)
{
    selected_tabs_list = selected_tabs;
    macos_obj->macos_set_essential_for_arken_desk_extraction(selected_tabs);
    ios_uid_obj->ios_uid_set_essential_for_arken_desk_extraction(selected_tabs);
    winos_obj->winos_set_essential_for_arken_desk_extraction(selected_tabs);
}

void windows_installed_applications::pub_set_result_directory(QString result_dir)
{
    set_destination_location(result_dir);
}

void windows_installed_applications::pub_create_db_tables()
{
    create_destination_database();
}

void windows_installed_applications::pub_set_clear_db(bool clear)
{
    if (clear)
        clear_db_tables();
}

void windows_installed_applications::pub_cancel_extraction()
{
    bool_cancel_extraction = true;
    macos_obj->macos_cancel_extraction();
    ios_uid_obj->ios_uid_cancel_extraction();
    winos_obj->winos_cancel_extraction();
    plugin_static_function::set_cancel_extraction(true);
    helper_obj->set_cancel_extraction(true);
}

void windows_installed_applications::pub_find_source_file()
{
    read_extraction_options(
        u"virtual void windows_installed_applications::pub_find_source_file()"_s);
    switch (source_scheme()) {
    case os_scheme::macos:
        return macos_obj->macos_find_artifacts_source();
    case os_scheme::ios_uid:
        return ios_uid_obj->ios_uid_find_artifacts_source();
    case os_scheme::winos:
        return winos_obj->winos_find_artifacts_source();
    case os_scheme::unknown:
        return log_unknown_scheme(
            u"virtual void windows_installed_applications::pub_find_source_file()"_s);
    }
}

void windows_installed_applications::pub_set_extended_attributes_list(QStringList attributes)
{
    macos_obj->macos_set_extended_attributes_list(attributes);
}

void windows_installed_applications::pub_extract_artifacts()
{
    const QString caller =
        u"virtual void windows_installed_applications::pub_extract_artifacts()"_s;
    plugin_static_function::app_debug(u"[pub_extract_artifacts] - START"_s, caller);
    emit signal_extracted_records_of_plugin_overall(0);
    hand_over_totals();
    read_extraction_options(caller);

    const os_scheme scheme = source_scheme();
    if (scheme != os_scheme::unknown && bool_cancel_extraction)
        return;
    switch (scheme) {
    case os_scheme::macos:
        macos_obj->macos_extract_artifacts();
        break;
    case os_scheme::ios_uid:
        ios_uid_obj->ios_uid_extract_artifacts();
        break;
    case os_scheme::winos:
        winos_obj->winos_extract_artifacts();
        break;
    case os_scheme::unknown:
        log_unknown_scheme(caller);
        break;
    }
    emit signal_extracted_records_of_plugin_overall(extracted_records_count);
    plugin_static_function::app_debug(u"[pub_extract_artifacts] - END"_s, caller);
}

void windows_installed_applications::pub_generate_chat_html_pages() {}

void windows_installed_applications::pub_remove_temporary_asthetics()
{
    plugin_static_function::remove_directory(destination_tmp_dir_path);
}

void windows_installed_applications::slot_m_process_finished(int /*status*/)
{
    bool_process_finished = true;
}

void windows_installed_applications::slot_extracted_records_of_plugin(qint64 rec)
{
    extracted_records_count = rec;
    emit signal_extracted_records_of_plugin_overall(rec);
}

void windows_installed_applications::slot_total_tabs_processed(int tab_count)
{
    tabs_processed_count = tab_count;
    emit signal_tab_processed_of_plugin_overall(tab_count);
}

windows_installed_applications::os_scheme windows_installed_applications::source_scheme() const
{
    if (os_scheme_internal == "macOS"_L1)
        return os_scheme::macos;
    if (os_scheme_internal == "iOS_UID"_L1)
        return os_scheme::ios_uid;
    if (os_scheme_internal == "winOS"_L1)
        return os_scheme::winos;
    return os_scheme::unknown;
}

void windows_installed_applications::log_unknown_scheme(const QString &caller)
{
    plugin_static_function::app_debug(
        "------FAILED------- supported os scheme internal not matched, received os scheme internal =  "_L1 +
            os_scheme_internal + ", plugin name is "_L1 + pub_get_artifact_name(),
        caller);
}

/// Logs what is wrong with the options, each text once in a run.
void windows_installed_applications::read_extraction_options(const QString &caller)
{
    const auto read = extraction_options_from(property("extraction_options"));
    for (const QString &text : read.ignored) {
        if (!m_told_of_options.contains(text))
            plugin_static_function::app_debug("[extraction_options] "_L1 + text, caller);
        m_told_of_options.insert(text);
    }
    winos_obj->winos_set_extraction_options(read.options);
}

/// Gives the totals of earlier extractions to the workers, which count on from them.
void windows_installed_applications::hand_over_totals()
{
    macos_obj->macos_set_plugin_helper_obj(helper_obj);
    macos_obj->macos_set_record_count(extracted_records_count);
    macos_obj->macos_set_tab_processed_count(tabs_processed_count);
    ios_uid_obj->ios_uid_set_plugin_helper_obj(helper_obj);
    ios_uid_obj->ios_uid_set_record_count(extracted_records_count);
    ios_uid_obj->ios_uid_set_tab_processed_count(tabs_processed_count);
    winos_obj->winos_set_plugin_helper_obj(helper_obj);
    winos_obj->winos_set_record_count(extracted_records_count);
    winos_obj->winos_set_tab_processed_count(tabs_processed_count);
}
