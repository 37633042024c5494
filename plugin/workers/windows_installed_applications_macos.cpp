#include "windows_installed_applications_macos.h"

windows_installed_applications_macos::windows_installed_applications_macos(QWidget *parent)
    : os_scheme_worker(parent)
{
}

windows_installed_applications_macos::~windows_installed_applications_macos() = default;

void windows_installed_applications_macos::macos_set_source_info(
    const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info &source_info)
{
    set_source_info(source_info);
    system_account_list = source_info.system_account_list;
}

void windows_installed_applications_macos::macos_set_extended_attributes_list(
    const QStringList &attributes)
{
    extended_attributes_list = attributes;
    filter_extended_attribute_list();
}

void windows_installed_applications_macos::macos_find_artifacts_source()
{
    find_source_file();
}

void windows_installed_applications_macos::macos_extract_artifacts()
{
    elapsed_timer.start();
    extract_plugin_artifacts();
    emit signal_extracted_records_of_plugin_macos(record_count);
}

void windows_installed_applications_macos::find_source_file() {}

void windows_installed_applications_macos::extract_plugin_artifacts() {}

void windows_installed_applications_macos::filter_extended_attribute_list() {}
