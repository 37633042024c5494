#include "read_files.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <filesystem>

#include "hive_precheck.h"

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 most_of_a_part = 1 << 20;

/// Reads the open file to its end. An empty text when that fails or is cancelled.
QString sha256_of_content(QFile &file, const std::function<bool()> &is_cancelled)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const qint64 part_size = std::clamp<qint64>(file.size(), 1, most_of_a_part);
    QByteArray part(part_size, Qt::Uninitialized);
    qint64 size = 0;
    while ((size = file.read(part.data(), part_size)) > 0) {
        hash.addData(QByteArrayView(part.constData(), size));
        if (is_cancelled())
            return {};
    }
    return size < 0 ? QString() : QString::fromLatin1(hash.result().toHex());
}

void add_hash(file_look &look, const QString &path, const hashing &how)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        look.failure = file.errorString();
    else if (how.is_wanted)
        look.sha256 = sha256_of_content(file, how.is_cancelled);
}

file_look look_at(const source_volume &volume, const QString &relative, const hashing &how)
{
    const QFileInfo info(volume.root() + relative);
    file_look look{
        info.size(), info.lastModified(), info.metadataChangeTime(), info.birthTime(), {}, {}};
    if (volume.leads_out(relative))
        look.failure = u"a link leads out of the source"_s;
    else if (!info.isFile())
        look.failure = info.exists() ? u"not a regular file"_s : u"not found"_s;
    else
        add_hash(look, info.filePath(), how);
    return look;
}

/// What the header of the hive tells, in one word or two.
QString state_of(const hive_findings &hive)
{
    if (!hive.readable)
        return u"unreadable"_s;
    QStringList states;
    if (hive.is_cut_off)
        states.append(u"cut off"_s);
    states.append(hive.is_dirty ? u"dirty"_s : u"clean"_s);
    return states.join(", "_L1);
}

QStringList paths_of_hives(const source_volume &volume, const QStringList &accounts,
                           const QList<host_tab> &tabs)
{
    QStringList paths;
    if (any_reads(tabs, tab_input::software_hive)) {
        paths.append(volume.software_hive());
        if (software_hive_to_read(volume) != volume.software_hive())
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
           before.failure == after.failure;
}

/// Counts without keeping the entries: there may be a million.
qint64 entries_in(const QString &folder)
{
    qint64 entries = 0;
    std::error_code error;
    std::filesystem::directory_iterator entry(QFile::encodeName(folder).toStdString(), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
        ++entries;
    return entries;
}

} // namespace

QList<read_file> files_before_run(const source_volume &volume, const QStringList &accounts,
                                  const QList<host_tab> &tabs, const hashing &how)
{
    QList<read_file> files;
    for (const QString &path : paths_of_hives(volume, accounts, tabs)) {
        const hive_findings hive = check_hive_file(volume.root() + path);
        files.append({path, state_of(hive), hive.transaction_logs, look_at(volume, path, how), {}});
    }
    return files;
}

QStringList look_again(const source_volume &volume, QList<read_file> &files, const hashing &how)
{
    QStringList changed;
    for (read_file &file : files) {
        file.after = look_at(volume, file.path, how);
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
        if (QFileInfo(volume.root() + path).isDir() && !volume.leads_out(path))
            folders.append({path, entries_in(volume.root() + path)});
    }
    return folders;
}

QString sha256_of(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return {};
    return sha256_of_content(file, [] { return false; });
}
