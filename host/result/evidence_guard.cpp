#include "evidence_guard.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <filesystem>
#include <vector>

using namespace Qt::StringLiterals;
namespace fs = std::filesystem;

namespace {

using relation_kind = evidence_relation::kind;

#ifdef Q_OS_LINUX
constexpr bool are_there_bind_mounts = true;
#else
constexpr bool are_there_bind_mounts = false; // another name of a folder is on the same device
#endif

fs::path native_path(const QString &path)
{
    return {QFile::encodeName(path).toStdString()};
}

bool is_taken(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

/// The file or folder that writing at `path` would change, or the folder it would be made in,
/// links resolved.
QString place_of_writing(const QString &path)
{
    constexpr int most_links = 40; // that a system follows
    QString place = nearest_existing(resolved(path));
    // Writing through a link that leads nowhere would make its target.
    for (int links = 0; links < most_links && QFileInfo(place).isSymLink(); ++links)
        place = nearest_existing(resolved(QFileInfo(place).symLinkTarget()));
    return place;
}

/// The place that exists and each folder above it.
QStringList with_folders_above(const QString &place)
{
    QStringList places{place};
    while (places.last() != "/"_L1)
        places.append(QFileInfo(places.last()).path());
    return places;
}

std::set<file_identity> identities_of(const QStringList &paths)
{
    std::set<file_identity> identities;
    for (const QString &path : paths) {
        if (const auto facts = facts_of(path))
            identities.insert(facts->identity);
    }
    return identities;
}

/// Whether a place is part of the source, as far as the table of mounts tells.
relation_kind compare(const device_place &place, const QList<device_place> &source_places)
{
    bool is_certain = true;
    for (const device_place &source : source_places) {
        if (source.device != place.device)
            continue;
        const bool are_comparable =
            source.mount == place.mount || (source.is_certain && place.is_certain);
        if (are_comparable && is_at_or_below(place.path, source.path))
            return relation_kind::within;
        is_certain = is_certain && are_comparable;
    }
    return is_certain ? relation_kind::apart : relation_kind::unknown;
}

/// Where the source's root lies, and everything that is mounted below it.
QList<device_place> places_of_source(const QString &root, const mount_table &mounts)
{
    const QByteArray path = QFile::encodeName(root);
    const auto place = mounts.place_of(path);
    return place ? QList{*place} + mounts.places_mounted_below(path) : QList<device_place>();
}

/// What the table of mounts tells of a place and the folders above it.
relation_kind compare_mounts(const QStringList &places, const QString &root,
                             const mount_table &mounts)
{
    const QList<device_place> source_places = places_of_source(root, mounts);
    relation_kind result = source_places.isEmpty() ? relation_kind::unknown : relation_kind::apart;
    for (const QString &path : places) {
        const auto place = mounts.place_of(QFile::encodeName(path));
        const relation_kind found = place ? compare(*place, source_places) : relation_kind::unknown;
        if (found == relation_kind::within)
            return found;
        if (found == relation_kind::unknown)
            result = found;
    }
    return result;
}

bool is_on_device(const std::set<file_identity> &identities, quint64 device)
{
    return std::any_of(
        identities.cbegin(), identities.cend(),
        [device](const file_identity &identity) { return identity.device == device; });
}

/// Uses the kind of an entry where the listing tells it, so that the system is asked no more.
bool may_be_folder(const fs::directory_entry &entry)
{
    std::error_code error;
    return !entry.is_symlink(error) && (entry.is_directory(error) || error);
}

/// The entries of one folder that are looked at. An error tells why some may be missing.
class folder_listing
{
public:
    explicit folder_listing(const fs::path &folder, bool files_too)
    {
        fs::directory_iterator entry(folder, m_error);
        for (; !m_error && entry != fs::directory_iterator(); entry.increment(m_error)) {
            if (files_too || may_be_folder(*entry))
                m_paths.push_back(entry->path());
        }
    }

    bool is_complete() const { return !m_error; }
    const std::vector<fs::path> &paths() const { return m_paths; }

private:
    std::error_code m_error;
    std::vector<fs::path> m_paths;
};

} // namespace

QString resolved(const QString &path)
{
    std::error_code error;
    const fs::path absolute = fs::absolute(native_path(path), error);
    if (error)
        return {};
    const fs::path canonical = fs::weakly_canonical(absolute, error);
    const fs::path &usable = error ? absolute : canonical;
    const QString text = QFile::decodeName(QByteArray::fromStdString(usable.string()));
    return text.size() > 1 && text.endsWith(u'/') ? text.chopped(1) : text;
}

QString nearest_existing(const QString &path)
{
    QString candidate = path.isEmpty() ? u"/"_s : path;
    while (candidate != "/"_L1 && !is_taken(candidate))
        candidate = QFileInfo(candidate).path();
    return candidate;
}

evidence_relation look_through(const QString &root, const std::set<file_identity> &wanted,
                               bool files_too)
{
    evidence_relation relation;
    std::set<file_identity> seen; // a folder that is mounted below itself is listed once
    std::vector<fs::path> folders{native_path(root)};
    while (!folders.empty()) {
        const folder_listing listing(folders.back(), files_too);
        const QString folder = QFile::decodeName(folders.back().c_str());
        folders.pop_back();
        bool is_complete = listing.is_complete();
        for (const fs::path &path : listing.paths()) {
            const auto facts = facts_of_entry(path.c_str());
            if (facts && wanted.count(facts->identity) != 0)
                return {relation_kind::within, {}};
            if (facts && facts->is_folder && seen.insert(facts->identity).second)
                folders.push_back(path);
            is_complete = is_complete && facts;
        }
        if (!is_complete)
            relation = {relation_kind::unknown, folder};
    }
    return relation;
}

evidence_guard::evidence_guard(const QString &source_root, const mount_table &mounts)
    : m_source_root(source_root), m_mounts(mounts)
{
}

evidence_relation evidence_guard::relation_of(const QStringList &paths) const
{
    QStringList places;
    bool is_any_file = false;
    for (const QString &path : paths) {
        const QString place = place_of_writing(path);
        is_any_file = is_any_file || !QFileInfo(place).isDir();
        places += with_folders_above(place);
    }
    const std::set<file_identity> identities = identities_of(places);
    const auto root = facts_of(m_source_root);
    if (root && identities.count(root->identity) != 0)
        return {relation_kind::within, {}};
    const relation_kind mounted = compare_mounts(places, m_source_root, m_mounts);
    if (mounted != relation_kind::unknown)
        return {mounted, {}};
    if (!are_there_bind_mounts && root && !is_on_device(identities, root->identity.device))
        return {};
    return look_through(m_source_root, identities, is_any_file);
}
