#include "extract_command.h"

#include <QFileInfo>

#include <algorithm>

#include "account_selection.h"
#include "console.h"
#include "hive_memory.h"
#include "hive_precheck.h"
#include "passed_over.h"
#include "plugin_library.h"
#include "recorded_run.h"
#include "result_location.h"
#include "source_volume.h"
#include "volume_search.h"

using namespace Qt::StringLiterals;

namespace {

/// The tabs, without those for which a link leads to a file outside of the volume.
QList<host_tab> tabs_within(const source_volume &volume, const QList<host_tab> &tabs,
                            QStringList &warnings)
{
    QList<host_tab> kept = tabs;
    for (const QString &path : {volume.software_hive(), volume.software_backup()}) {
        if (!any_reads(kept, tab_input::software_hive) || !volume.leads_out(path))
            continue;
        kept.removeIf([](const host_tab &tab) { return tab.input == tab_input::software_hive; });
        warnings.append(
            u"%1: a link leads out of the source; the tabs of the software hive are left out"_s.arg(
                path));
    }
    return kept;
}

/// Whether the volume has any of the files that the tabs are filled from.
bool is_anything_to_read(const source_volume &volume, const prepared_run &run)
{
    const bool has_software =
        volume.holds(volume.software_hive()) || volume.holds(volume.software_backup());
    const bool reads_accounts =
        reads_user_hives(run.tabs) || any_reads(run.tabs, tab_input::package_folder);
    return (has_software && any_reads(run.tabs, tab_input::software_hive)) ||
           (!run.plan.accounts.isEmpty() && reads_accounts);
}

refusal nothing_to_read(const source_volume &volume)
{
    return {exit_source, u"source %1 holds nothing to read: no %2 and no account in %3"_s.arg(
                             volume.root(), volume.software_hive(), volume.accounts_folder())};
}

qint64 size_of_largest_hive(const source_volume &volume, const QStringList &accounts)
{
    qint64 largest = QFileInfo(volume.root() + volume.software_hive()).size();
    for (const QString &account : accounts)
        largest = std::max(largest, QFileInfo(volume.root() + volume.user_hive(account)).size());
    return largest;
}

/// The tabs to fill, or why there are none.
struct chosen_tabs
{
    QList<host_tab> tabs;
    std::optional<refusal> refused;
};

chosen_tabs choose_tabs(const artifact_plugin &plugin, const extract_options &options)
{
    const QStringList &names = options.tabs;
    const QList<host_tab> all = tabs_of(plugin);
    const QList<host_tab> tabs =
        options.reading.installations_of_users ? all : without_installations_of_users(all);
    if (tabs.isEmpty())
        return {{}, refusal{exit_plugin, u"the plug-in does not tell which tabs it fills"_s}};
    const QStringList known = names_of(tabs);
    for (const QString &name : names) {
        if (!known.contains(name))
            return {{},
                    refusal{exit_usage, u"unknown tab \"%1\"; the tabs are %2"_s.arg(
                                            name, known.join(", "_L1))}};
    }
    return {names.isEmpty() ? tabs : tabs_named(tabs, names), std::nullopt};
}

/// Says why nothing seems to happen: looking over 100,000 accounts takes half a minute.
void tell_many_accounts(qsizetype accounts)
{
    constexpr qsizetype many = 10'000;
    if (accounts > many)
        print_notice(u"looks over the folders of %1 accounts"_s.arg(accounts));
}

/// Chooses what to read. Leaves out accounts and tabs whose files a link leads out of the volume.
prepared_run choose_input(const source_volume &volume, const extract_options &options,
                          const account_selection &selection, const QList<host_tab> &tabs)
{
    tell_many_accounts(selection.accounts.size());
    prepared_run run;
    QStringList left_out = selection.warnings;
    run.tabs = tabs_within(volume, tabs, left_out);
    append_left_out(run.findings, left_out);
    append_remarks(run.findings, selection.remarks);
    if (any_reads(run.tabs, tab_input::software_hive))
        run.software_hive = software_hive_to_read(volume);
    run.hive_findings = precheck_warnings(volume, run.software_hive, selection.accounts, run.tabs);
    run.passed_over = passed_over_warnings(volume, selection, run.tabs);
    run.plan.source_root = volume.root();
    run.plan.accounts = selection.accounts;
    run.plan.tabs = names_of(run.tabs);
    run.plan.options = options.reading;
    return run;
}

/// Chooses where to write; creates nothing.
std::optional<refusal> choose_output(const source_volume &volume, const extract_options &options,
                                     const QString &artifact_name, prepared_run &run)
{
    run.location = locate_result(options.result_directory, artifact_name);
    run.plan.result_directory = run.location.result_directory;
    if (auto refused = check_result(run.location, volume))
        return refused;
    if (options.debug_log.isEmpty())
        return std::nullopt;
    run.plan.debug_log = QFileInfo(options.debug_log).absoluteFilePath();
    return check_debug_log(options.debug_log, run.location, volume);
}

/// Says where in the source the volume lies, unless the source is the volume.
void tell_place(const found_volume &volume)
{
    if (volume.name != "."_L1)
        print_notice(u"the volume is %1 in the source"_s.arg(volume.name));
}

/// Who names a volume does not ask for those that may lie where nothing could be searched.
void append_findings_of_search(QList<finding> &findings, const QStringList &warnings,
                               const extract_options &options)
{
    if (options.volume.isEmpty())
        append_left_out(findings, warnings);
    else
        append_remarks(findings, warnings);
}

} // namespace

exit_code extract(const extract_options &options)
{
    if (const auto refused = check_source(options.source))
        return refuse(*refused);
    const chosen_volume place = choose_volume(options.source, options.volume);
    print_warnings(place.warnings);
    if (place.refused)
        return refuse(*place.refused);
    tell_place(place.volume);
    const source_volume volume(place.volume.directory, options.reading, options.source);
    const loaded_plugin plugin = load_plugin(options.plugin_file);
    if (plugin.object == nullptr)
        return refuse({exit_plugin, plugin.failure});
    const chosen_tabs chosen = choose_tabs(*plugin.object, options);
    if (chosen.refused)
        return refuse(*chosen.refused);
    const account_selection accounts = select_accounts(volume, options.users);
    if (accounts.refused)
        return refuse(*accounts.refused);
    prepared_run run = choose_input(volume, options, accounts, chosen.tabs);
    append_findings_of_search(run.shown_findings, place.warnings, options);
    if (!is_anything_to_read(volume, run)) {
        print_warnings(texts_of(run.new_findings())); // they may tell why
        return refuse(nothing_to_read(volume));
    }
    prepare_memory_for_hive(size_of_largest_hive(volume, run.plan.accounts));
    if (const auto refused =
            choose_output(volume, options, plugin.object->pub_get_artifact_name(), run))
        return refuse(*refused);
    return make_recorded_run(plugin, run, volume, options);
}
