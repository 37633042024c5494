#ifndef RECOVERED_PATHS_H
#define RECOVERED_PATHS_H

#include <QString>
#include <QStringList>

#include <algorithm>

#include "wanted_keys.h"

/// Whether the path is that of the key with these names, in any letter case, or lies below it.
inline bool starts_with(const QStringList &path, const QStringList &names)
{
    if (path.size() < names.size())
        return false;
    return std::equal(
        names.begin(), names.end(), path.begin(),
        [](const QString &a, const QString &b) { return a.compare(b, Qt::CaseInsensitive) == 0; });
}

/// The names of the key's path.
inline QStringList names_of(const wanted_key &key)
{
    return key.path.split(u'\\', Qt::SkipEmptyParts);
}

/// libhivex refusesall subkeys of a key of which it cannot read one name.
inline bool is_readable(const QStringList &names)
{
    return std::all_of(names.begin(), names.end(),
                       [](const QString &name) { return !name.isEmpty() && name.isValidUtf16(); });
}

#endif
