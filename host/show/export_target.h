#ifndef EXPORT_TARGET_H
#define EXPORT_TARGET_H

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

#include "exit_code.h"

/// Why `files` cannot be written to the folder: it would lie in the evidence that a run of `runs`
/// has read, is no folder, or one of the files is there and `replaces` is false. Creates nothing.
std::optional<refusal> check_export(const QString &directory, const QStringList &files,
                                    const QList<QJsonObject> &runs, bool replaces);

#endif
