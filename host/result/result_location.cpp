#include "result_location.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include "evidence_guard.h"
#include "result_place.h"

using namespace Qt::StringLiterals;

namespace {

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

/// The files of the run itself, which it writes under these names.
QStringList files_of_run(const result_location &location)
{
    return {resolved(location.record_file), resolved(location.lock_file)};
}

/// The temporary folder, which is removed with all that it holds.
QStringList folders_to_remove(const result_location &location)
{
    QStringList folders{temporary_directory_of(location)};
    if (QFileInfo(folders.first()).isSymLink())
        return folders; // goes as a link
    QDirIterator entries(folders.first(),
                         QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks,
                         QDirIterator::Subdirectories);
    while (entries.hasNext())
        folders.append(entries.next());
    return folders;
}

/// Why nothing may be written at `paths`; `name` is what the refusal calls them.
std::optional<refusal> evidence_at(const QStringList &paths, const QString &name,
                                   const QString &root)
{
    const evidence_relation relation = evidence_guard(root).relation_of(paths);
    if (relation.is == evidence_relation::kind::within)
        return refused(u"%1 lies in the source, which is never written to"_s.arg(name));
    if (relation.is == evidence_relation::kind::unknown)
        return refused(u"%1 may lie in the source: %2 cannot be looked through to find out"_s.arg(
            name, relation.hidden_folder));
    return std::nullopt;
}

/// A file that is there already could be a file of the evidence under a second name.
std::optional<refusal> second_name_of(const QString &path)
{
    const auto facts = facts_of(path);
    if (!facts || facts->is_folder || facts->links < 2)
        return std::nullopt;
    return refused(u"%1 is not written to: the same file has other names (hard links), which may "
                   "be evidence"_s.arg(path));
}

/// Opening a pipe would wait for ever, and a folder in a file's place cannot be removed. The run
/// record is not among these: what is none is set aside.
QStringList files_to_be_regular(const result_location &location)
{
    const QString lock = resolved(location.lock_file);
    const QString removal_lock = lock + ".rmlock"_L1; // what QLockFile makes for a lock of the dead
    return files_of_database(location.database_file) << lock << removal_lock;
}

std::optional<refusal> check_regular(const result_location &location)
{
    for (const QString &file : files_to_be_regular(location)) {
        const QFileInfo info(file);
        if (info.exists() && !info.isFile())
            return refused(u"result folder %1 cannot be written to: %2 is no regular file"_s.arg(
                location.result_directory, file));
    }
    return std::nullopt;
}

} // namespace

QStringList files_of_database(const QString &database_file)
{
    const QString file = resolved(database_file);
    return {file, file + "-journal"_L1, file + "-wal"_L1, file + "-shm"_L1};
}

result_location locate_result(const QString &result_directory, const QString &artifact_name)
{
    const QString directory = resolved(result_directory);
    const QString name = QString(artifact_name).replace(u' ', u'_');
    const QString separator = directory.endsWith(u'/') ? QString() : u"/"_s;
    const QString plugin_directory = directory + separator + "Artifacts_Result/"_L1 + name;
    return {directory,
            plugin_directory,
            plugin_directory + u'/' + name + ".sqlite"_L1,
            plugin_directory + "/run.json"_L1,
            plugin_directory + "/run.lock"_L1,
            plugin_directory + "/recovered_hives"_L1,
            plugin_directory + u'/' + name + results::end_of_recovered_database,
            plugin_directory + "/rebuilt_hives"_L1};
}

std::optional<refusal> check_result(const result_location &location, const source_volume &volume)
{
    if (location.result_directory.isEmpty())
        return refused(
            u"the result folder cannot be found: the working directory does not exist any more"_s);
    const QString nearest = nearest_existing(location.result_directory);
    if (!QFileInfo(nearest).isDir())
        return refused(u"result folder %1 cannot be made: %2 is no folder"_s.arg(
            location.result_directory, nearest));
    // A temporary folder that is a link goes as a link.
    if (volume.source_root().startsWith(resolved(location.plugin_directory) + "/tmp/"_L1))
        return refused(u"the source lies in %1, which is removed at the end"_s.arg(
            temporary_directory_of(location)));
    const QString name = u"result folder %1"_s.arg(location.result_directory);
    const QStringList files = files_of_database(location.database_file) + files_of_run(location) +
                              files_of_database(location.deleted_database);
    const QStringList folders = folders_to_remove(location)
                                << location.recovered_directory << location.rebuilt_directory;
    if (auto refused = evidence_at(files + folders, name, volume.source_root()))
        return refused;
    for (const QString &file : files) {
        if (auto refused = second_name_of(file))
            return refused;
    }
    if (!is_file_writable(location.database_file))
        return refused(u"result folder %1 cannot be written to: %2 is not writable"_s.arg(
            location.result_directory, nearest_existing(location.database_file)));
    return check_regular(location);
}

std::optional<refusal> check_debug_log(const QString &file, const result_location &location,
                                       const source_volume &volume)
{
    const QString path = resolved(file);
    if (path.isEmpty())
        return refused(u"debug log %1 cannot be found: the working directory does not exist any "
                       "more"_s.arg(file));
    if (auto refused = evidence_at({file}, u"debug log %1"_s.arg(file), volume.source_root()))
        return refused;
    if (files_of_database(location.database_file).contains(path))
        return refused(u"debug log %1 is the result database"_s.arg(file));
    if (files_of_run(location).contains(path))
        return refused(u"debug log %1 is the run record or its lock"_s.arg(file));
    if (path.startsWith(temporary_directory_of(location) + u'/'))
        return refused(u"debug log %1 lies in a folder that is removed at the end"_s.arg(file));
    const QFileInfo info(path);
    if (!QFileInfo(info.path()).isDir())
        return refused(u"debug log %1 cannot be made: its folder does not exist"_s.arg(file));
    if (!is_file_writable(path))
        return refused(u"debug log %1 cannot be written"_s.arg(file));
    return second_name_of(path);
}

std::optional<refusal> check_apart(const QString &file, const QString &name,
                                   const QStringList &roots)
{
    for (const QString &root : roots) {
        if (auto refused = evidence_at({resolved(file)}, name, root))
            return refused;
    }
    return std::nullopt;
}

std::optional<refusal> check_new_file(const QString &file, const QString &name,
                                      const QStringList &roots)
{
    const QString path = resolved(file);
    if (path.isEmpty())
        return refused(
            u"%1 cannot be found: the working directory does not exist any more"_s.arg(name));
    if (auto refused = check_apart(path, name, roots))
        return refused;
    if (QFileInfo::exists(path) || QFileInfo(path).isSymLink())
        return refused(u"%1 is there already and stays as it is"_s.arg(name));
    if (!QFileInfo(QFileInfo(path).path()).isDir())
        return refused(u"%1 cannot be made: its folder does not exist"_s.arg(name));
    if (!is_file_writable(path))
        return refused(u"%1 cannot be written"_s.arg(name));
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
