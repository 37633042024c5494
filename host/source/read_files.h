#ifndef READ_FILES_H
#define READ_FILES_H

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include "host_tabs.h"
#include "source_volume.h"

/// What a file of the evidence is at one moment.
struct file_look
{
    qint64 size = 0;
    QDateTime modified;
    QDateTime changed; ///< its name, place or permissions
    QDateTime created; ///< invalid where the file system does not tell
    QString sha256;    ///< hexadecimal, see file_hashes; empty when there is none
    QString failure;   ///< why the file cannot be read
};

/// A file of the evidence that a run reads.
struct read_file
{
    QString path; ///< relative to the volume's root
    QString state;
    QStringList transaction_logs; ///< beside a hive that was not closed cleanly
    file_look before;
    file_look after;

    /// Whether the run reads more of it than its header.
    bool is_read() const { return state != unreadable; }

    static constexpr auto unreadable = QLatin1StringView("unreadable"); ///< a state
};

/// A folder of which a run lists the entries.
struct listed_folder
{
    QString path; ///< relative to the volume's root
    QDateTime modified;
    qint64 entries = 0;
};

/// How many entries a folder has; 0 if it cannot be listed.
qint64 entries_in(const QString &folder);

/// The hives that the tabs are filled from, as they are before the run. `software_hive` is what
/// software_hive_to_read() chose. Hives that are not there are left out; what is no regular file,
/// or lies where a link leads out, is not opened. No look has a hash yet.
QList<read_file> files_before_run(const source_volume &volume, const QString &software_hive,
                                  const QStringList &accounts, const QList<host_tab> &tabs);

/// Looks at the files again.
void look_again(const source_volume &volume, QList<read_file> &files);

/// One text, with its path, for each file that is another one now, as far as both looks tell.
QStringList changed_files(const QList<read_file> &files);

/// The package folders of the accounts and how many entries they have, if a tab lists them.
QList<listed_folder> listed_folders(const source_volume &volume, const QStringList &accounts,
                                    const QList<host_tab> &tabs);

#endif
