#include "passed_over.h"

#include <QFileInfo>
#include <QSet>

#include "account_folders.h"
#include "raw_names.h"

using namespace Qt::StringLiterals;

namespace {

const auto user_hive_name = u"/NTUSER.DAT"_s;
const auto package_path = u"/AppData/Local/Packages"_s;

/// Looks a volume over for what its plug-in will not read.
class survey
{
public:
    survey(const source_volume &volume, const account_selection &selection,
           const QList<host_tab> &tabs)
        : m_volume(volume),
          m_selection(selection),
          m_reads_software(any_reads(tabs, tab_input::software_hive)),
          m_reads_hives(reads_user_hives(tabs)),
          m_reads_packages(any_reads(tabs, tab_input::package_folder))
    {
    }

    QList<finding> warnings();

private:
    void note_places_that_are_read();
    void look_at_software();
    void look_at_account(const QString &account, bool is_selected);
    void look_at_namesakes(const QString &path, const QString &place, bool is_checked = false);
    void look_at_way_to_packages(const QString &account);
    void look_at_package_names(const QString &account);
    void look_at_line_breaks(const QString &name, const QString &path);
    void warn(const QString &path, const QString &reason, bool is_left_out = true);

    const source_volume &m_volume;
    const account_selection &m_selection;
    const bool m_reads_software;
    const bool m_reads_hives;
    const bool m_reads_packages;
    QSet<QString> m_read; ///< places of hives and package folders
    QList<finding> m_warnings;
    QSet<QString> m_told;
};

bool has_line_break(const QString &text)
{
    return text.contains(u'\n') || text.contains(u'\r');
}

void survey::warn(const QString &path, const QString &reason, bool is_left_out)
{
    const QString warning = path + ": "_L1 + reason;
    if (m_told.contains(warning))
        return;
    m_told.insert(warning);
    m_warnings.append(finding(warning, is_left_out));
}

QList<finding> survey::warnings()
{
    note_places_that_are_read();
    look_at_line_breaks(m_volume.root(), u"the source"_s);
    if (m_reads_software)
        look_at_software();
    if (m_reads_hives || m_reads_packages)
        m_warnings += passed_over_account_folders(m_volume);
    for (const QString &account : m_selection.accounts)
        look_at_account(account, true);
    for (const QString &account : m_selection.others)
        look_at_account(account, false);
    return m_warnings;
}

void survey::note_places_that_are_read()
{
    m_read.insert(m_volume.software_hive());
    for (const QString &account : m_selection.accounts) {
        m_read.insert(m_volume.user_hive(account));
        m_read.insert(m_volume.package_folder(account));
    }
}

void survey::look_at_software()
{
    look_at_namesakes(software_hive_path, m_volume.software_hive(), true);
    if (!m_volume.holds(m_volume.software_hive()))
        look_at_namesakes(software_backup_path, m_volume.software_backup());
    for (const QString &older : m_volume.namesakes_of(u"WINNT/System32/config/SOFTWARE"_s)) {
        if (!m_read.contains(older))
            warn(older, u"is not read: it is the hive of an older layout"_s);
    }
}

void survey::look_at_account(const QString &account, bool is_selected)
{
    const QString folder = m_volume.accounts_folder() + u'/' + account;
    if (is_selected)
        look_at_line_breaks(account, m_volume.account_folder(account));
    if (m_reads_hives) {
        const QString hive = m_volume.user_hive(account);
        look_at_namesakes(folder + user_hive_name, hive, is_selected);
        if (!is_selected && is_broken_link(m_volume.root() + hive))
            warn(hive, u"a link leads nowhere, so it is not read"_s);
    }
    const QString place = m_volume.place_of(folder);
    if ((m_reads_hives || m_reads_packages) && is_broken_link(m_volume.root() + place))
        warn(place, u"a link leads nowhere, so it is not read"_s);
    if (m_reads_packages) {
        look_at_namesakes(folder + package_path, m_volume.package_folder(account));
        look_at_way_to_packages(account);
        look_at_package_names(account);
    }
}

/// The check of a missing hive tells what lies beside it.
void survey::look_at_namesakes(const QString &path, const QString &place, bool is_checked)
{
    const bool is_told = is_checked && !m_volume.holds(place);
    for (const QString &namesake : m_volume.namesakes_of(path)) {
        const bool is_beside = QFileInfo(namesake).path() == QFileInfo(place).path();
        if (namesake != place && !m_read.contains(namesake) && !(is_told && is_beside))
            warn(namesake, u"is not read: its letter case differs from %1"_s.arg(path));
    }
}

/// Names the first part of the path that is there and is no folder.
void survey::look_at_way_to_packages(const QString &account)
{
    const QString folder = m_volume.accounts_folder() + u'/' + account;
    for (const QString &part : {u"/AppData"_s, u"/AppData/Local"_s, package_path}) {
        const QString place = m_volume.place_of(folder + part);
        const QFileInfo info(m_volume.root() + place);
        if (is_broken_link(info.filePath()))
            return warn(place, u"a link leads nowhere, so it is not read"_s);
        if (!info.exists())
            return;
        if (!info.isDir())
            return warn(place, u"is no folder, so no packages are read there"_s);
    }
}

void survey::look_at_package_names(const QString &account)
{
    const QString folder = m_volume.package_folder(account);
    qsizetype unreadable = 0;
    QString first;
    for_each_raw_name(m_volume.root() + folder, [&](QByteArrayView raw_name) {
        if (!is_utf_8(raw_name) && unreadable++ == 0)
            first = QString::fromUtf8(raw_name);
    });
    if (unreadable > 0)
        warn(folder, u"names that are not valid UTF-8 and are not read: %1, one of them %2"_s
                         .arg(unreadable)
                         .arg(first));
}

void survey::look_at_line_breaks(const QString &name, const QString &path)
{
    if (has_line_break(name))
        warn(path,
             u"its name holds line breaks, which may look like lines of their own in the "
             "debug log"_s,
             false);
}

} // namespace

QList<finding> passed_over_warnings(const source_volume &volume, const account_selection &selection,
                                    const QList<host_tab> &tabs)
{
    return survey(volume, selection, tabs).warnings();
}
