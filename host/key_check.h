#ifndef KEY_CHECK_H
#define KEY_CHECK_H

#include <QString>
#include <QStringList>

/// Whether libhivex opens the regular file as a registry hive. The whole file is read.
bool opens_as_hive(const QString &hive_file);

/// What keeps libhivex from listing the keys at `key_paths` ("\" between keys, below the root) of
/// the hive: one finding per reason, none when all keys are readable or absent. One name among
/// its sisters that cannot be decoded is enough to hide a key.
QStringList key_findings(const QString &hive_file, const QStringList &key_paths);

#endif
