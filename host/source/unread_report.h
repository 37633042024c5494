#ifndef UNREAD_REPORT_H
#define UNREAD_REPORT_H

#include <QString>
#include <QStringList>

#include "source_volume.h"

/// The warnings about what the plug-in could not read of the hives, from the lines that it logged:
/// each once, although several tabs may have read the same key, and with the path relative to the
/// volume. Hives that hive_precheck.h reports as unreadable are not mentioned again.
QStringList unread_warnings(const source_volume &volume, const QStringList &lines);

#endif
