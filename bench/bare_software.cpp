#include "bare_hive.h"
#include "bare_table.h"
#include "bare_tabs.h"

#include <algorithm>
#include <array>

// The tables that are filled from the SOFTWARE hive.

namespace {

constexpr char hive_place[] = "Windows/System32/config/SOFTWARE";
constexpr char source_file[] = "/Windows/System32/config/SOFTWARE";

constexpr std::array<std::string_view, 8> application_values = {
    "DisplayName",   "DisplayVersion", "Publisher",       "InstallLocation",
    "InstallSource", "URLInfoAbout",   "UninstallString", "InstallDate"};

using application = std::array<value_data, application_values.size()>;

application read_application(hive_h *hive, hive_node_h node)
{
    application read;
    for_each_value(hive, node, [&](std::string_view name, hive_value_h value) {
        const auto known = std::find(application_values.begin(), application_values.end(), name);
        if (known != application_values.end())
            read[static_cast<size_t>(known - application_values.begin())] = read_text(hive, value);
    });
    return read;
}

/// Eight digits with slashes between, the day first.
std::string install_date(std::string_view digits)
{
    if (digits.empty())
        return {};
    const std::string text(digits);
    return text.substr(6, 2) + '/' + text.substr(4, 2) + '/' + text.substr(0, 4);
}

void extract_uninstall_key(const bare_run &run, const char *table_name, std::string_view key_path)
{
    bare_table table(run.database, table_name,
                     "parent_name,display_name,display_version,publisher,install_location,"
                     "install_source,url,uninstall_string,reg_file,node_name,reg_path,install_date,"
                     "modified_timestamp,source_file,os_scheme_display,source_count_name");
    const unique_hive hive = open_hive(run.root + hive_place);
    for (const named_key &key : sorted_subkeys(hive.get(), find_key(hive.get(), key_path))) {
        const application app = read_application(hive.get(), key.node);
        table.insert({key.name, app[0].view(), app[1].view(), app[2].view(), app[3].view(),
                      app[4].view(), app[5].view(), app[6].view(), "SOFTWARE", "Uninstall",
                      key_path, install_date(app[7].view()), last_write(hive.get(), key.node),
                      source_file, os_scheme_display, source_count_name});
    }
}

} // namespace

void extract_install_apps_64(const bare_run &run)
{
    extract_uninstall_key(run, "install_apps_64", "Microsoft\\Windows\\CurrentVersion\\Uninstall");
}

void extract_install_apps_32(const bare_run &run)
{
    extract_uninstall_key(run, "install_apps_32",
                          "WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall");
}

void extract_registered_apps(const bare_run &run)
{
    constexpr std::string_view key_path = "\\RegisteredApplications";
    bare_table table(run.database, "registered_apps",
                     "key_name,value,reg_file,node_name,reg_path,source_file,os_scheme_display,"
                     "source_count_name");
    const unique_hive hive = open_hive(run.root + hive_place);
    const hive_node_h node = find_key(hive.get(), key_path);
    for_each_value(hive.get(), node, [&](std::string_view name, hive_value_h value) {
        const value_data text = read_text(hive.get(), value);
        table.insert({name, text.view(), "SOFTWARE", "RegisteredApplications", key_path,
                      source_file, os_scheme_display, source_count_name});
    });
}
