#include "bare_hive.h"
#include "bare_table.h"
#include "bare_tabs.h"
#include "bare_time.h"

#include <algorithm>
#include <cstring>

// The tables that are filled from the registry of a user's hive alone.

namespace {

constexpr std::string_view user_assist_key =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\UserAssist";
constexpr std::string_view hidden_icons_key =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\HideDesktopIcons";
constexpr char name_space_key[] =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Desktop\\NameSpace\\";

// Fields of a UserAssist value's data.
constexpr size_t run_count_offset = 4;
constexpr size_t last_run_time_offset = 60;

std::string hive_place(const bare_run &run)
{
    return "Users/" + run.account + "/NTUSER.DAT";
}

char rotated(char letter, char first)
{
    return static_cast<char>(first + (letter - first + 13) % 26);
}

std::string rotated_name(std::string name)
{
    for (char &c : name) {
        if (c >= 'A' && c <= 'Z')
            c = rotated(c, 'A');
        else if (c >= 'a' && c <= 'z')
            c = rotated(c, 'a');
    }
    return name;
}

/// The little-endian number at an offset; 0 where the data is shorter.
template<typename number>
number number_at(const value_data &data, size_t offset)
{
    number result = 0;
    if (data.length >= offset + sizeof result)
        std::memcpy(&result, data.bytes.get() + offset, sizeof result);
    return result;
}

std::string last_run_time(const value_data &data)
{
    const auto filetime = number_at<std::int64_t>(data, last_run_time_offset);
    return std::to_string(filetime > 0 ? unix_seconds(filetime) : 0);
}

/// Calls `use` for each value below the key, the key's own first.
template<typename function>
void for_each_value_below(hive_h *hive, hive_node_h node, const function &use)
{
    for_each_value(hive, node, use);
    for (const named_key &subkey : sorted_subkeys(hive, node))
        for_each_value_below(hive, subkey.node, use);
}

/// Calls `use` with the class id, the name and the handle of each UserAssist entry.
template<typename function>
void for_each_entry(hive_h *hive, const function &use)
{
    for (const named_key &class_id : sorted_subkeys(hive, find_key(hive, user_assist_key))) {
        for (const named_key &key : sorted_subkeys(hive, class_id.node)) {
            for_each_value_below(hive, key.node, [&](const char *name, hive_value_h value) {
                use(class_id.name, rotated_name(name), value);
            });
        }
    }
}

/// Writes the entries of which `is_wanted` returns true; it may change the name.
template<typename function>
void extract_user_assist(const bare_run &run, const char *table_name, const function &is_wanted)
{
    bare_table table(run.database, table_name,
                     "system_account,class_id,exename,entry_index,runcount,reg_file,node_name,"
                     "reg_path,lastruntime,source_file,os_scheme_display,source_count_name");
    const unique_hive hive = open_hive(run.root + hive_place(run));
    const std::string source_file = '/' + hive_place(run);
    int position = 0;
    for_each_entry(
        hive.get(), [&](std::string_view class_id, std::string name, hive_value_h value) {
            const value_data data = read_value(hive.get(), value);
            const int index = position++;
            if (!is_wanted(name))
                return;
            table.insert({run.account, class_id, name, std::to_string(index),
                          std::to_string(number_at<std::int32_t>(data, run_count_offset)),
                          "NTUSER.DAT", "UserAssist", user_assist_key, last_run_time(data),
                          source_file, os_scheme_display, source_count_name});
        });
}

/// A class id of HideDesktopIcons and whether it is hidden.
struct hidden_icon
{
    std::string class_id;
    bool is_hidden;
};

std::vector<hidden_icon> read_hidden_icons(const std::string &path)
{
    std::vector<hidden_icon> icons;
    const unique_hive hive = open_hive(path);
    for (const named_key &key :
         sorted_subkeys(hive.get(), find_key(hive.get(), hidden_icons_key))) {
        for_each_value(hive.get(), key.node, [&](const char *name, hive_value_h value) {
            icons.push_back({name, number_at<std::int32_t>(read_value(hive.get(), value), 0) == 1});
        });
    }
    return icons;
}

} // namespace

void extract_uninstall_apps(const bare_run &run)
{
    extract_user_assist(run, "uninstall_apps", [](const std::string &name) {
        return name.find("uninstall") != std::string::npos;
    });
}

void extract_previously_executed_apps(const bare_run &run)
{
    extract_user_assist(run, "previously_executed_apps", [](std::string &name) {
        std::replace(name.begin(), name.end(), '\\', '/');
        return name != "UEME_CTLSESSION";
    });
}

void extract_hidden_desktop_icons_app(const bare_run &run)
{
    bare_table table(run.database, "hidden_desktop_icons_app",
                     "system_account,app_name,hidden,reg_file,node_name,reg_path,source_file,"
                     "os_scheme_display,source_count_name");
    const std::string path = run.root + hive_place(run);
    const std::string source_file = '/' + hive_place(run);
    const std::vector<hidden_icon> icons = read_hidden_icons(path);
    unique_hive hive = open_hive(path);
    for (const hidden_icon &icon : icons) {
        if (run.opens_for_each_icon)
            hive = open_hive(path);
        const hive_node_h node = find_key(hive.get(), name_space_key + icon.class_id);
        for_each_value(hive.get(), node, [&](const char *, hive_value_h value) {
            const value_data name = read_text(hive.get(), value);
            table.insert({run.account, name.view(), icon.is_hidden ? "YES" : "NO", "NTUSER.DAT",
                          "HideDesktopIcons", hidden_icons_key, source_file, os_scheme_display,
                          source_count_name});
        });
    }
}
