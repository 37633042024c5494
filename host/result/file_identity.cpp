#include "file_identity.h"

#include <QFile>

#include <sys/stat.h>

namespace {

file_facts facts_from(const struct stat &status)
{
    return {{static_cast<quint64>(status.st_dev), static_cast<quint64>(status.st_ino)},
            static_cast<quint64>(status.st_nlink),
            S_ISDIR(status.st_mode)};
}

} // namespace

std::optional<file_facts> facts_of(const QString &path)
{
    struct stat status = {};
    if (stat(QFile::encodeName(path).constData(), &status) != 0)
        return std::nullopt;
    return facts_from(status);
}

std::optional<file_facts> facts_of_entry(const QByteArray &path)
{
    struct stat status = {};
    if (lstat(path.constData(), &status) != 0)
        return std::nullopt;
    return facts_from(status);
}
