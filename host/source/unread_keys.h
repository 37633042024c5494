#ifndef UNREAD_KEYS_H
#define UNREAD_KEYS_H

#include <QString>
#include <QStringList>

#include "host_tabs.h"
#include "source_volume.h"

/// One warning for each reason why rows may be missing after a finished run. An extraction leaves
/// out what libhivex cannot list and does not say so, therefore every hive that was read is
/// examined again. Hives that hive_precheck.h reports as unreadable are not mentioned again.
QStringList unread_key_warnings(const source_volume &volume, const QStringList &accounts,
                                const QList<host_tab> &tabs);

#endif
