#ifndef MACHINE_H
#define MACHINE_H

#include <QFileInfo>
#include <QString>

namespace test_support {

/// Why a test cannot run that needs what Linux shows of processes and mounts, or an empty text.
/// Other systems have other ways.
inline QString missing_process_files()
{
    using namespace Qt::StringLiterals;
#ifdef Q_OS_LINUX
    if (!QFileInfo::exists(u"/proc/self/mountinfo"_s))
        return u"This machine has no /proc/self"_s;
#endif
    return {};
}

} // namespace test_support

#endif
