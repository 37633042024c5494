#include "record_parts.h"

#include "hive_cells.h"
#include "regf_format.h"

#include <algorithm>

using namespace regf;

namespace {

constexpr qint64 unit = cell_head::alignment;

} // namespace

/// Whether a record lies, with at least one byte, in a part of the file.
bool record_parts::is_any_record_in(const std::vector<quint32> &places, qint64 begin, qint64 end,
                                    qint64 (*length_of)(QByteArrayView)) const
{
    const auto next =
        std::lower_bound(places.begin(), places.end(), static_cast<quint32>(begin / unit));
    if (next != places.end() && qint64(*next) * unit < end)
        return true;
    if (next == places.begin())
        return false;
    const qint64 before = qint64(*std::prev(next)) * unit;
    return before + length_of(deleted_cell(m_hive, before, m_space.end_of_region_at(before))) >
           begin;
}

record_flaw record_parts::flaw_of(qint64 begin, qint64 size) const
{
    const qint64 region_end = m_space.end_of_region_at(begin);
    const qint64 end = begin + cell_head::length + size;
    if (begin % unit != 0 || end > region_end)
        return record_flaw::in_use;
    const bool is_cut = deleted_cell(m_hive, begin, region_end).size() < end - begin;
    if (is_cut || is_any_record_in(m_places.keys, begin, end, length_of_key) ||
        is_any_record_in(m_places.values, begin, end, length_of_value))
        return record_flaw::written_over;
    return record_flaw::none;
}

record_flaw record_parts::flaw_of_data(QByteArrayView cell) const
{
    const qint64 size = hive_cells::number_32(cell, vk::data_size);
    const bool has_blocks =
        hive_cells::number_32(m_hive, base_block::minor_version) >= db::first_minor_version;
    if (has_blocks && size > db::block_limit)
        return record_flaw::in_blocks;
    return flaw_of(first_bin + qint64(hive_cells::number_32(cell, vk::data)), size);
}
