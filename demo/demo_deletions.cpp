#include "demo_parts.h"
#include "files.h"
#include "hive_deletion.h"

namespace demo {

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

constexpr qint64 time_of_installation = 1702981204; // 2023-12-19T10:20:04Z
constexpr qint64 time_of_removal = 1703234871;      // 2023-12-22T08:47:51Z

} // namespace

void write_deletions(evidence_volume &volume)
{
    hive_builder &hive = volume.software();
    hive_key &shredder =
        hive.key(u"Microsoft\\Windows\\CurrentVersion\\Uninstall"_s).key(u"Shredder_is1"_s);
    shredder.text(u"DisplayName"_s, u"Shredder 3.4"_s)
        .text(u"DisplayVersion"_s, u"3.4.0"_s)
        .text(u"Publisher"_s, u"Clean Slate Tools"_s)
        .text(u"InstallLocation"_s, u"E:\\tools\\shredder\\"_s)
        .text(u"InstallDate"_s, u"20231219"_s)
        .text(u"UninstallString"_s, u"\"E:\\tools\\shredder\\uninstall.exe\""_s)
        .dword(u"NoModify"_s, 1)
        .last_write_unix(time_of_installation);
    hive_deletion deletion(hive.bytes());
    deletion.key(hive_builder::offset_of(shredder), filetime_of_unix(time_of_removal));
    write_file(volume.software_path(), deletion.bytes());
}

} // namespace demo
