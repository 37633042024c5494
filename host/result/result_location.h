#ifndef RESULT_LOCATION_H
#define RESULT_LOCATION_H

#include <QString>
#include <QStringList>

#include <optional>

#include "exit_code.h"
#include "source_volume.h"

/// Where the results of one plug-in go below the examiner's result folder.
struct result_location
{
    /// As handed to the plug-in: absolute, links resolved; empty when it cannot be found.
    QString result_directory;
    QString plugin_directory; ///< the plug-in's own folder in it, without trailing "/"
    QString database_file;
    QString record_file;         ///< the run record, beside the database
    QString lock_file;           ///< what a run holds while it writes there
    QString recovered_directory; ///< copies of hives to which logs were applied
    QString deleted_database;    ///< rows of deleted records, beside the database
    QString rebuilt_directory;   ///< hives that were made of deleted records
};

/// The database and the files that SQLite makes beside it.
QStringList files_of_database(const QString &database_file);

/// The location below `result_directory` for the plug-in that calls itself `artifact_name`.
result_location locate_result(const QString &result_directory, const QString &artifact_name);

/// Why the results cannot be written there without touching the volume; nothing when they can.
/// Creates nothing.
std::optional<refusal> check_result(const result_location &location, const source_volume &volume);

/// The same for a debug log at `file`, which must not be where the results are written either.
std::optional<refusal> check_debug_log(const QString &file, const result_location &location,
                                       const source_volume &volume);

/// Why nothing may be written at `file`, since it is, or may be, of the evidence below any of
/// `roots`, which are absolute paths. `name` is what the refusal calls the file.
std::optional<refusal> check_apart(const QString &file, const QString &name,
                                   const QStringList &roots);

/// Why no new file can be written at `file` without touching the evidence below any of `roots`,
/// which are absolute paths; nothing when it can. `name` is what the refusal calls the file.
/// Creates nothing.
std::optional<refusal> check_new_file(const QString &file, const QString &name,
                                      const QStringList &roots);

/// Creates the plug-in's folder with all its parents.
std::optional<refusal> create_result_directory(const result_location &location);

/// Creates the debug log unless it exists; the plug-in only appends to a file that is there.
std::optional<refusal> create_debug_log(const QString &file);

#endif
