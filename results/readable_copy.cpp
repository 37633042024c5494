#include "readable_copy.h"

#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace results {

namespace {

const QString journals[] = {u"-journal"_s, u"-wal"_s};

bool has_journal(const QString &database_file)
{
    for (const QString &suffix : journals) {
        if (QFileInfo::exists(database_file + suffix))
            return true;
    }
    return false;
}

} // namespace

readable_copy::readable_copy(const QString &database_file)
{
    const auto copy = [&](const QString &from, const QString &to) {
        QFile source(from);
        if (source.copy(to))
            QFile::setPermissions(to, QFile::ReadOwner | QFile::WriteOwner);
        else
            m_failure = source.errorString();
    };
    copy(database_file, file());
    for (const QString &suffix : journals) {
        if (QFileInfo(database_file + suffix).isFile())
            copy(database_file + suffix, file() + suffix);
    }
}

bool has_write_ahead_log(const QString &database_file)
{
    constexpr qsizetype format_offset = 18; // formats for writing and for reading; 2: with a log
    QFile file(database_file);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray header = file.read(100);
    return header.startsWith("SQLite format 3") && header.size() == 100 &&
           (header.at(format_offset) == 2 || header.at(format_offset + 1) == 2);
}

bool needs_copy(int sqlite_code, const QString &database_file)
{
    constexpr int kind_mask = 0xff;
    return (sqlite_code & kind_mask) == SQLITE_READONLY ||
           (sqlite_code == SQLITE_CANTOPEN && has_journal(database_file));
}

} // namespace results
