#include "files.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <stdexcept>

namespace evidence {

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void fail(const QString &action, const QString &path)
{
    throw std::runtime_error(u"cannot %1 %2"_s.arg(action, path).toStdString());
}

void set_file_time(const QString &path, qint64 unix_seconds, QFileDevice::FileTime kind)
{
    QFile file(path);
    const QDateTime time = QDateTime::fromSecsSinceEpoch(unix_seconds, Qt::UTC);
    if (!file.open(QIODevice::ReadWrite) || !file.setFileTime(time, kind))
        fail(u"set a time of"_s, path);
}

} // namespace

void write_file(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(content) != content.size() || !file.flush())
        fail(u"write"_s, path);
}

QByteArray read_file(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(u"read"_s, path);
    return file.readAll();
}

void make_folder(const QString &path)
{
    if (!QDir().mkpath(path))
        fail(u"create the folder"_s, path);
}

void set_modification_time(const QString &path, qint64 unix_seconds)
{
    set_file_time(path, unix_seconds, QFileDevice::FileModificationTime);
}

void set_access_time(const QString &path, qint64 unix_seconds)
{
    set_file_time(path, unix_seconds, QFileDevice::FileAccessTime);
}

} // namespace evidence
