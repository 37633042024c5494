#ifndef EXPORT_TARGET_H
#define EXPORT_TARGET_H

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

#include "exit_code.h"
#include "looked_at_result.h"

/// Why `files` cannot be written to the folder: it would lie in the evidence that a run of the
/// result has read, is no folder, a file belongs to the result itself, or one is there and
/// `replaces` is false. Creates nothing.
std::optional<refusal> check_export(const QString &directory, const QStringList &files,
                                    const looked_at_result &looked, bool replaces);

#endif
