#include "result_location.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <filesystem>

using namespace Qt::StringLiterals;
namespace fs = std::filesystem;

namespace {

fs::path native_path(const QString &path)
{
    return {QFile::encodeName(path).toStdString()};
}

/// Absolute path in which the links of the part that exists are resolved.
QString resolved(const QString &path)
{
    std::error_code error;
    const fs::path absolute = fs::absolute(native_path(path), error);
    const fs::path canonical = fs::weakly_canonical(absolute, error);
    const fs::path &usable = error ? absolute : canonical;
    const QString text = QFile::decodeName(QByteArray::fromStdString(usable.string()));
    return text.size() > 1 && text.endsWith(u'/') ? text.chopped(1) : text;
}

/// A link that leads nowhere counts: writing through it would create its target.
bool is_taken(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

/// The file or folder at `path` or, when there is none, the nearest folder above it.
QString nearest_existing(const QString &path)
{
    QString candidate = path;
    while (candidate != "/"_L1 && !is_taken(candidate))
        candidate = QFileInfo(candidate).path();
    return candidate;
}

/// Compares the folders themselves, so that letter case and further mounts do not matter.
bool lies_in(const QString &path, const source_volume &volume)
{
    const fs::path root = native_path(volume.root());
    for (fs::path place = native_path(nearest_existing(resolved(path)));;
         place = place.parent_path()) {
        std::error_code error;
        if (fs::equivalent(place, root, error))
            return true;
        if (place == place.parent_path())
            return false;
    }
}

bool is_writable_folder(const QString &path)
{
    const QFileInfo info(path);
    return info.isDir() && info.isWritable() && info.isExecutable();
}

/// Whether a file can be written at `path`, in a folder that may still have to be created.
bool is_file_writable(const QString &path)
{
    const QFileInfo existing(nearest_existing(path));
    return existing.filePath() == path ? existing.isFile() && existing.isWritable()
                                       : is_writable_folder(existing.filePath());
}

QString temporary_directory_of(const result_location &location)
{
    return location.plugin_directory + "/tmp"_L1;
}

refusal refused(const QString &reason)
{
    return {exit_result, reason};
}

} // namespace

result_location locate_result(const QString &result_directory, const QString &artifact_name)
{
    const QString directory = resolved(result_directory);
    const QString name = QString(artifact_name).replace(u' ', u'_');
    const QString separator = directory.endsWith(u'/') ? QString() : u"/"_s;
    const QString plugin_directory = directory + separator + "Artifacts_Result/"_L1 + name;
    return {directory, plugin_directory, plugin_directory + u'/' + name + ".sqlite"_L1};
}

std::optional<refusal> check_result(const result_location &location, const source_volume &volume)
{
    const QString nearest = nearest_existing(location.result_directory);
    if (!QFileInfo(nearest).isDir())
        return refused(u"result folder %1 cannot be made: %2 is no folder"_s.arg(
            location.result_directory, nearest));
    const QString temporary_directory = temporary_directory_of(location);
    for (const QString &path : {location.database_file, temporary_directory}) {
        if (lies_in(path, volume))
            return refused(u"result folder %1 lies in the source, which is never written to"_s.arg(
                location.result_directory));
    }
    if (volume.root().startsWith(resolved(temporary_directory) + u'/'))
        return refused(
            u"the source lies in %1, which is removed at the end"_s.arg(temporary_directory));
    if (!is_file_writable(location.database_file))
        return refused(u"result folder %1 cannot be written to: %2 is not writable"_s.arg(
            location.result_directory, nearest_existing(location.database_file)));
    return std::nullopt;
}

std::optional<refusal> check_debug_log(const QString &file, const result_location &location,
                                       const source_volume &volume)
{
    if (lies_in(file, volume))
        return refused(u"debug log %1 lies in the source, which is never written to"_s.arg(file));
    const QString path = resolved(file);
    if (path == location.database_file || path == location.database_file + "-journal"_L1)
        return refused(u"debug log %1 is the result database"_s.arg(file));
    if (path.startsWith(temporary_directory_of(location) + u'/'))
        return refused(u"debug log %1 lies in a folder that is removed at the end"_s.arg(file));
    const QFileInfo info(path);
    if (!QFileInfo(info.path()).isDir())
        return refused(u"debug log %1 cannot be made: its folder does not exist"_s.arg(file));
    if (!is_file_writable(path))
        return refused(u"debug log %1 cannot be written"_s.arg(file));
    return std::nullopt;
}

std::optional<refusal> create_result_directory(const result_location &location)
{
    if (QDir().mkpath(location.plugin_directory))
        return std::nullopt;
    return refused(u"result folder %1 cannot be made"_s.arg(location.plugin_directory));
}

std::optional<refusal> create_debug_log(const QString &file)
{
    QFile log(file);
    if (log.open(QIODevice::WriteOnly | QIODevice::Append))
        return std::nullopt;
    return refused(u"debug log %1 cannot be written: %2"_s.arg(file, log.errorString()));
}
