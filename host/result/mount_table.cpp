#include "mount_table.h"

#include <QFile>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// The fields of a line: mount id, parent id, device, root, mount point, options, some optional
// fields, "-", file system type, and two more.
constexpr qsizetype id_field = 0;
constexpr qsizetype parent_field = 1;
constexpr qsizetype device_field = 2;
constexpr qsizetype root_field = 3;
constexpr qsizetype point_field = 4;
constexpr qsizetype first_optional_field = 6;

/// The table writes blanks, tabs, line feeds and backslashes as a backslash and three octal digits.
QByteArray unescaped(QByteArray field)
{
    return field.replace("\\040", " ")
        .replace("\\011", "\t")
        .replace("\\012", "\n")
        .replace("\\134", "\\");
}

QByteArray without_slash(const QByteArray &path)
{
    return path.endsWith('/') ? path.chopped(1) : path;
}

} // namespace

bool is_at_or_below(const QByteArray &path, const QByteArray &folder)
{
    return path == folder || path.startsWith(folder + '/');
}

mount_table mount_table::of_this_process()
{
    QFile table(u"/proc/self/mountinfo"_s);
    return mount_table(table.open(QIODevice::ReadOnly) ? table.readAll() : QByteArray());
}

mount_table::mount_table(const QByteArray &mountinfo)
{
    for (const QByteArray &line : mountinfo.split('\n')) {
        if (const auto part = read_line(line))
            m_mounts.append(*part);
    }
}

std::optional<mount_table::mounted_part> mount_table::read_line(const QByteArray &line)
{
    const QList<QByteArray> fields = line.split(' ');
    const qsizetype separator = fields.indexOf("-", first_optional_field);
    if (separator < 0)
        return std::nullopt;
    return mounted_part{fields[id_field].toInt(),
                        fields[parent_field].toInt(),
                        fields[device_field],
                        without_slash(unescaped(fields[root_field])),
                        without_slash(unescaped(fields[point_field])),
                        !fields.value(separator + 1).startsWith("nfs")};
}

/// The mount at which every path begins: its parent is not in the table.
const mount_table::mounted_part *mount_table::first_mount() const
{
    const auto is_listed = [this](int id) {
        return std::any_of(m_mounts.cbegin(), m_mounts.cend(),
                           [id](const mounted_part &listed) { return listed.id == id; });
    };
    const auto first = std::find_if(
        m_mounts.cbegin(), m_mounts.cend(), [&is_listed](const mounted_part &candidate) {
            return candidate.point.isEmpty() &&
                   (candidate.parent == candidate.id || !is_listed(candidate.parent));
        });
    return first == m_mounts.cend() ? nullptr : &*first;
}

const mount_table::mounted_part *mount_table::mounted_on(const mounted_part &parent,
                                                         const QByteArray &point) const
{
    const auto found =
        std::find_if(m_mounts.cbegin(), m_mounts.cend(), [&](const mounted_part &candidate) {
            return candidate.parent == parent.id && candidate.id != parent.id &&
                   candidate.point == point;
        });
    return found == m_mounts.cend() ? nullptr : &*found;
}

/// Follows the path as the system does: from each folder into the mount that lies on top there.
/// What a mount hides is not found.
const mount_table::mounted_part *mount_table::mount_of(const QByteArray &path) const
{
    const mounted_part *current = first_mount();
    for (qsizetype end = 0; current != nullptr && end >= 0;) {
        const QByteArray folder = path.first(end);
        while (const mounted_part *next = mounted_on(*current, folder))
            current = next;
        if (end == path.size())
            break;
        const qsizetype slash = path.indexOf('/', end + 1);
        end = slash < 0 ? path.size() : slash;
    }
    return current;
}

device_place mount_table::place_in(const mounted_part &part, const QByteArray &path)
{
    return {part.device, part.root + path.mid(part.point.size()), part.id, part.tells_root};
}

std::optional<device_place> mount_table::place_of(const QByteArray &path) const
{
    const QByteArray place = without_slash(path);
    const mounted_part *part = mount_of(place);
    if (part == nullptr)
        return std::nullopt;
    return place_in(*part, place);
}

QList<device_place> mount_table::places_mounted_below(const QByteArray &folder) const
{
    QList<device_place> places;
    for (const mounted_part &part : m_mounts) {
        if (part.point.startsWith(without_slash(folder) + '/'))
            places.append(place_in(part, part.point));
    }
    return places;
}
