#include "volume_search.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <functional>

#include "account_selection.h"
#include "raw_names.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int deepest_level = 4;           // "uploads/auto/C%3A" below a folder of the case
constexpr qsizetype most_folders = 20'000; // far more than collectors make
constexpr qsizetype most_volumes_told = 20;
const auto source_itself = u"."_s;

/// A search in breadth, folder by folder.
class search_below
{
public:
    explicit search_below(const QString &source) : m_source(source) {}

    volume_search result();

private:
    struct waiting_folder
    {
        QString name; ///< from the source; empty for the source itself
        int level;
    };

    void look_at(const waiting_folder &folder);
    void look_below(const waiting_folder &folder);
    QString path_of(const QString &name) const
    {
        return name.isEmpty() ? m_source : m_source + u'/' + name;
    }

    QString m_source;
    QList<waiting_folder> m_folders;
    volume_search m_result;
};

volume_search search_below::result()
{
    m_folders.append({{}, 0});
    for (qsizetype next = 0; next < m_folders.size(); ++next) {
        if (next == most_folders) {
            m_result.warnings.append(
                u"only the first %1 folders of the source were searched for volumes"_s.arg(
                    most_folders));
            break;
        }
        look_at(waiting_folder(m_folders.at(next)));
    }
    return m_result;
}

void search_below::look_at(const waiting_folder &folder)
{
    const QString directory = path_of(folder.name);
    if (is_volume(directory))
        m_result.volumes.append({folder.name.isEmpty() ? source_itself : folder.name, directory});
    else if (folder.level < deepest_level)
        look_below(folder);
}

void search_below::look_below(const waiting_folder &folder)
{
    const QString shown = folder.name.isEmpty() ? source_itself : folder.name;
    const QString prefix = folder.name.isEmpty() ? QString() : folder.name + u'/';
    QStringList names;
    const std::error_code error =
        for_each_raw_name(path_of(folder.name), [&](QByteArrayView raw_name) {
            const QString name = prefix + QString::fromUtf8(raw_name);
            const QFileInfo info(path_of(name));
            if (!is_utf_8(raw_name))
                m_result.warnings.append(
                    u"%1: its name is not valid UTF-8, so no volume is searched there"_s.arg(name));
            else if (info.isDir() && !info.isSymLink())
                names.append(name);
        });
    if (error)
        m_result.warnings.append(u"%1: cannot be searched for volumes: %2"_s.arg(
            shown, QString::fromLocal8Bit(error.message().c_str())));
    names.sort();
    for (const QString &name : std::as_const(names))
        m_folders.append({name, folder.level + 1});
}

QString names_of(const QList<found_volume> &volumes)
{
    QStringList names;
    for (const found_volume &volume : volumes.mid(0, most_volumes_told))
        names.append(volume.name);
    const qsizetype more = volumes.size() - names.size();
    return names.join(", "_L1) + (more > 0 ? u" and %1 more"_s.arg(more) : QString());
}

QString last_part(const QString &name)
{
    return name.section(u'/', -1);
}

/// The volumes that the name means: those of the first way of comparing that finds any.
QList<found_volume> volumes_named(const QList<found_volume> &volumes, const QString &name)
{
    using comparison = std::function<bool(const QString &)>;
    const comparison comparisons[] = {
        [&](const QString &other) { return other == name; },
        [&](const QString &other) { return other.compare(name, Qt::CaseInsensitive) == 0; },
        [&](const QString &other) { return last_part(other) == name; },
        [&](const QString &other) {
            return last_part(other).compare(name, Qt::CaseInsensitive) == 0;
        },
    };
    for (const comparison &is_meant : comparisons) {
        QList<found_volume> found;
        std::copy_if(volumes.begin(), volumes.end(), std::back_inserter(found),
                     [&](const found_volume &volume) { return is_meant(volume.name); });
        if (!found.isEmpty())
            return found;
    }
    return {};
}

std::optional<refusal> refusal_of(const QString &source, const QString &name,
                                  const QList<found_volume> &all, const QList<found_volume> &meant)
{
    if (meant.size() == 1)
        return std::nullopt;
    if (meant.isEmpty() && !name.isEmpty())
        return refusal{exit_usage, u"no volume \"%1\" in source %2; the volumes are %3"_s.arg(
                                       name, source, all.isEmpty() ? u"none"_s : names_of(all))};
    // All at once, because names of folders hold what looks like a place for a text ("C%3A").
    return refusal{exit_usage,
                   u"source %1 holds %2 volumes: %3; choose one with --volume NAME"_s.arg(
                       source, QString::number(meant.size()), names_of(meant))};
}

} // namespace

bool is_volume(const QString &directory)
{
    const source_volume volume(directory, reading_options::all());
    return volume.holds(volume.software_hive()) || volume.holds(volume.software_backup()) ||
           has_any_account(volume);
}

volume_search find_volumes(const QString &source)
{
    return search_below(source).result();
}

chosen_volume choose_volume(const QString &source, const QString &name)
{
    const volume_search search = find_volumes(source);
    if (search.volumes.isEmpty() && name.isEmpty())
        return {{source_itself, source}, search.warnings, std::nullopt};
    const QList<found_volume> meant =
        name.isEmpty() ? search.volumes : volumes_named(search.volumes, QDir::cleanPath(name));
    return {meant.value(0), search.warnings, refusal_of(source, name, search.volumes, meant)};
}
