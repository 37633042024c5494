#include "source_volume.h"

#include <QFile>
#include <QFileInfo>

#include <filesystem>

#include "image_file.h"

using namespace Qt::StringLiterals;

namespace {

QString root_of(const QString &directory)
{
    const QString root = QFileInfo(directory).canonicalFilePath();
    return root.endsWith(u'/') ? root : root + u'/';
}

} // namespace

std::optional<refusal> check_source(const QString &directory)
{
    const QFileInfo info(directory);
    if (directory.isEmpty() || !info.exists())
        return refusal{exit_source, u"source %1 does not exist"_s.arg(directory)};
    if (!info.isDir())
        return refusal{exit_source,
                       u"source %1 is no folder: %2"_s.arg(directory, advice_about(directory))};
    if (!info.isReadable() || !info.isExecutable())
        return refusal{exit_source, u"source %1 cannot be read"_s.arg(directory)};
    return std::nullopt;
}

bool is_hidden(const QString &path)
{
    std::error_code error;
    static_cast<void>(std::filesystem::status(QFile::encodeName(path).toStdString(), error));
    return error == std::errc::permission_denied;
}

bool is_broken_link(const QString &path)
{
    const QFileInfo info(path);
    return info.isSymLink() && !info.exists() && !is_hidden(path);
}

source_volume::source_volume(const QString &directory, const reading_options &options,
                             const QString &source)
    : m_root(root_of(directory)),
      m_source_root(source.isEmpty() ? m_root : root_of(source)),
      m_options(options),
      m_paths(m_root)
{
}

QString source_volume::file_of(const QString &relative) const
{
    return m_copies.value(relative, m_root + relative);
}

bool source_volume::leads_out(const QString &relative) const
{
    const QString place = QFileInfo(m_root + relative).canonicalFilePath();
    return !place.isEmpty() && !place.startsWith(m_root);
}

bool source_volume::holds(const QString &relative) const
{
    return QFileInfo::exists(m_root + relative);
}

QString source_volume::place_of(const QString &relative) const
{
    if (!m_options.ignore_letter_case || holds(relative))
        return relative;
    return m_paths.find(m_root + relative, [](const QString &) {}).mid(m_root.size());
}

QStringList source_volume::namesakes_of(const QString &relative) const
{
    QStringList places = m_paths.find_all(m_root + relative);
    for (QString &place : places)
        place.remove(0, m_root.size());
    return places;
}

QString source_volume::software_hive() const
{
    const QString windows = first_that_exists(u"Windows"_s, u"WINNT"_s);
    return place_of(windows + "/System32/config/SOFTWARE"_L1);
}

// The plug-in knows no backup of older layouts.
QString source_volume::software_backup() const
{
    return place_of(software_backup_path);
}

QString source_volume::accounts_folder() const
{
    return first_that_exists(u"Users"_s, u"Documents and Settings"_s);
}

QString source_volume::account_folder(const QString &account) const
{
    return place_of(path_of_account(account));
}

QString source_volume::user_hive(const QString &account) const
{
    return place_of(path_of_account(account) + "/NTUSER.DAT"_L1);
}

QString source_volume::package_folder(const QString &account) const
{
    return place_of(path_of_account(account) + "/AppData/Local/Packages"_L1);
}

/// `folder`, or the older one where it is asked for and it alone exists.
QString source_volume::first_that_exists(const QString &folder, const QString &older_folder) const
{
    const auto exists = [this](const QString &name) { return holds(place_of(name + u'/')); };
    return m_options.old_layout && !exists(folder) && exists(older_folder) ? older_folder : folder;
}

QString source_volume::path_of_account(const QString &account) const
{
    return accounts_folder() + u'/' + account;
}
