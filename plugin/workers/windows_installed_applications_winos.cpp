#include "windows_installed_applications_winos.h"

#include "plugin_static_function.h"

#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr auto find_signature = "void windows_installed_applications_winos::find_source_file()"_L1;
constexpr auto extract_signature =
    "void windows_installed_applications_winos::extract_plugin_artifacts()"_L1;

struct tab_extractor
{
    const result_tab *tab;
    void (windows_installed_applications_winos::*extract)();
};

/// The order in which the tables are created and filled.
constexpr tab_extractor tab_extractors[] = {
    {&install_apps_64_tab, &windows_installed_applications_winos::extract_installed_applications},
    {&install_apps_32_tab,
     &windows_installed_applications_winos::extract_installed_applications_for_32},
    {&uninstall_apps_tab, &windows_installed_applications_winos::extract_uninstall_applications},
    {&registered_apps_tab, &windows_installed_applications_winos::extract_registered_apps},
    {&metro_apps_tab, &windows_installed_applications_winos::extract_metro_apps},
    {&previously_executed_apps_tab,
     &windows_installed_applications_winos::extract_previously_executed_programs},
    {&third_party_applications_tab,
     &windows_installed_applications_winos::extract_third_party_applications},
    {&hidden_desktop_icons_app_tab,
     &windows_installed_applications_winos::extract_hidden_desktop_icons},
};

bool is_known_edition(int engine_type)
{
    return engine_type >= 0 && engine_type <= 2;
}

void log_find(const QString &message)
{
    plugin_static_function::app_debug(message, find_signature);
}

/// Returns `path` when something exists there; otherwise logs `failure` with it and returns the
/// empty text.
QString existing_path(const QString &path, QLatin1StringView failure)
{
    if (QFileInfo::exists(path))
        return path;
    log_find(failure + path);
    return {};
}

} // namespace

windows_installed_applications_winos::windows_installed_applications_winos(QWidget *parent)
    : os_scheme_worker(parent)
{
}

windows_installed_applications_winos::~windows_installed_applications_winos() = default;

void windows_installed_applications_winos::winos_set_source_info(
    const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info &source_info)
{
    set_source_info(source_info);
    system_account_list.clear();
    for (const auto &account : source_info.system_account_list)
        system_account_list.append({account.system_user, {}});
}

void windows_installed_applications_winos::winos_find_artifacts_source()
{
    find_source_file();
}

void windows_installed_applications_winos::winos_extract_artifacts()
{
    elapsed_timer.start();
    extract_plugin_artifacts();
    emit signal_extracted_records_of_plugin_winos(record_count);
}

void windows_installed_applications_winos::find_source_file()
{
    log_find(u"[find_source_file]---STARTS---"_s);
    ntuser_path_list.clear();
    packages_dir_list.clear();

    const QString config_dir = source_root_path + "Windows/System32/config/"_L1;
    hive_path_system = existing_path(config_dir + "SYSTEM"_L1,
                                     "[find_source_file] hivepath_sys -- FILE NOT EXISTS"_L1);
    hive_path_software = existing_path(config_dir + "SOFTWARE"_L1,
                                       "[find_source_file]  hivepath_soft -- FILE NOT EXISTS"_L1);

    for (const auto &account : std::as_const(system_account_list)) {
        if (bool_cancel_extraction)
            return;
        const QString home = source_root_path + "Users/"_L1 + account.system_user;
        const QString ntuser = existing_path(
            home + "/NTUSER.DAT"_L1, "[find_source_file] ntuser_path -- FILE NOT EXISTS"_L1);
        if (!ntuser.isEmpty())
            ntuser_path_list.append(ntuser);
        const QString packages = existing_path(home + "/AppData/Local/Packages/"_L1,
                                               "[find_source_file]  -- FILE NOT EXISTS"_L1);
        if (!packages.isEmpty())
            packages_dir_list.append(packages);
    }
    log_find(u"[find_source_file]---ENDS---"_s);
}

void windows_installed_applications_winos::extract_plugin_artifacts()
{
    plugin_static_function::app_debug(u"[extract_plugins_artifacts]---STARTS---"_s,
                                      extract_signature);
    if (is_known_edition(engine_type)) {
        for (const tab_extractor &entry : tab_extractors) {
            if (!selected_tabs_list.contains(entry.tab->name))
                continue;
            (this->*entry.extract)();
            emit signal_extracted_records_of_plugin_winos(record_count);
            ++tab_processed_count;
            emit signal_total_tabs_processed_winos(tab_processed_count);
        }
    }
    plugin_static_function::app_debug(u"[extract_plugins_artifacts]---ENDS---"_s,
                                      extract_signature);
}

QList<const result_tab *> windows_installed_applications_winos::result_tabs()
{
    QList<const result_tab *> tabs;
    for (const tab_extractor &entry : tab_extractors)
        tabs.append(entry.tab);
    return tabs;
}
