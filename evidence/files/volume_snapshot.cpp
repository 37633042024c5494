#include "volume_snapshot.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <sys/stat.h>

namespace evidence {

using namespace Qt::StringLiterals;

namespace {

namespace fs = std::filesystem;

qint64 modified_ns(const struct stat &info)
{
#ifdef Q_OS_DARWIN
    const timespec &time = info.st_mtimespec;
#else
    const timespec &time = info.st_mtim;
#endif
    return time.tv_sec * 1000000000LL + time.tv_nsec;
}

struct stat status_of(const fs::path &path)
{
    struct stat info = {};
    if (lstat(path.c_str(), &info) != 0)
        throw std::runtime_error("cannot look at " + path.string());
    return info;
}

// Read without Qt, which cannot open a file whose name is no valid UTF-8.
QByteArray sha256_of(const fs::path &path)
{
    std::ifstream file(path, std::ios::binary);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    QByteArray block(1 << 16, '\0');
    while (file.read(block.data(), block.size()) || file.gcount() > 0)
        hash.addData(block.left(static_cast<qsizetype>(file.gcount())));
    if (!file.eof())
        throw std::runtime_error("cannot read " + path.string());
    return hash.result().toHex();
}

QString escaped(const fs::path &path)
{
    return QString::fromLatin1(QByteArray::fromStdString(path.string()).toPercentEncoding("/"));
}

QString content_of(const fs::path &path, mode_t mode)
{
    if (S_ISREG(mode))
        return QString::fromLatin1(sha256_of(path));
    return S_ISLNK(mode) ? escaped(fs::read_symlink(path)) : QString();
}

QString line_for(const fs::path &path, const fs::path &root)
{
    const struct stat info = status_of(path);
    const qint64 size = S_ISREG(info.st_mode) ? info.st_size : 0;
    const QStringList parts{escaped(path.lexically_relative(root)),
                            QString::number(info.st_mode, 8), QString::number(size),
                            QString::number(modified_ns(info)), content_of(path, info.st_mode)};
    return parts.join(u' ');
}

} // namespace

QStringList volume_snapshot(const QString &folder)
{
    const fs::path root = fs::path(folder.toStdString()).lexically_normal();
    QStringList lines{line_for(root, root)};
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(root))
        lines.append(line_for(entry.path(), root));
    lines.sort();
    return lines;
}

} // namespace evidence
