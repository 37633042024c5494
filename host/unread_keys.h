#ifndef UNREAD_KEYS_H
#define UNREAD_KEYS_H

#include <QString>
#include <QStringList>

#include "host_tabs.h"
#include "source_volume.h"

/// One warning for each registry key that may hold findings although a finished run gave none.
///
/// An extraction leaves out in silence what libhivex cannot list. A hive is looked at again only
/// for the tabs of which the database holds no row from it, so a run that found what there is
/// costs nothing more. Hives that hive_precheck.h reports as unreadable are not mentioned again.
QStringList unread_key_warnings(const source_volume &volume, const QStringList &accounts,
                                const QList<host_tab> &tabs, const QString &database_file);

#endif
