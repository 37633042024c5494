#ifndef WORKSPACE_H
#define WORKSPACE_H

#include "files.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace test_support {

/// A temporary folder in which paths are given relative to it.
class workspace
{
public:
    /// Returns the absolute path.
    QString path(const QString &relative) const { return folder.filePath(relative); }
    /// Writes a file, below folders that are made when absent.
    void file(const QString &relative, const QByteArray &content = "content") const
    {
        evidence::make_folder(QFileInfo(path(relative)).path());
        evidence::write_file(path(relative), content);
    }
    /// Makes a symbolic link to `target`, which is taken as it is.
    void link(const QString &relative, const QString &target) const
    {
        QVERIFY(QFile::link(target, path(relative)));
    }
    /// Makes a named pipe.
    void pipe(const QString &relative) const
    {
        QCOMPARE(mkfifo(QFile::encodeName(path(relative)).constData(), 0600), 0);
    }
    /// Every entry below the folder, sorted; links are not followed.
    QStringList entries(const QString &relative) const
    {
        QStringList found;
        QDirIterator below(path(relative),
                           QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                           QDirIterator::Subdirectories);
        while (below.hasNext())
            found.append(QDir(path(relative)).relativeFilePath(below.next()));
        found.sort();
        return found;
    }
    /// Whether there is an entry of the name, a broken link included.
    bool exists(const QString &relative) const
    {
        const QFileInfo info(path(relative));
        return info.exists() || info.isSymLink();
    }

private:
    QTemporaryDir folder;
};

} // namespace test_support

#endif
