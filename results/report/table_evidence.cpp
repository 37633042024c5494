#include "table_evidence.h"

using namespace Qt::StringLiterals;

namespace results {

namespace {

struct evidence_description
{
    QLatin1StringView table;
    QLatin1StringView proves;
    QLatin1StringView does_not_prove;
};

constexpr QLatin1StringView key_proves =
    "An installer wrote an Uninstall key of this name: for the whole machine where no account is "
    "named, else for the account. The key was last written at that time, by an installation, an "
    "update, a repair or another program."_L1;
constexpr QLatin1StringView key_does_not_prove =
    "That the program was ever run, or that its files are still there. Names, versions, folders "
    "and the install date are what the installer wrote. The date is local time and may be "
    "wrong."_L1;

constexpr evidence_description descriptions[] = {
    {"install_apps_64"_L1, key_proves, key_does_not_prove},
    {"install_apps_32"_L1, key_proves, key_does_not_prove},
    {"uninstall_apps"_L1,
     "The account's shell kept an entry with \"uninstall\" in its name. With a count or a time, it "
     "was started from the shell, last at that time."_L1,
     "That anything was removed: an uninstaller may be cancelled or fail."_L1},
    {"registered_apps"_L1,
     "The application told Windows under this name which kinds of files or links it can open."_L1,
     "When it did that, for whom, or that it was ever run."_L1},
    {"metro_apps"_L1, "The account's profile has a folder for the data of this package."_L1,
     "That the application was opened, or when it was installed: Windows makes folders for packages "
     "that come with it. The table has no times."_L1},
    {"previously_executed_apps"_L1,
     "The account's shell (desktop, start menu, task bar) counted so many starts of this entry, the "
     "last one at that time."_L1,
     "Starts by other ways, such as a command line, a service or a task. Who sat at the keyboard. "
     "Earlier runs leave no time. An entry without count and time may be listed without a start."_L1},
    {"third_party_applications"_L1,
     "The Program Compatibility Assistant noted the program under this account, as it does when a "
     "program or an installer is started."_L1,
     "When or how often that was: the times are those of the program's file, as the system that "
     "read the volume gives them, and 0 where the file is not there."_L1},
    {"hidden_desktop_icons_app"_L1,
     "The account has a setting that shows or hides this icon of the desktop."_L1,
     "That the account used what is behind the icon, or made the setting itself."_L1},
};

} // namespace

table_evidence evidence_of(const QString &table)
{
    for (const evidence_description &described : descriptions) {
        if (described.table == table)
            return {described.proves, described.does_not_prove};
    }
    return {};
}

} // namespace results
