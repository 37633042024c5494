#include "account_folders.h"

#include <QFileInfo>

#include <algorithm>

#include "raw_names.h"

using namespace Qt::StringLiterals;

namespace {

const auto accounts_folder = u"Users"_s;
const auto older_accounts_folder = u"Documents and Settings"_s;

/// Looks for folders of accounts that are not read.
class account_folders
{
public:
    explicit account_folders(const source_volume &volume) : m_volume(volume) {}

    QList<finding> passed_over();

private:
    void look_at(const QString &folder, const QString &reason);
    void look_for_links();
    void look_at_absence();
    bool has_any_of(const QStringList &names) const;
    bool is_read(const QString &folder) const;
    bool is_same_folder(const QString &folder, const QString &other) const;
    qsizetype accounts_in(const QString &folder) const;
    void warn(const QString &path, const QString &reason, bool is_left_out = true)
    {
        m_findings.append(finding(path + ": "_L1 + reason, is_left_out));
    }

    const source_volume &m_volume;
    QList<finding> m_findings;
};

QList<finding> account_folders::passed_over()
{
    look_for_links();
    for (const QString &folder : m_volume.namesakes_of(accounts_folder))
        look_at(folder, u"its letter case differs from Users"_s);
    for (const QString &folder : m_volume.namesakes_of(older_accounts_folder))
        look_at(folder, u"it is the folder of an older layout"_s);
    look_at_absence();
    return m_findings;
}

void account_folders::look_for_links()
{
    const QString place = m_volume.place_of(accounts_folder);
    if (is_broken_link(m_volume.root() + place))
        warn(place, u"a link leads nowhere, so no accounts are read there"_s);
}

bool account_folders::has_any_of(const QStringList &names) const
{
    return std::any_of(names.begin(), names.end(), [this](const QString &name) {
        const QString path = m_volume.root() + name;
        return !m_volume.namesakes_of(name).isEmpty() || QFileInfo(path).isSymLink() ||
               is_hidden(path);
    });
}

/// Every Windows has a folder of accounts; what was extracted in part may lack it.
void account_folders::look_at_absence()
{
    if (has_any_of({u"Windows"_s, u"WINNT"_s}) &&
        !has_any_of({accounts_folder, older_accounts_folder}))
        warn(accounts_folder, u"not found, so no accounts are read"_s, false);
}

/// A link shows the accounts of another folder.
void account_folders::look_at(const QString &folder, const QString &reason)
{
    if (is_read(folder) || QFileInfo(m_volume.root() + folder).isSymLink())
        return;
    if (const qsizetype count = accounts_in(folder); count > 0)
        warn(folder,
             u"is not read: %1; accounts in it that hold a hive or packages: %2"_s.arg(reason).arg(
                 count));
}

bool account_folders::is_read(const QString &folder) const
{
    QStringList read{m_volume.accounts_folder()};
    if (m_volume.options().ignore_letter_case)
        read += m_volume.namesakes_of(read.first());
    return std::any_of(read.begin(), read.end(),
                       [&](const QString &each) { return is_same_folder(folder, each); });
}

/// Also where a link leads from one to the other.
bool account_folders::is_same_folder(const QString &folder, const QString &other) const
{
    const QString place = QFileInfo(m_volume.root() + folder).canonicalFilePath();
    return !place.isEmpty() && place == QFileInfo(m_volume.root() + other).canonicalFilePath();
}

qsizetype account_folders::accounts_in(const QString &folder) const
{
    qsizetype count = 0;
    for_each_raw_name(m_volume.root() + folder, [&](QByteArrayView raw_name) {
        const QString account = folder + u'/' + QString::fromUtf8(raw_name);
        if (!m_volume.namesakes_of(account + "/NTUSER.DAT"_L1).isEmpty() ||
            !m_volume.namesakes_of(account + "/AppData/Local/Packages"_L1).isEmpty())
            ++count;
    });
    return count;
}

} // namespace

QList<finding> passed_over_account_folders(const source_volume &volume)
{
    return account_folders(volume).passed_over();
}
