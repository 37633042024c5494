#ifndef NEW_FILE_H
#define NEW_FILE_H

#include <QByteArray>
#include <QString>

/// Writes a file that nobody else may read. It appears under its name once all of it is written; a
/// file that is there already stays as it is. Returns why that failed, or an empty text.
QString write_new_file(const QString &path, const QByteArray &bytes);

#endif
