#ifndef FILES_H
#define FILES_H

#include <QByteArray>
#include <QString>

namespace evidence {

/// Writes a file, over one that is there. The folder must exist. Throws std::runtime_error.
void write_file(const QString &path, const QByteArray &content);

/// The file's content. Throws std::runtime_error when it cannot be read.
QByteArray read_file(const QString &path);

/// Creates a folder with all missing parents. Throws std::runtime_error.
void make_folder(const QString &path);

/// Sets a file's modification time. Throws std::runtime_error.
void set_modification_time(const QString &path, qint64 unix_seconds);

/// Sets the time of a file's last access. Throws std::runtime_error.
void set_access_time(const QString &path, qint64 unix_seconds);

} // namespace evidence

#endif
