#include "evidence_volume.h"

#include "files.h"

#include <QFile>
#include <QFileInfo>
#include <filesystem>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace evidence {

using namespace Qt::StringLiterals;

namespace {

const QString software_place = u"Windows/System32/config/SOFTWARE"_s;
const QString reg_back_place = u"Windows/System32/config/RegBack/SOFTWARE"_s;
const QString system_place = u"Windows/System32/config/SYSTEM"_s;

QString ntuser_place(const QString &account)
{
    return u"Users/"_s + account + u"/NTUSER.DAT"_s;
}

QString packages_place(const QString &account)
{
    return u"Users/"_s + account + u"/AppData/Local/Packages/"_s;
}

void require(int result, const QByteArray &place)
{
    if (result != 0)
        throw std::runtime_error("cannot make " + place.toStdString());
}

} // namespace

evidence_volume::evidence_volume() : m_temporary(std::in_place), m_root(m_temporary->path() + u'/')
{
}

evidence_volume::evidence_volume(const QString &folder)
    : m_root(folder.endsWith(u'/') ? folder : folder + u'/')
{
    make_folder(m_root);
}

// Removed without Qt, which cannot name entries of invalid UTF-8.
evidence_volume::~evidence_volume()
{
    std::error_code ignored;
    if (m_temporary)
        std::filesystem::remove_all(QFile::encodeName(m_root).toStdString(), ignored);
}

hive_builder &evidence_volume::software()
{
    return hive(software_place);
}

hive_builder &evidence_volume::reg_back_software()
{
    return hive(reg_back_place);
}

hive_builder &evidence_volume::system()
{
    return hive(system_place);
}

hive_builder &evidence_volume::user(const QString &account)
{
    note_account(account);
    return hive(ntuser_place(account));
}

hive_builder &evidence_volume::hive(const QString &relative_path)
{
    std::unique_ptr<hive_builder> &place = m_hives[relative_path];
    if (!place)
        place = std::make_unique<hive_builder>();
    return *place;
}

evidence_volume &evidence_volume::package(const QString &account, const QString &name)
{
    note_account(account);
    return folder(packages_place(account) + name);
}

evidence_volume &evidence_volume::file(const QString &relative_path, const QByteArray &content,
                                       std::optional<qint64> modified_unix_seconds)
{
    prepared_place(relative_path);
    write_file(path(relative_path), content);
    if (modified_unix_seconds)
        set_modification_time(path(relative_path), *modified_unix_seconds);
    return *this;
}

evidence_volume &evidence_volume::folder(const QString &relative_path)
{
    make_folder(path(relative_path));
    return *this;
}

evidence_volume &evidence_volume::raw_folder(const QByteArray &relative_path)
{
    require(mkdir((QFile::encodeName(m_root) + relative_path).constData(), 0755), relative_path);
    return *this;
}

evidence_volume &evidence_volume::link(const QString &relative_path, const QString &target)
{
    const QByteArray place = prepared_place(relative_path);
    require(symlink(QFile::encodeName(target).constData(), place.constData()), place);
    return *this;
}

evidence_volume &evidence_volume::fifo(const QString &relative_path)
{
    const QByteArray place = prepared_place(relative_path);
    require(mkfifo(place.constData(), 0644), place);
    return *this;
}

// Makes the folders in which the entry shall stand and returns the entry's full path.
QByteArray evidence_volume::prepared_place(const QString &relative_path) const
{
    make_folder(QFileInfo(path(relative_path)).path());
    return QFile::encodeName(path(relative_path));
}

void evidence_volume::write()
{
    for (const auto &[relative_path, builder] : m_hives)
        file(relative_path, builder->bytes());
}

QString evidence_volume::software_path() const
{
    return path(software_place);
}

QString evidence_volume::reg_back_path() const
{
    return path(reg_back_place);
}

QString evidence_volume::system_path() const
{
    return path(system_place);
}

QString evidence_volume::ntuser_path(const QString &account) const
{
    return path(ntuser_place(account));
}

QString evidence_volume::packages_path(const QString &account) const
{
    return path(packages_place(account));
}

void evidence_volume::note_account(const QString &account)
{
    if (!m_accounts.contains(account))
        m_accounts.append(account);
}

} // namespace evidence
