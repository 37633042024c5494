#ifndef HIVE_PRECHECK_H
#define HIVE_PRECHECK_H

#include <QString>
#include <QStringList>

#include "finding.h"
#include "host_tabs.h"
#include "source_volume.h"

/// What the header of a hive file tells before the file is read.
struct hive_findings
{
    QStringList warnings;
    bool readable = true; ///< false when the file will not be opened as a hive
    bool is_absent = false;
    bool is_cut_off = false;
    bool is_dirty = false;        ///< not closed cleanly
    QStringList transaction_logs; ///< names of those beside a hive that was not closed cleanly

    /// Whether all that the evidence has of the hive is read.
    bool is_whole() const
    {
        return readable && !is_cut_off && (!is_dirty || transaction_logs.isEmpty());
    }
};

/// Examines the header of the hive file at `path` for reading only: its kind, size, signature,
/// checksum and sequence numbers, and the transaction logs that lie beside it. Only a regular file
/// is opened, so this never waits for a writer.
hive_findings check_hive_file(const QString &path);

/// The path, relative to the volume, of the software hive that the tabs read. If the hive itself
/// cannot be opened, that is its backup. Where a backup could be read, this opens the hive.
QString software_hive_to_read(const source_volume &volume);

/// One warning, beginning with the path relative to the volume, for each finding about the hives
/// that the tabs read, and for each package folder that may not be listed. `software_hive` is what
/// software_hive_to_read() chose; the backup is examined only if it is that one. An account without
/// a hive is a remark: not every account has one.
QList<finding> precheck_warnings(const source_volume &volume, const QString &software_hive,
                                 const QStringList &accounts, const QList<host_tab> &tabs);

#endif
