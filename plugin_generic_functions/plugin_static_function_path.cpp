#include "plugin_static_function.h"

#include "available_name.h"
#include "whole_file_copy.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QLatin1StringView>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr auto home_kind = "macOS_Home_Directory"_L1;
constexpr auto users_folder = "/Users/"_L1;

QString with_leading_slash(const QString &path)
{
    return path.startsWith(u'/') || path.trimmed().isEmpty() ? path : u'/' + path;
}

QString without_prefix(const QString &path, const QString &prefix)
{
    const qsizetype position = path.indexOf(prefix);
    return position < 0 ? path : path.mid(position + prefix.size());
}

// A tree copy: where it began and where it goes, both canonical.
struct tree_copy
{
    QString source_root;
    QString destination_root;
};

void log_copy_line(const QString &message)
{
    plugin_static_function::app_debug(
        "[copy_directory]"_L1 + message,
        u"static void plugin_static_function::copy_directory(QString, QString)"_s);
}

void log_copy_failure(QLatin1StringView side, const QString &file_name, const QString &error)
{
    log_copy_line(u' ' + side + " file open ----FAILED---- :"_L1 + file_name);
    log_copy_line(" Error:"_L1 + error);
}

bool leaves_tree(const QFileInfo &entry, const tree_copy &tree)
{
    return !entry.canonicalFilePath().startsWith(tree.source_root + u'/');
}

// Logs a link that leads to no file of the tree; such a link is left out.
bool log_link_passed_over(const QFileInfo &file, const tree_copy &tree)
{
    if (!file.isSymLink())
        return false;
    const bool leaves = leaves_tree(file, tree);
    if (leaves)
        log_copy_line(" link out of the directory passed over :"_L1 + file.fileName());
    else if (!file.isFile())
        log_copy_line(" link to a special file passed over :"_L1 + file.fileName());
    return leaves || !file.isFile();
}

void copy_file(const QFileInfo &file, const QString &destination_path, const tree_copy &tree)
{
    using copied = whole_file_copy_result::status;
    if (log_link_passed_over(file, tree))
        return;
    const whole_file_copy_result result =
        copy_whole_file(file.filePath(), destination_path + u'/' + file.fileName(),
                        plugin_static_function::bool_cancel_extraction);
    if (result.how == copied::source_failed)
        log_copy_failure("source"_L1, file.fileName(), result.error);
    if (result.how == copied::destination_failed)
        log_copy_failure("destination"_L1, file.fileName(), result.error);
}

void copy_tree(const QString &source_path, const QString &destination_path, const tree_copy &tree);

// Links to directories are not followed: the directory would be copied again for each link, or in
// an endless loop.
void copy_subdirectory(const QFileInfo &directory, const QString &destination_path,
                       const tree_copy &tree)
{
    // A link to a special file is listed among the directories too.
    if (!directory.isDir())
        return;
    if (directory.isSymLink()) {
        log_copy_line(" link to a directory passed over :"_L1 + directory.fileName());
        return;
    }
    if (directory.canonicalFilePath() != tree.destination_root)
        copy_tree(directory.filePath(), destination_path + u'/' + directory.fileName(), tree);
}

void copy_tree(const QString &source_path, const QString &destination_path, const tree_copy &tree)
{
    QDir().mkpath(destination_path);
    const QDir source(source_path);
    const QDir::Filters shared = QDir::NoDotAndDotDot | QDir::Hidden;
    for (const QFileInfo &file : source.entryInfoList(shared | QDir::Files, QDir::Unsorted)) {
        if (plugin_static_function::bool_cancel_extraction)
            return;
        copy_file(file, destination_path, tree);
    }
    for (const QFileInfo &directory : source.entryInfoList(shared | QDir::AllDirs)) {
        if (plugin_static_function::bool_cancel_extraction)
            return;
        copy_subdirectory(directory, destination_path, tree);
    }
}

// A slash at the end, or a slash and a dot, makes the file system follow a link, so these are
// removed. The rest stays, because only the file system knows where ".." behind a link leads.
QString without_trailing_slashes(QString path)
{
    while (path.size() > 1 && (path.endsWith(u'/') || path.endsWith("/."_L1)))
        path.chop(1);
    return path;
}

void remove_tree(const QString &directory_path)
{
    const QFileInfoList entries = QDir(directory_path)
                                      .entryInfoList(QDir::NoDotAndDotDot | QDir::System |
                                                         QDir::Hidden | QDir::AllDirs | QDir::Files,
                                                     QDir::DirsFirst);
    for (const QFileInfo &entry : entries) {
        // Qt lists a link to a directory as a directory, but it is removed as a link.
        if (entry.isDir() && !entry.isSymLink())
            remove_tree(entry.filePath());
        else
            QFile::remove(entry.filePath());
    }
    QDir().rmdir(directory_path);
}

QString fixed_notation(quint64 size, quint64 unit, QLatin1StringView suffix)
{
    return QString::number(static_cast<double>(size) / static_cast<double>(unit), 'f', 2) + suffix;
}

// The first number of a size text and the letters behind it.
QRegularExpressionMatch size_parts(const QString &size_text)
{
    static const QRegularExpression pattern(u"([0-9]+(?:[.,][0-9]+)*)\\s*([A-Za-z]*)"_s);
    return pattern.match(size_text);
}

