#include "hive_damage.h"

#include "base_block.h"
#include "byte_fields.h"
#include "hive_bins.h"
#include "regf_format.h"

#include <stdexcept>

namespace evidence {

using namespace regf;

namespace {

qint64 in_bins(qint64 cell)
{
    if (cell < first_bin)
        throw std::out_of_range("no cell lies before the first bin");
    return cell;
}

// li and ri hold offsets alone, lf and lh an offset and a hash.
qint64 entry_size(const QByteArray &hive, qint64 list)
{
    const bool plain = get_16(hive, list + cell_head::signature) >> 8 == 'i';
    return plain ? list::plain_entry_size : list::hashed_entry_size;
}

} // namespace

hive_damage::hive_damage(const QByteArray &hive) : m_bytes(hive) {}

hive_damage &hive_damage::set_16(qint64 offset, quint16 value)
{
    put_16(m_bytes, offset, value);
    return *this;
}

hive_damage &hive_damage::set_32(qint64 offset, quint32 value)
{
    put_32(m_bytes, offset, value);
    return *this;
}

hive_damage &hive_damage::set_64(qint64 offset, quint64 value)
{
    put_64(m_bytes, offset, value);
    return *this;
}

hive_damage &hive_damage::set_16_in(qint64 cell, qint64 field, quint16 value)
{
    return set_16(in_bins(cell) + field, value);
}

hive_damage &hive_damage::set_32_in(qint64 cell, qint64 field, quint32 value)
{
    return set_32(in_bins(cell) + field, value);
}

hive_damage &hive_damage::truncate(qint64 size)
{
    m_bytes.truncate(size);
    return *this;
}

hive_damage &hive_damage::sequence_numbers(quint32 primary, quint32 secondary)
{
    return set_32(base_block::primary_sequence, primary)
        .set_32(base_block::secondary_sequence, secondary);
}

hive_damage &hive_damage::bins_size(quint32 size)
{
    return set_32(base_block::bins_size, size);
}

hive_damage &hive_damage::cell_size(qint64 cell, qint32 size)
{
    return set_32_in(cell, cell_head::size, 0U - static_cast<quint32>(size));
}

hive_damage &hive_damage::shrink_cell(qint64 cell, qint32 size)
{
    const auto whole = static_cast<qint32>(0U - get_32(m_bytes, in_bins(cell)));
    if (size < cell_head::alignment || size >= whole)
        throw std::out_of_range("the cell cannot shrink to this size");
    return cell_size(cell, size).set_32(cell + size, static_cast<quint32>(whole - size));
}

hive_damage &hive_damage::signature(qint64 cell, const char *letters)
{
    return set_16_in(cell, cell_head::signature, get_16(letters, 0));
}

hive_damage &hive_damage::subkey_count(qint64 key, quint32 count)
{
    return set_32_in(key, nk::subkey_count, count);
}

hive_damage &hive_damage::value_count(qint64 key, quint32 count)
{
    return set_32_in(key, nk::value_count, count);
}

hive_damage &hive_damage::key_name_size(qint64 key, quint16 size)
{
    return set_16_in(key, nk::name_size, size);
}

hive_damage &hive_damage::last_write(qint64 key, qint64 filetime)
{
    return set_64(in_bins(key) + nk::last_write, static_cast<quint64>(filetime));
}

hive_damage &hive_damage::subkey_list(qint64 key, qint64 list)
{
    return set_32_in(key, nk::subkey_list, stored_offset(list));
}

hive_damage &hive_damage::value_list(qint64 key, qint64 list)
{
    return set_32_in(key, nk::value_list, stored_offset(list));
}

hive_damage &hive_damage::share_subkeys(qint64 key, qint64 other)
{
    return set_32_in(key, nk::subkey_list, get_32(m_bytes, in_bins(other) + nk::subkey_list))
        .subkey_count(key, get_32(m_bytes, other + nk::subkey_count));
}

hive_damage &hive_damage::list_entry(qint64 list, qint64 index, qint64 cell)
{
    const qint64 entry = list::entries + index * entry_size(m_bytes, in_bins(list));
    return set_32_in(list, entry, stored_offset(cell));
}

hive_damage &hive_damage::list_only(qint64 list, qint64 key)
{
    const quint16 count = get_16(m_bytes, in_bins(list) + list::count);
    for (quint16 index = 0; index < count; ++index)
        list_entry(list, index, key);
    return *this;
}

hive_damage &hive_damage::list_count(qint64 list, quint16 count)
{
    return set_16_in(list, list::count, count);
}

hive_damage &hive_damage::offset_entry(qint64 list, qint64 index, qint64 cell)
{
    return set_32_in(list, value_list::entries + 4 * index, stored_offset(cell));
}

hive_damage &hive_damage::value_name_size(qint64 value, quint16 size)
{
    return set_16_in(value, vk::name_size, size);
}

hive_damage &hive_damage::value_type(qint64 value, quint32 type)
{
    return set_32_in(value, vk::type, type);
}

hive_damage &hive_damage::data_size(qint64 value, quint32 size)
{
    return set_32_in(value, vk::data_size, size);
}

hive_damage &hive_damage::data_cell(qint64 value, qint64 cell)
{
    return set_32_in(value, vk::data, stored_offset(cell));
}

hive_damage &hive_damage::block_count(qint64 big_data, quint16 count)
{
    return set_16_in(big_data, db::block_count, count);
}

hive_damage &hive_damage::add_last_cell(const QByteArray &record)
{
    const QByteArray cell = used_cell(QByteArray(cell_head::signature, '\0') + record);
    const qint64 bin_size = rounded_up(hbin::cells + cell.size(), page_size);
    m_bytes += bin_head(m_bytes.size(), bin_size);
    m_bytes += free_cell(bin_size - hbin::cells - cell.size());
    m_last_cell = m_bytes.size();
    m_bytes += cell;
    return bins_size(static_cast<quint32>(m_bytes.size() - first_bin));
}

hive_damage &hive_damage::add_list(const char *signature, const QList<qint64> &cells)
{
    QByteArray cell(list::entries + cells.size() * list::plain_entry_size, '\0');
    cell.replace(cell_head::signature, 2, signature, 2);
    put_16(cell, list::count, static_cast<quint16>(cells.size()));
    for (qsizetype i = 0; i < cells.size(); ++i)
        put_32(cell, list::entries + i * list::plain_entry_size, stored_offset(cells.at(i)));
    return add_last_cell(cell.mid(cell_head::signature));
}

QByteArray hive_damage::bytes() const
{
    QByteArray hive = m_bytes;
    put_checksum(hive);
    return hive;
}

} // namespace evidence
