#include "os_scheme_worker.h"

os_scheme_worker::os_scheme_worker(QWidget *parent) : QWidget(parent) {}

os_scheme_worker::~os_scheme_worker() = default;

void os_scheme_worker::set_plugin_helper_obj(plugin_helper_functions *helper)
{
    helper_obj = helper;
}

void os_scheme_worker::set_record_count(qint64 count)
{
    record_count = count;
}

void os_scheme_worker::set_tab_processed_count(int count)
{
    tab_processed_count = count;
}

void os_scheme_worker::set_source_info(
    const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info &source_info)
{
    source_root_path = source_info.source_root_path;
    os_scheme_display = source_info.os_scheme_display;
}

void os_scheme_worker::set_plugin_name(const QString &name)
{
    plugin_name = name.trimmed();
}

void os_scheme_worker::set_destination_location(const QString &result_dir, const QString &tmp_dir,
                                                const QString &db_file)
{
    destination_result_dir_path = result_dir;
    destination_tmp_dir_path = tmp_dir;
    destination_db_file = db_file;
}

void os_scheme_worker::set_essential_for_arken_desk_extraction(const QStringList &selected_tabs)
{
    selected_tabs_list = selected_tabs;
}

void os_scheme_worker::set_engine_type(int type)
{
    engine_type = type;
}

void os_scheme_worker::set_essentials()
{
    bool_cancel_extraction = false;
}

void os_scheme_worker::cancel_extraction()
{
    bool_cancel_extraction = true;
}

void os_scheme_worker::set_source_count(int count)
{
    source_count = count;
}
