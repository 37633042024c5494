#ifndef PASSED_OVER_H
#define PASSED_OVER_H

#include "account_selection.h"
#include "finding.h"
#include "host_tabs.h"

/// One warning for each thing of the volume that looks like what the tabs read and is not read:
/// spelt in another letter case, in the layout of another Windows, under a name that cannot be
/// opened, or in the way of a folder. Also tells of names that make false lines in the debug log.
/// What hive_precheck.h reports is not repeated.
QList<finding> passed_over_warnings(const source_volume &volume, const account_selection &selection,
                                    const QList<host_tab> &tabs);

#endif
