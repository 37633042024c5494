#ifndef IMAGE_FILE_H
#define IMAGE_FILE_H

#include <QString>

/// What to do with the file at `path` so that its content becomes a source: what it is, by its
/// first bytes, and one way to mount it for reading only. Nothing but a regular file is opened.
QString advice_about(const QString &path);

#endif
