#include "extraction_run.h"

#include <QDateTime>
#include <QSysInfo>

#include "failure_log.h"
#include "interrupt_watch.h"
#include "plugin_library.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int desk_edition = 0;
constexpr int first_source = 1;

auto examiner_machine_info()
{
    struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info info;
    info.examiner_machine_timezone_offset = QDateTime::currentDateTime().offsetFromUtc();
    info.examiner_machine_os_version_full = QSysInfo::prettyProductName();
    return info;
}

auto general_info(const QString &debug_log)
{
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info info;
    // The failure log needs the lines even if the examiner wants no debug log.
    info.debug_mode_status = true;
    info.debug_print_on_terminal = true;
    info.debug_print_in_file = !debug_log.isEmpty();
    info.debug_file_path = debug_log;
    return info;
}

auto source_info(const extraction_plan &plan)
{
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info info;
    info.source_root_path = plan.source_root;
    info.os_scheme_display = u"Windows"_s;
    info.os_scheme_internal = u"winOS"_s;
    for (const QString &account : plan.accounts)
        info.system_account_list.append({account, {}});
    return info;
}

void connect_progress(const artifact_plugin &plugin, const progress_display &progress)
{
    QObject::connect(&plugin, RECORDS_SIGNAL, &progress, SLOT(slot_records(qint64)));
    QObject::connect(&plugin, TABS_SIGNAL, &progress, SLOT(slot_tabs(int)));
}

/// A plug-in that is asked for nothing keeps what it would do for every host.
void ask_for(const reading_options &options, artifact_plugin &plugin)
{
    if (const QVariantMap property = property_of(options); !property.isEmpty())
        plugin.setProperty("extraction_options", property);
}

} // namespace

run_outcome run_extraction(artifact_plugin &plugin, const extraction_plan &plan,
                           progress_style style, const std::function<void()> &on_tables_made)
{
    const failure_log failures;
    const progress_display progress(style, plan.tabs.size());
    connect_progress(plugin, progress);

    plugin.pub_set_essentials();
    // Not before, because pub_set_essentials lifts a cancellation.
    const interrupt_watch watch([&plugin] { plugin.pub_cancel_extraction(); });
    plugin.pub_set_engine_type(desk_edition);
    plugin.pub_set_examiner_machine_info(examiner_machine_info());
    plugin.pub_set_general_info(general_info(plan.debug_log));
    plugin.pub_set_source_info(source_info(plan));
    plugin.pub_set_source_count(first_source);
    plugin.pub_set_essential_for_arken_desk_extraction(plan.tabs, plan.tabs);
    plugin.pub_set_result_directory(plan.result_directory);
    plugin.pub_create_db_tables();
    on_tables_made();
    plugin.pub_set_clear_db(!plan.keep_rows);
    ask_for(plan.options, plugin);
    plugin.pub_find_source_file();
    plugin.pub_extract_artifacts();
    plugin.pub_remove_temporary_asthetics();

    return {progress.rows(), watch.interrupted(), failures.count(), failures.first(),
            failures.early_ends()};
}
