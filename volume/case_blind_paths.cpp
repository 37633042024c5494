#include "case_blind_paths.h"

#include "printable_text.h"

#include <QDirIterator>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QString folded(const QString &name)
{
    QString folded_name;
    folded_name.reserve(name.size());
    for (const char32_t code_point : name.toUcs4())
        folded_name += QChar::fromUcs4(QChar::toCaseFolded(code_point));
    return folded_name;
}

/// UTF-16 sorts characters beyond the basic plane before some of those within.
bool is_before(const QString &left, const QString &right)
{
    const QList<uint> first = left.toUcs4();
    const QList<uint> second = right.toUcs4();
    return std::lexicographical_compare(first.begin(), first.end(), second.begin(), second.end());
}

} // namespace

case_blind_paths::case_blind_paths(const QString &root_path) : m_root_path(root_path) {}

QString case_blind_paths::find(const QString &path,
                               const std::function<void(const QString &)> &tell)
{
    const QStringList parts = parts_below_root(path);
    const QString found = parts.isEmpty() ? QString() : find_below(m_root_path, parts, tell);
    if (found.isEmpty())
        return path;
    return path.endsWith(u'/') ? found + u'/' : found;
}

QStringList case_blind_paths::find_all(const QString &path)
{
    QStringList found;
    const QStringList parts = parts_below_root(path);
    if (!parts.isEmpty())
        find_all_below(m_root_path, parts, found);
    return found;
}

/// None when the path is not looked for.
QStringList case_blind_paths::parts_below_root(const QString &path) const
{
    if (!m_root_path.endsWith(u'/') || !path.startsWith(m_root_path))
        return {};
    const QStringList parts = path.mid(m_root_path.size()).split(u'/', Qt::SkipEmptyParts);
    return parts.contains("."_L1) || parts.contains(".."_L1) ? QStringList() : parts;
}

/// Empty when nothing lies there. Each call goes one folder down, so the depth is that of the path.
QString case_blind_paths::find_below(const QString &folder, const QStringList &parts,
                                     const std::function<void(const QString &)> &tell)
{
    for (const QString &name : candidates(folder, parts.first(), tell)) {
        if (parts.size() == 1)
            return folder + name;
        QString found = find_below(folder + name + u'/', parts.mid(1), tell);
        if (!found.isEmpty())
            return found;
    }
    return {};
}

void case_blind_paths::find_all_below(const QString &folder, const QStringList &parts,
                                      QStringList &found)
{
    for (const QString &name : same_names(folder, parts.first())) {
        if (parts.size() == 1)
            found.append(folder + name);
        else
            find_all_below(folder + name + u'/', parts.mid(1), found);
    }
}

/// The names in the folder that are the same as `name`, in the order in which they are tried.
QStringList case_blind_paths::same_names(const QString &folder, const QString &name)
{
    QStringList names = names_in(folder).value(folded(name));
    // A folder that cannot be listed may still be passed through.
    if (names.removeOne(name) || (names.isEmpty() && QFileInfo::exists(folder + name)))
        names.prepend(name);
    return names;
}

/// The same names, and tells that there are several.
QStringList case_blind_paths::candidates(const QString &folder, const QString &name,
                                         const std::function<void(const QString &)> &tell)
{
    QStringList names = same_names(folder, name);
    const QString told = folder + name;
    if (names.size() > 1 && !m_told.contains(told)) {
        m_told.insert(told);
        tell(printable_text(
            u"%1: %2 names differ from %3 in their letter case alone; %4 comes first"_s.arg(
                folder, QString::number(names.size()), name, names.first())));
    }
    return names;
}

const case_blind_paths::names_by_folded_name &case_blind_paths::names_in(const QString &folder)
{
    const auto known = m_folders.constFind(folder);
    if (known != m_folders.constEnd())
        return *known;
    names_by_folded_name names;
    QDirIterator entries(folder,
                         QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (entries.hasNext()) {
        entries.next();
        const QString name = entries.fileName();
        names[folded(name)].append(name);
    }
    for (QStringList &same : names)
        std::sort(same.begin(), same.end(), is_before);
    return *m_folders.insert(folder, names);
}
