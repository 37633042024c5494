#ifndef RAW_NAMES_H
#define RAW_NAMES_H

#include <QByteArrayView>
#include <QFile>
#include <QString>

#include <cerrno>
#include <dirent.h>
#include <memory>
#include <system_error>

/// Calls `take` with the name of each entry of the folder as the file system has it, in no order.
/// Returns why some may be missing; no error when all came. Keeps no names: there may be a million.
template<typename function>
std::error_code for_each_raw_name(const QString &folder, function take)
{
    struct close
    {
        void operator()(DIR *listing) const { closedir(listing); }
    };
    const std::unique_ptr<DIR, close> listing(opendir(QFile::encodeName(folder).constData()));
    if (!listing)
        return {errno, std::generic_category()};
    errno = 0;
    while (const dirent *entry = readdir(listing.get())) {
        const QByteArrayView name(entry->d_name);
        if (name != QByteArrayView(".") && name != QByteArrayView(".."))
            take(name);
        errno = 0;
    }
    return {errno, std::generic_category()};
}

/// Whether Qt can open what has this name: of other names it makes texts that lead nowhere.
inline bool is_utf_8(QByteArrayView raw_name)
{
    // Qt leaves a byte order mark out.
    return raw_name.isValidUtf8() && !raw_name.startsWith("\xef\xbb\xbf");
}

#endif
