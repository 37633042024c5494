#ifndef BARE_TABS_H
#define BARE_TABS_H

#include <string>

/// What a bare run reads and where its rows go.
struct bare_run
{
    std::string root;                 ///< of the volume; ends in "/"
    std::string account;              ///< the one user whose files are read
    std::string database;             ///< with its tables, which are empty
    bool opens_for_each_icon = false; ///< as hosts of old did, whose walk looks up one class id
};

// One function for each table, in the order in which they are filled.
void extract_install_apps_64(const bare_run &run);
void extract_install_apps_32(const bare_run &run);
void extract_uninstall_apps(const bare_run &run);
void extract_registered_apps(const bare_run &run);
void extract_metro_apps(const bare_run &run);
void extract_previously_executed_apps(const bare_run &run);
void extract_third_party_applications(const bare_run &run);
void extract_hidden_desktop_icons_app(const bare_run &run);

// What every row ends with, besides its source file.
inline constexpr char os_scheme_display[] = "Windows";
inline constexpr char source_count_name[] = "Source1";

#endif
