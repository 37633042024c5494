#ifndef UNREAD_KEYS_H
#define UNREAD_KEYS_H

#include <QString>
#include <QStringList>

#include "host_tabs.h"
#include "source_volume.h"

/// One warning for each reason why findings may be missing from the rows of a finished run: an
/// extraction leaves out in silence what libhivex cannot list. Every hive that was read is looked
/// at once more. Hives that hive_precheck.h reports as unreadable are not mentioned again.
QStringList unread_key_warnings(const source_volume &volume, const QStringList &accounts,
                                const QList<host_tab> &tabs);

#endif
