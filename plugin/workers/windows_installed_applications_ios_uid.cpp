#include "windows_installed_applications_ios_uid.h"

windows_installed_applications_ios_uid::windows_installed_applications_ios_uid(QWidget *parent)
    : os_scheme_worker(parent)
{
}

windows_installed_applications_ios_uid::~windows_installed_applications_ios_uid() = default;

void windows_installed_applications_ios_uid::ios_uid_set_ios_backup_pointer(
    ios_uid_backup_parser *parser)
{
    ios_backup_pointer = parser;
}

void windows_installed_applications_ios_uid::ios_uid_find_artifacts_source()
{
    find_source_file();
}

void windows_installed_applications_ios_uid::ios_uid_extract_artifacts()
{
    elapsed_timer.start();
    extract_plugin_artifacts();
    emit signal_extracted_records_of_plugin_ios_uid(record_count);
}

void windows_installed_applications_ios_uid::find_source_file() {}

void windows_installed_applications_ios_uid::extract_plugin_artifacts() {}
