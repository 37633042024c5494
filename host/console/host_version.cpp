#include "host_version.h"

using namespace Qt::StringLiterals;

QString host_version()
{
    return u"" ARTIFACT_HOST_VERSION ""_s;
}
