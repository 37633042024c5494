#include "demo_parts.h"

namespace demo {

using namespace Qt::StringLiterals;
using namespace evidence;

void add_system(evidence_volume &volume)
{
    hive_builder &hive = volume.system();
    hive.key(u"Select"_s)
        .dword(u"Current"_s, 1)
        .dword(u"Default"_s, 1)
        .dword(u"LastKnownGood"_s, 1);
    hive_key &control = hive.key(u"ControlSet001\\Control"_s);
    control.key(u"ComputerName\\ComputerName"_s).text(u"ComputerName"_s, u"HARBOUR-PC07"_s);
    control.key(u"TimeZoneInformation"_s)
        .text(u"TimeZoneKeyName"_s, u"W. Europe Standard Time"_s)
        .dword(u"ActiveTimeBias"_s, static_cast<quint32>(-60));
}

} // namespace demo
