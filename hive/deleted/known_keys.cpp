#include "known_keys.h"

#include "hive_cells.h"
#include "regf_format.h"

#include <algorithm>

using namespace regf;

namespace {

constexpr qint64 unit = cell_head::alignment;
constexpr int most_depth = 512; // of keys in Windows

/// The cell in use at the offset.
QByteArrayView used_cell(QByteArrayView hive, qint64 offset)
{
    const qint64 size = -qint64(static_cast<qint32>(hive_cells::number_32(hive, offset)));
    return size > 0 && size <= hive.size() - offset ? hive.sliced(offset, size) : QByteArrayView();
}

} // namespace

known_keys::known_keys(QByteArrayView hive, const free_space &space,
                       const std::vector<quint32> &deleted, const wanted_keys &wanted,
                       const cancel_test &cancelled)
    : m_hive(hive),
      m_space(space),
      m_wanted(wanted),
      m_root(first_bin + qint64(hive_cells::number_32(hive, base_block::root_cell)))
{
    m_keys.reserve(deleted.size() + space.used_keys().size());
    auto next = deleted.begin();
    for (const quint32 place : space.used_keys()) {
        for (; next != deleted.end() && *next < place; ++next)
            add(*next, true);
        add(place, false);
    }
    for (; next != deleted.end(); ++next)
        add(*next, true);
    constexpr quint32 keys_between_polls = 4096;
    for (quint32 number = 0; number < m_keys.size(); ++number) {
        if (number % keys_between_polls == 0 && is_cancelled(cancelled))
            break;
        resolve(number);
    }
}

void known_keys::add(quint32 place, bool is_deleted)
{
    const qint64 offset = qint64(place) * unit;
    if (!is_deleted && !is_sound_key(used_cell(m_hive, offset), m_hive.size()))
        return;
    key added;
    added.place = place;
    added.parent = none;
    added.is_deleted = is_deleted;
    m_keys.push_back(added);
}

qint64 known_keys::offset_of(quint32 number) const
{
    return qint64(m_keys[number].place) * unit;
}

QByteArrayView known_keys::cell_of(quint32 number) const
{
    const qint64 offset = offset_of(number);
    return m_keys[number].is_deleted
               ? deleted_cell(m_hive, offset, m_space.end_of_region_at(offset))
               : used_cell(m_hive, offset);
}

quint32 known_keys::number_of(qint64 offset) const
{
    const auto place = static_cast<quint32>(offset / unit);
    const auto found =
        std::lower_bound(m_keys.begin(), m_keys.end(), place,
                         [](const key &each, quint32 at) { return each.place < at; });
    const bool is_there = found != m_keys.end() && found->place == place && offset % unit == 0;
    return is_there ? static_cast<quint32>(found - m_keys.begin()) : none;
}

quint32 known_keys::parent_of(quint32 number) const
{
    return number_of(first_bin + qint64(hive_cells::number_32(cell_of(number), nk::parent)));
}

/// Goes up to a key whose place is known, and then down again. A loop ends the way like a parent
/// that is gone.
void known_keys::resolve(quint32 number)
{
    m_way.clear();
    for (quint32 step = number; step != none && !m_keys[step].is_resolved;
         step = m_keys[step].parent) {
        key &each = m_keys[step];
        each.is_on_way = true;
        m_way.push_back(step);
        const bool is_root = !each.is_deleted && offset_of(step) == m_root;
        const quint32 parent = is_root ? none : parent_of(step);
        each.parent = parent == none || m_keys[parent].is_on_way ? none : parent;
    }
    for (; !m_way.empty(); m_way.pop_back()) {
        m_keys[m_way.back()].is_on_way = false;
        settle(m_way.back());
    }
}

/// Fills what follows from the parent.
void known_keys::settle(quint32 number)
{
    key &child = m_keys[number];
    child.is_resolved = true;
    if (!child.is_deleted && offset_of(number) == m_root) {
        child.path = path_state::whole;
        return;
    }
    const QString name = name_of_key(cell_of(number));
    if (child.parent != none && m_keys[child.parent].depth >= most_depth)
        child.parent = none;
    if (child.parent == none) {
        child.wanted = m_wanted.anywhere(name);
        return;
    }
    const key &parent = m_keys[child.parent];
    child.depth = static_cast<quint16>(parent.depth + 1);
    const bool is_parent_root = offset_of(child.parent) == m_root && !parent.is_deleted;
    child.wanted = is_parent_root ? m_wanted.below_root(name) : m_wanted.below(parent.wanted, name);
    child.path = parent.path;
    if (child.path == path_state::whole && is_doubtful(child, parent))
        child.path = path_state::doubtful;
}

/// Windows tells the parent the time when it deletes a key, so that no deleted key was written
/// later than its parent.
bool known_keys::is_doubtful(const key &child, const key &parent) const
{
    const auto written = [this](const key &each) {
        return hive_cells::number_64(m_hive.sliced(qint64(each.place) * unit), nk::last_write);
    };
    return child.is_deleted && written(child) > written(parent);
}

QStringList known_keys::path_of(quint32 number) const
{
    QStringList names;
    for (quint32 step = number; step != none; step = m_keys[step].parent) {
        const bool is_root = offset_of(step) == m_root && !m_keys[step].is_deleted;
        if (!is_root)
            names.prepend(name_of_key(cell_of(step)));
    }
    return names;
}
