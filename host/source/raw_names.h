#ifndef RAW_NAMES_H
#define RAW_NAMES_H

#include <QByteArray>
#include <QFile>
#include <QString>

#include <filesystem>
#include <system_error>

/// Calls `take` with the name of each entry of the folder as the file system has it, in no order.
/// Returns why some may be missing; no error when all came.
template<typename function>
std::error_code for_each_raw_name(const QString &folder, function take)
{
    std::error_code error;
    const std::filesystem::path path = QFile::encodeName(folder).toStdString();
    for (auto entry = std::filesystem::directory_iterator(path, error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
        take(QByteArray::fromStdString(entry->path().filename().string()));
    return error;
}

/// Whether Qt can open what has this name: of other names it makes texts that lead nowhere.
inline bool is_utf_8(const QByteArray &raw_name)
{
    return QString::fromUtf8(raw_name).toUtf8() == raw_name;
}

#endif
