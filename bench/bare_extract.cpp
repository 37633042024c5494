#include "bare_tabs.h"
#include "run_meter.h"

#include <cstdio>
#include <exception>
#include <sqlite3.h>

namespace {

struct bare_tab
{
    std::string name;
    void (*extract)(const bare_run &);
};

const bare_tab tabs[] = {
    {"install_apps_64", extract_install_apps_64},
    {"install_apps_32", extract_install_apps_32},
    {"uninstall_apps", extract_uninstall_apps},
    {"registered_apps", extract_registered_apps},
    {"metro_apps", extract_metro_apps},
    {"previously_executed_apps", extract_previously_executed_apps},
    {"third_party_applications", extract_third_party_applications},
    {"hidden_desktop_icons_app", extract_hidden_desktop_icons_app},
};

/// SQLite initialises itself at its first use. A host has used it before.
void warm_up()
{
    sqlite3 *database = nullptr;
    sqlite3_open(":memory:", &database);
    sqlite3_close(database);
}

} // namespace

/// A function of its own, so that a profiler can watch it alone.
[[gnu::noinline]] void measured_run(const bare_run &run, run_meter &meter)
{
    for (const bare_tab &tab : tabs) {
        tab.extract(run);
        meter.end_part(tab.name);
    }
}

int main(int argc, char *argv[])
{
    if (argc == 2 && std::string(argv[1]) == "--tabs") {
        for (const bare_tab &tab : tabs)
            std::printf("%s\n", tab.name.c_str());
        return 0;
    }
    const bool opens_for_each_icon = argc == 5 && std::string(argv[4]) == "--open-for-each-icon";
    if (argc != 4 && !opens_for_each_icon) {
        std::fprintf(stderr,
                     "usage: bare_extract SOURCE/ DATABASE ACCOUNT [--open-for-each-icon] | "
                     "--tabs\n");
        return 2;
    }
    try {
        warm_up();
        run_meter meter;
        measured_run({argv[1], argv[3], argv[2], opens_for_each_icon}, meter);
        meter.print();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "bare_extract: %s\n", error.what());
        return 1;
    }
}
