#include "extraction_run.h"

#include <QDateTime>
#include <QSysInfo>

#include <algorithm>

#include "failure_log.h"
#include "interrupt_watch.h"
#include "plugin_library.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int desk_edition = 0;

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

void connect_signals(const artifact_plugin &plugin, const tab_watch &tabs)
{
    QObject::connect(&plugin, RECORDS_SIGNAL, &tabs, SLOT(slot_records(qint64)));
    QObject::connect(&plugin, TABS_SIGNAL, &tabs, SLOT(slot_tabs(int)));
}

/// Asks the plug-in for what the plan says, copies of hives included.
void ask_for(const extraction_plan &plan, artifact_plugin &plugin)
{
    QVariantMap property = property_of(plan.options);
    if (!plan.hive_copies.isEmpty())
        property.insert("hive_copies"_L1, plan.hive_copies);
    plugin.setProperty("extraction_options", property);
}

void hand_over(artifact_plugin &plugin, const extraction_plan &plan)
{
    plugin.pub_set_engine_type(desk_edition);
    plugin.pub_set_examiner_machine_info(examiner_machine_info());
    plugin.pub_set_general_info(general_info(plan.debug_log));
    plugin.pub_set_source_info(source_info(plan));
    plugin.pub_set_source_count(plan.source_number);
    plugin.pub_set_essential_for_arken_desk_extraction(plan.tabs, plan.tabs);
    plugin.pub_set_result_directory(plan.result_directory);
}

/// Makes the tables and clears them. Returns what went wrong, or an empty text.
QString prepare_tables(artifact_plugin &plugin, const extraction_plan &plan, failure_log &failures,
                       const run_hooks &hooks)
{
    failures.begin_part();
    plugin.pub_create_db_tables();
    const QString problem = hooks.on_tables_made();
    if (failures.failures_of_part() > 0 || !problem.isEmpty())
        return u"the result tables cannot be made: %1"_s.arg(
            problem.isEmpty() ? failures.reason_of_part() : problem);
    plugin.pub_set_clear_db(!plan.keep_rows);
    if (failures.failures_of_part() > 0)
        return u"the result tables cannot be cleared: %1"_s.arg(failures.reason_of_part());
    hooks.on_cleared();
    return {};
}

} // namespace

int run_outcome::tabs_done() const
{
    return static_cast<int>(
        std::count_if(tabs.begin(), tabs.end(), [](const tab_result &tab) { return tab.is_done; }));
}

run_outcome run_extraction(artifact_plugin &plugin, const extraction_plan &plan,
                           progress_style style, const run_hooks &hooks)
{
    failure_log failures;
    progress_display progress(style, plan.tabs.size());
    failures.on_failure([&] { progress.show_failures(failures.count()); });

    plugin.pub_set_essentials();
    // Not before, because pub_set_essentials lifts a cancellation.
    const interrupt_watch interrupts([&plugin] { plugin.pub_cancel_extraction(); });
    tab_watch tabs(plan.tabs, failures, progress, hooks.rows_stored);
    tabs.is_interrupted = [&interrupts] { return interrupts.interrupted(); };
    tabs.end_run = [&plugin] { plugin.pub_cancel_extraction(); };
    connect_signals(plugin, tabs);

    hand_over(plugin, plan);
    QString trouble = prepare_tables(plugin, plan, failures, hooks);
    if (trouble.isEmpty()) {
        ask_for(plan, plugin);
        plugin.pub_find_source_file();
        tabs.begin();
        plugin.pub_extract_artifacts();
        trouble = tabs.trouble();
    }
    plugin.pub_remove_temporary_asthetics();

    return {tabs.rows(),           interrupts.interrupted(), failures.count(), failures.first(),
            failures.early_ends(), failures.unread(),        tabs.results(),   trouble};
}