// From version 11 on only the major number counts, and all later versions are like 11.
QString scan_version(const QString &os_version)
{
    if (os_version.contains("iOS"_L1))
        return u"iOS"_s;
    static const QRegularExpression pattern(u"([0-9]+)(?:\\.[0-9]+)?"_s);
    const QRegularExpressionMatch version = pattern.match(os_version);
    return version.captured(1).toInt() >= 11 ? u"11"_s : version.captured();
}

bool holds_one_of(const QString &folder_path, const QString &name, const QStringList &suffixes,
                  const QString &function_info)
{
    return std::any_of(suffixes.cbegin(), suffixes.cend(), [&](const QString &suffix) {
        return plugin_static_function::is_file_exist_in_dir(folder_path, name + suffix,
                                                            function_info);
    });
}

} // namespace

QString available_name(const QString &file_name, const QString &folder_path,
                       const QStringList &suffixes, const QString &function_info)
{
    const bool &cancel = plugin_static_function::bool_cancel_extraction;
    QDir().mkpath(folder_path);
    QString candidate = file_name;
    for (int counter = 1; !cancel; ++counter) {
        // A cancelled listing does not show whether the name is free.
        if (!holds_one_of(folder_path, candidate, suffixes, function_info))
            return cancel ? QString() : candidate;
        candidate = QString::number(counter) + u'_' + file_name;
    }
    return {};
}

struct_GLOBAL_ARTIFACT_artifact_source_file plugin_static_function::get_final_artifact_source_file(
    const QString &file_path, const QString &path_prefix, const QString &source_kind)
{
    const bool in_home = source_kind == home_kind;
    return {get_relative_file_path(file_path, path_prefix, source_kind),
            in_home ? file_path : QString()};
}

QString plugin_static_function::get_relative_file_path(const QString &file_path,
                                                       const QString &path_prefix,
                                                       const QString &source_kind)
{
    return with_leading_slash(source_kind == home_kind ? without_prefix(file_path, path_prefix)
                                                       : file_path);
}

QString plugin_static_function::get_complete_file_path(const QString &file_path,
                                                       const QString &user_name,
                                                       const QString &source_kind)
{
    if (source_kind != home_kind || !file_path.startsWith(users_folder))
        return with_leading_slash(file_path);
    const qsizetype rest = file_path.indexOf(u'/', users_folder.size());
    return users_folder + user_name + (rest < 0 ? file_path : file_path.mid(rest));
}

QString plugin_static_function::extract_user_name_from_sourcefile(const QString &file_path,
                                                                  const QString &path_prefix)
{
    if (system_account_QStringList.isEmpty())
        return {};
    return file_path.mid(path_prefix.size()).section(u'/', 1, 1);
}

void plugin_static_function::remove_directory(const QString &directory_path)
{
    if (directory_path.trimmed().isEmpty())
        return;
    const QFileInfo directory(without_trailing_slashes(directory_path));
    const QString place = directory.canonicalFilePath(); // empty where nothing is
    if (place.isEmpty() || !directory.isDir())
        return;
    if (directory.isSymLink())
        QFile::remove(directory.filePath());
    else
        remove_tree(place);
}

void plugin_static_function::copy_directory(const QString &source_path,
                                            const QString &destination_path)
{
    if (source_path.isEmpty() || !QDir(source_path).exists()) {
        log_copy_line(" source diectory does not exist ----FAILED---- :"_L1 + source_path);
        return;
    }
    QDir().mkpath(destination_path);
    const tree_copy tree = {QFileInfo(source_path).canonicalFilePath(),
                            QFileInfo(destination_path).canonicalFilePath()};
    if (tree.source_root != tree.destination_root)
        copy_tree(source_path, destination_path, tree);
}

QString plugin_static_function::human_readable_size(const QString &size_in_bytes)
{
    const QString text = size_in_bytes.trimmed();
    if (text.isEmpty())
        return {};
    constexpr quint64 kilobyte = 1024;
    constexpr quint64 megabyte = 1024 * kilobyte;
    const quint64 size = text.toULongLong();
    if (size < kilobyte)
        return QString::number(size) + " B"_L1;
    if (size < megabyte)
        return fixed_notation(size, kilobyte, " KB"_L1);
    // The fixed texts have no greater unit.
    return fixed_notation(size, megabyte, " MB"_L1);
}

QString plugin_static_function::get_available_file(const QString &file_path,
                                                   const QString &folder_path,
                                                   const QString & /*caller*/)
{
    const QString function_info =
        u"static QString plugin_static_function::get_available_file(QString, QString, QString)"_s;
    return available_name(QFileInfo(file_path).fileName(), folder_path, {QString()}, function_info);
}

bool plugin_static_function::is_file_exist_in_dir(const QString &folder_path,
                                                  const QString &file_name,
                                                  const QString & /*caller*/)
{
    const QString wanted = file_name.trimmed();
    QDirIterator entries(folder_path,
                         QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    while (entries.hasNext() && !bool_cancel_extraction) {
        entries.next();
        if (entries.fileName().trimmed() == wanted)
            return true;
    }
    return false;
}

QString plugin_static_function::mining_suffix(const QString &size_text)
{
    return size_parts(size_text).captured(2);
}

QString plugin_static_function::mining_size(const QString &size_text)
{
    return size_parts(size_text).captured(1);
}

QString plugin_static_function::get_examiner_machine_os_scan_version()
{
    return scan_version(examiner_machine_os_version_full);
}

QString plugin_static_function::get_source_os_scan_version(const QString &os_scheme)
{
    return os_scheme.contains("iOS"_L1) ? u"iOS"_s : scan_version(source_os_version_full);
}
