#ifndef SHA256_H
#define SHA256_H

#include <QByteArray>
#include <QString>

#include <functional>

class QFile;

/// The SHA-256, hexadecimal, of what the open file still has to read. Empty when a read fails, or
/// as soon as `is_cancelled` returns true, which is asked after each megabyte.
QString sha256_of(
    QFile &file, const std::function<bool()> &is_cancelled = [] { return false; });

/// The same of bytes in memory.
QString sha256_of_bytes(const QByteArray &bytes);

/// The same of a whole file of the examiner's own; empty if it cannot be read.
QString sha256_of(const QString &path);

#endif
