#ifndef PROGRAM_KEYS_H
#define PROGRAM_KEYS_H

#include <QString>

namespace results {

/// A text of one source, which never meets those of another.
inline QString scoped(const QString &source, const QString &text)
{
    return source + u'\n' + text;
}

/// What the keys of programs begin with: the number of an installation follows, or a folder.
inline const QString installation_prefix = QStringLiteral("key:");
inline const QString folder_prefix = QStringLiteral("folder:");

} // namespace results

#endif
