#include "bare_hive.h"
#include "bare_table.h"
#include "bare_tabs.h"

#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

// The tables of files: the programs of the compatibility store, the package folders.

namespace {

/// The times of a file in Unix seconds, as decimal text.
struct file_times
{
    std::string creation = "0";
    std::string modification = "0";
    std::string last_access = "0";
};

#ifdef __linux__

file_times times_of(const std::string &path)
{
    struct statx found = {};
    if (statx(AT_FDCWD, path.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &found) != 0)
        return {};
    return {std::to_string(found.stx_btime.tv_sec), std::to_string(found.stx_mtime.tv_sec),
            std::to_string(found.stx_atime.tv_sec)};
}

#else

file_times times_of(const std::string &path)
{
    struct stat found = {};
    if (stat(path.c_str(), &found) != 0)
        return {};
    return {std::to_string(found.st_birthtimespec.tv_sec),
            std::to_string(found.st_mtimespec.tv_sec), std::to_string(found.st_atimespec.tv_sec)};
}

#endif

/// Where a program lies on the volume, with a leading slash.
std::string volume_path(std::string windows_path)
{
    constexpr std::string_view drive = "C:";
    std::replace(windows_path.begin(), windows_path.end(), '\\', '/');
    return windows_path.substr(drive.size());
}

std::string windows_path(const std::string &relative_path)
{
    std::string path = "C:/" + relative_path;
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

/// The entries of a folder, without the folder itself and its parent.
template<typename function>
void for_each_entry(const std::string &folder, const function &use)
{
    const std::unique_ptr<DIR, int (*)(DIR *)> entries(opendir(folder.c_str()), closedir);
    while (const dirent *entry = entries ? readdir(entries.get()) : nullptr) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            use(name);
    }
}

} // namespace

void extract_third_party_applications(const bare_run &run)
{
    constexpr std::string_view key_path = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\"
                                          "AppCompatFlags\\Compatibility Assistant\\Store";
    bare_table table(run.database, "third_party_applications",
                     "system_account,windows_path,file_path,reg_file,node_name,reg_path,"
                     "creation_timestamp,modification_timestamp,last_access_timestamp,source_file,"
                     "os_scheme_display,source_count_name");
    const std::string source_file = "/Users/" + run.account + "/NTUSER.DAT";
    const unique_hive hive = open_hive(run.root + source_file.substr(1));
    const hive_node_h node = find_key(hive.get(), key_path);
    for_each_value(hive.get(), node, [&](const char *name, hive_value_h value) {
        read_value(hive.get(), value);
        const std::string path = volume_path(name);
        const file_times times = times_of(run.root + path.substr(1));
        table.insert({run.account, name, path, "NTUSER.DAT", "Store", key_path, times.creation,
                      times.modification, times.last_access, source_file, os_scheme_display,
                      source_count_name});
    });
}

// The times are those of the file at the root followed by the whole path, as in the plug-in.
void extract_metro_apps(const bare_run &run)
{
    bare_table table(run.database, "metro_apps",
                     "system_account,filename,file_path,windows_path,creation_timestamp,"
                     "modification_timestamp,last_access_timestamp,source_file,os_scheme_display,"
                     "source_count_name");
    const std::string folder = "Users/" + run.account + "/AppData/Local/Packages/";
    const std::string source_file = '/' + folder;
    for_each_entry(run.root + folder, [&](std::string_view name) {
        const std::string relative_path = folder + std::string(name);
        const std::string path = run.root + relative_path;
        const file_times times = times_of(run.root + path.substr(1));
        table.insert({run.account, name, path, windows_path(relative_path), times.creation,
                      times.modification, times.last_access, source_file, os_scheme_display,
                      source_count_name});
    });
}
