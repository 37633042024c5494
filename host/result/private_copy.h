#ifndef PRIVATE_COPY_H
#define PRIVATE_COPY_H

#include <QByteArray>
#include <QString>
#include <QStringList>

/// Writes the bytes, of which `sha256` is the hash, to a new file at `wanted`, or takes a file that
/// has them. Where another file lies, the name gets a number. Nothing is written to the evidence
/// below any of `evidence`, which are absolute paths. Returns the path; if there is none, `failure`
/// tells why.
QString private_copy(const QByteArray &bytes, const QString &sha256, const QString &wanted,
                     const QStringList &evidence, QString &failure);

#endif
