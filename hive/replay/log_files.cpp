#include "log_files.h"

#include "log_format.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

QStringList logs_beside(const QString &hive_path)
{
    const QFileInfo hive(hive_path);
    const QString name = hive.fileName();
    const QStringList wanted{name + ".LOG"_L1, name + ".LOG1"_L1, name + ".LOG2"_L1};
    QStringList logs;
    const auto everything = QDir::AllEntries | QDir::Hidden | QDir::System;
    for (const QString &entry : hive.dir().entryList(everything, QDir::Name)) {
        if (wanted.contains(entry, Qt::CaseInsensitive))
            logs.append(entry);
    }
    return logs;
}

std::optional<QByteArray> bytes_of_file(const QString &path, qint64 most_bytes)
{
    const QFileInfo info(path);
    QFile file(path);
    if (!info.isFile() || info.size() > most_bytes ||
        !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return std::nullopt;
    QByteArray bytes(info.size(), Qt::Uninitialized);
    if (file.read(bytes.data(), bytes.size()) != bytes.size())
        return std::nullopt;
    return bytes;
}

hive_condition condition_of_file(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return hive_condition::no_hive;
    return condition_of_hive(file.read(regf::first_bin + regf::page_size));
}

std::optional<QByteArray> bytes_of_hive(const QString &path)
{
    return bytes_of_file(path, regf::first_bin + regf::most_bins_size);
}

log_input log_file(const QString &path, const QString &name)
{
    return {name, [path] { return bytes_of_file(path, regf::longest_log); }};
}
