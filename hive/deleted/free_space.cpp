#include "free_space.h"

#include "hive_cells.h"
#include "regf_format.h"

#include <algorithm>

using namespace regf;

namespace {

constexpr qint64 unit = cell_head::alignment;

quint32 place_of(qint64 offset)
{
    return static_cast<quint32>(offset / unit);
}

/// The first place of a cell at or behind the offset.
qint64 aligned(qint64 offset)
{
    return (offset + unit - 1) / unit * unit;
}

} // namespace

free_space::free_space(QByteArrayView hive, const cancel_test &cancelled) : m_hive(hive)
{
    const qint64 told_end = first_bin + qint64(hive_cells::number_32(hive, base_block::bins_size));
    const qint64 bins_end = std::min(told_end, qint64(hive.size()));
    for (qint64 offset = first_bin; offset < bins_end && !is_cancelled(cancelled);) {
        const qint64 size = bin_at(offset, bins_end);
        if (size > 0)
            add_bin(offset, offset + size);
        offset += size > 0 ? size : page_size;
    }
    if (bins_end >= first_bin && bins_end < hive.size()) {
        add_region(aligned(bins_end), hive.size() / unit * unit);
        m_bytes_behind_bins = hive.size() - bins_end;
    }
}

/// The size of the bin that begins at the offset; 0 if none does.
qint64 free_space::bin_at(qint64 offset, qint64 end) const
{
    if (offset + hbin::cells > end || !m_hive.sliced(offset).startsWith("hbin"))
        return 0;
    const qint64 size = hive_cells::number_32(m_hive, offset + hbin::size);
    return size % page_size == 0 && size <= end - offset ? size : 0;
}

void free_space::add_bin(qint64 begin, qint64 end)
{
    qint64 free_begin = 0; // of free cells that adjoin
    qint64 offset = begin + hbin::cells;
    while (offset + unit <= end) {
        const qint64 stored = static_cast<qint32>(hive_cells::number_32(m_hive, offset));
        const qint64 size = std::abs(stored);
        if (size < unit || size % unit != 0 || size > end - offset)
            break;
        const bool is_free = stored > 0;
        if (is_free && free_begin == 0)
            free_begin = offset;
        if (!is_free && free_begin != 0) {
            add_region(free_begin, offset);
            free_begin = 0;
        }
        const auto letters = m_hive.sliced(offset + cell_head::signature);
        if (!is_free && letters.startsWith("nk"))
            m_used_keys.push_back(place_of(offset));
        offset += size;
    }
    if (free_begin != 0)
        add_region(free_begin, offset);
}

void free_space::add_region(qint64 begin, qint64 end)
{
    if (begin >= end)
        return;
    m_regions.push_back({place_of(begin), place_of(end)});
    m_free_bytes += end - begin;
}

qint64 free_space::end_of_region_at(qint64 offset) const
{
    const quint32 place = place_of(offset);
    const auto behind =
        std::upper_bound(m_regions.begin(), m_regions.end(), place,
                         [](quint32 at, const free_region &region) { return at < region.begin; });
    if (offset < 0 || behind == m_regions.begin() || std::prev(behind)->end <= place)
        return 0;
    return qint64(std::prev(behind)->end) * unit;
}
