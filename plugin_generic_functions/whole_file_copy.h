#ifndef WHOLE_FILE_COPY_H
#define WHOLE_FILE_COPY_H

#include <QString>

/// How copying one file ended.
struct whole_file_copy_result
{
    /// What came of it; source_failed and destination_failed say where it failed.
    enum class status
    {
        copied,
        source_failed,
        destination_failed,
        cancelled
    };
    status how;
    QString error; ///< what the file system said; empty unless reading or writing failed
};

/// Copies the bytes of a regular file, opened for reading only, to `destination_path`, replacing a
/// file there. The copy is new and writable for its owner whatever the source's permissions are,
/// and appears under its name only when it is whole. Where `destination_path` is a link, the file
/// that it leads to is replaced and the link stays. `cancel` is polled between blocks.
whole_file_copy_result copy_whole_file(const QString &source_path, const QString &destination_path,
                                       const bool &cancel);

#endif
