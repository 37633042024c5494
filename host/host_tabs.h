#ifndef HOST_TABS_H
#define HOST_TABS_H

#include <QList>
#include <QString>
#include <QStringList>

#include "key_check.h"

/// What a tab is filled from.
enum class tab_input
{
    software_hive,
    user_hive,
    package_folder
};

/// One result tab, which is also a table of the result database.
struct host_tab
{
    QString name;
    tab_input input;
    QList<listed_key> keys; ///< the registry keys that it lists; none when it reads no hive
};

/// All tabs, in the order in which the plug-in fills them.
const QList<host_tab> &host_tabs();

/// The names of all tabs, in that order.
QStringList host_tab_names();

/// The tabs among `names`, each once and in the order in which the plug-in fills them.
QList<host_tab> tabs_named(const QStringList &names);

/// Whether one of `tabs` is filled from `input`.
bool any_reads(const QList<host_tab> &tabs, tab_input input);

#endif
