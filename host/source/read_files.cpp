#include "read_files.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

#include "hive_precheck.h"
#include "raw_names.h"

using namespace Qt::StringLiterals;

namespace {

file_look look_at(const source_volume &volume, const QString &relative)
{
    const QFileInfo info(volume.root() + relative);
    file_look look{
        info.size(), info.lastModified(), info.metadataChangeTime(), info.birthTime(), {}, {}};
    if (volume.leads_out(relative))
        look.failure = u"a link leads out of the source"_s;
    else if (!info.isFile())
        look.failure = info.exists() ? u"not a regular file"_s : u"not found"_s;
    else if (QFile file(info.filePath()); !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        look.failure = file.errorString();
    return look;
}

/// What the header of the hive tells, in one word or two.
QString state_of(const hive_findings &hive)
{
    if (!hive.readable)
        return read_file::unreadable;
    QStringList states;
    if (hive.is_cut_off)
        states.append(u"cut off"_s);
    states.append(hive.is_dirty ? u"dirty"_s : u"clean"_s);
    return states.join(", "_L1);
}

QStringList paths_of_hives(const source_volume &volume, const QString &software_hive,
                           const QStringList &accounts, const QList<host_tab> &tabs)
{
    QStringList paths;
    if (any_reads(tabs, tab_input::software_hive)) {
        paths.append(volume.software_hive());
        if (software_hive != volume.software_hive())
            paths.append(volume.software_backup());
    }
    if (reads_user_hives(tabs)) {
        for (const QString &account : accounts)
            paths.append(volume.user_hive(account));
    }
    paths.removeIf([&volume](const QString &path) {
        return !volume.holds(path) && !is_hidden(volume.root() + path);
    });
    return paths;
}

bool is_same(const file_look &before, const file_look &after)
{
    const bool is_same_content =
        before.sha256.isEmpty() || after.sha256.isEmpty() || before.sha256 == after.sha256;
    return is_same_content && before.size == after.size && before.modified == after.modified &&
           before.changed == after.changed && before.failure == after.failure;
}

} // namespace

/// Counts without keeping the entries: there may be a million.
qint64 entries_in(const QString &folder)
{
    qint64 entries = 0;
    for_each_raw_name(folder, [&entries](QByteArrayView) { ++entries; });
    return entries;
}

QList<read_file> files_before_run(const source_volume &volume, const QString &software_hive,
                                  const QStringList &accounts, const QList<host_tab> &tabs)
{
    QList<read_file> files;
    for (const QString &path : paths_of_hives(volume, software_hive, accounts, tabs)) {
        const hive_findings hive = check_hive_file(volume.root() + path);
        files.append({path, state_of(hive), hive.transaction_logs, look_at(volume, path), {}});
    }
    return files;
}

void look_again(const source_volume &volume, QList<read_file> &files)
{
    for (read_file &file : files)
        file.after = look_at(volume, file.path);
}

QStringList changed_files(const QList<read_file> &files)
{
    QStringList changed;
    for (const read_file &file : files) {
        if (!is_same(file.before, file.after))
            changed.append(file.path + ": was changed by somebody else during the run"_L1);
    }
    return changed;
}

QList<listed_folder> listed_folders(const source_volume &volume, const QStringList &accounts,
                                    const QList<host_tab> &tabs)
{
    QList<listed_folder> folders;
    if (!any_reads(tabs, tab_input::package_folder))
        return folders;
    for (const QString &account : accounts) {
        const QString path = volume.package_folder(account);
        const QFileInfo info(volume.root() + path);
        if (info.isDir() && !volume.leads_out(path))
            folders.append({path, info.lastModified(), entries_in(info.filePath())});
    }
    return folders;
}
