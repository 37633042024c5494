#ifndef HOST_VERSION_H
#define HOST_VERSION_H

#include <QString>

/// The version of this program, "1.2.3".
QString host_version();

#endif
