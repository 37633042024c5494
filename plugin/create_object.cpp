#include "windows_installed_applications.h"

/// The library's only export: makes one plug-in object without a parent, which the host owns and
/// deletes.
extern "C" Q_DECL_EXPORT void *create_object()
{
    return new windows_installed_applications;
}
