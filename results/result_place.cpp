#include "result_place.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace results {

namespace {

result_place no_result(const QString &reason)
{
    return {{}, {}, reason};
}

result_place place_of_database(const QString &file)
{
    const QFileInfo info(file);
    return {info.absoluteFilePath(), info.absolutePath() + "/run.json"_L1, {}};
}

bool is_database_of(const QDir &folder)
{
    return QFileInfo(folder.filePath(folder.dirName() + ".sqlite"_L1)).isFile();
}

/// The databases in the folders of plug-ins below a run's result folder, and in the folder itself.
QStringList databases_in(const QDir &folder)
{
    QStringList files;
    const QDir plugins(folder.filePath(u"Artifacts_Result"_s));
    for (const QString &name : plugins.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        if (is_database_of(QDir(plugins.filePath(name))))
            files.append(plugins.filePath(name) + u'/' + name + ".sqlite"_L1);
    }
    if (files.isEmpty()) {
        for (const QString &name : folder.entryList({u"*.sqlite"_s}, QDir::Files, QDir::Name))
            files.append(folder.filePath(name));
        files.removeIf(
            [](const QString &file) { return file.endsWith(end_of_recovered_database); });
    }
    return files;
}

} // namespace

result_place find_result(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return no_result(u"result %1 does not exist"_s.arg(path));
    if (info.isFile())
        return place_of_database(path);
    if (!info.isDir())
        return no_result(u"result %1 is neither a folder nor a file"_s.arg(path));
    if (!info.isReadable())
        return no_result(u"result folder %1 cannot be listed"_s.arg(path));
    const QStringList files = databases_in(QDir(info.absoluteFilePath()));
    if (files.isEmpty())
        return no_result(
            u"folder %1 holds no result: neither Artifacts_Result nor a database"_s.arg(path));
    if (files.size() > 1)
        return no_result(u"folder %1 holds several databases; give one of them: %2"_s.arg(
            path, files.join(", "_L1)));
    return place_of_database(files.first());
}

} // namespace results
