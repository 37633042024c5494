#ifndef PLUGIN_TABS_H
#define PLUGIN_TABS_H

#include "artifact_list.h"
#include "host_tabs.h"

namespace test_support {

/// All tabs as the reference host learns of them from the plug-in.
inline QList<host_tab> plugin_tabs()
{
    return described_tabs(described_artifacts());
}

} // namespace test_support

#endif
