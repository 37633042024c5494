#include "hive_deletion.h"

#include "base_block.h"
#include "byte_fields.h"
#include "hive_bins.h"
#include "regf_format.h"

namespace evidence {

using namespace regf;

namespace {

constexpr qint64 number_size = sizeof(quint32);

} // namespace

quint32 hive_deletion::number_at(qint64 offset) const
{
    return get_32(m_bytes, offset);
}

/// The file offset of the cell whose stored offset stands at `offset`; 0 for none.
qint64 hive_deletion::cell_named_at(qint64 offset) const
{
    const quint32 stored = number_at(offset);
    return stored == no_cell ? 0 : first_bin + qint64(stored);
}

qint32 hive_deletion::size_of(qint64 cell) const
{
    return static_cast<qint32>(number_at(cell + cell_head::size));
}

qint64 hive_deletion::bin_of(qint64 cell) const
{
    qint64 bin = first_bin;
    while (bin + qint64(number_at(bin + hbin::size)) <= cell)
        bin += number_at(bin + hbin::size);
    return bin;
}

hive_deletion &hive_deletion::cell(qint64 cell)
{
    const qint64 bin = bin_of(cell);
    const qint64 end = bin + number_at(bin + hbin::size);
    qint64 size = std::abs(size_of(cell));
    if (cell + size < end && size_of(cell + size) > 0)
        size += size_of(cell + size);
    put_32(m_bytes, cell, static_cast<quint32>(size));
    qint64 before = bin + hbin::cells;
    while (before < cell && before + std::abs(size_of(before)) < cell)
        before += std::abs(size_of(before));
    if (before < cell && size_of(before) > 0)
        put_32(m_bytes, before, static_cast<quint32>(size_of(before) + size));
    return *this;
}

hive_deletion &hive_deletion::use(qint64 free_cell, const QByteArray &record)
{
    const QByteArray used = used_cell(QByteArray(cell_head::length, '\0') + record);
    const qint64 rest = size_of(free_cell) - used.size();
    m_bytes.replace(free_cell, used.size(), used);
    if (rest > 0)
        put_32(m_bytes, free_cell + used.size(), static_cast<quint32>(rest));
    return *this;
}

/// The lists of the key's subkeys: one, or those below an "ri".
QList<qint64> hive_deletion::lists_of(qint64 key) const
{
    if (number_at(key + nk::subkey_count) == 0)
        return {};
    const qint64 list = cell_named_at(key + nk::subkey_list);
    if (m_bytes.mid(list + cell_head::signature, cell_head::signature_length) != "ri")
        return {list};
    QList<qint64> leaves;
    for (int i = 0; i < get_16(m_bytes, list + list::count); ++i)
        leaves.append(cell_named_at(list + list::entries + i * list::plain_entry_size));
    return leaves;
}

namespace {

qint64 entry_size_of(const QByteArray &hive, qint64 list)
{
    const bool is_plain = hive.mid(list + cell_head::signature, 2) == "li";
    return is_plain ? list::plain_entry_size : list::hashed_entry_size;
}

} // namespace

QList<qint64> hive_deletion::subkeys_of(qint64 key) const
{
    QList<qint64> subkeys;
    for (const qint64 list : lists_of(key)) {
        for (int i = 0; i < get_16(m_bytes, list + list::count); ++i)
            subkeys.append(cell_named_at(list + list::entries + i * entry_size_of(m_bytes, list)));
    }
    return subkeys;
}

hive_deletion &hive_deletion::key(qint64 key, qint64 filetime)
{
    for (const qint64 subkey : subkeys_of(key))
        this->key(subkey, filetime);
    unlist_key(key);
    put_64(m_bytes, cell_named_at(key + nk::parent) + nk::last_write,
           static_cast<quint64>(filetime));
    free_values(key);
    return cell(key);
}

void hive_deletion::free_values(qint64 key)
{
    const quint32 count = number_at(key + nk::value_count);
    if (count == 0)
        return;
    const qint64 list = cell_named_at(key + nk::value_list);
    for (quint32 i = 0; i < count; ++i)
        free_value(cell_named_at(list + value_list::entries + i * number_size));
    cell(list);
}

void hive_deletion::free_value(qint64 value)
{
    const quint32 size = number_at(value + vk::data_size);
    if (size > 0 && (size & vk::data_inside) == 0)
        cell(cell_named_at(value + vk::data));
    cell(value);
}

hive_deletion &hive_deletion::value(qint64 key, qint64 value, qint64 filetime)
{
    const quint32 count = number_at(key + nk::value_count);
    const qint64 list = cell_named_at(key + nk::value_list);
    quint32 place = 0;
    while (cell_named_at(list + value_list::entries + place * number_size) != value)
        ++place;
    for (; place + 1 < count; ++place) {
        const qint64 entry = list + value_list::entries + place * number_size;
        put_32(m_bytes, entry, number_at(entry + number_size));
    }
    put_32(m_bytes, key + nk::value_count, count - 1);
    put_64(m_bytes, key + nk::last_write, static_cast<quint64>(filetime));
    if (count == 1) {
        put_32(m_bytes, key + nk::value_list, no_cell);
        cell(list);
    }
    free_value(value);
    return *this;
}

/// Takes the key out of its parent's list. A list without entries becomes free.
void hive_deletion::unlist_key(qint64 key)
{
    const qint64 parent = cell_named_at(key + nk::parent);
    for (const qint64 list : lists_of(parent)) {
        if (take_from(list, key))
            break;
    }
    const quint32 left = number_at(parent + nk::subkey_count) - 1;
    if (left == 0)
        free_lists(parent);
    put_32(m_bytes, parent + nk::subkey_count, left);
}

void hive_deletion::free_lists(qint64 key)
{
    const qint64 list = cell_named_at(key + nk::subkey_list);
    for (const qint64 leaf : lists_of(key)) {
        if (leaf != list)
            cell(leaf);
    }
    cell(list);
    put_32(m_bytes, key + nk::subkey_list, no_cell);
}

bool hive_deletion::take_from(qint64 list, qint64 key)
{
    const qint64 entry_size = entry_size_of(m_bytes, list);
    const int count = get_16(m_bytes, list + list::count);
    for (int place = 0; place < count; ++place) {
        const qint64 entry = list + list::entries + place * entry_size;
        if (cell_named_at(entry) != key)
            continue;
        const qint64 rest = (count - place - 1) * entry_size;
        m_bytes.replace(entry, rest, m_bytes.mid(entry + entry_size, rest));
        put_16(m_bytes, list + list::count, static_cast<quint16>(count - 1));
        return true;
    }
    return false;
}

QByteArray with_free_bin(const QByteArray &hive, const QByteArray &cells)
{
    const qint64 size = rounded_up(hbin::cells + cells.size(), page_size);
    QByteArray bytes = hive + (bin_head(hive.size(), size) + cells).leftJustified(size, '\0');
    put_32(bytes, hive.size() + hbin::cells, static_cast<quint32>(size - hbin::cells));
    put_32(bytes, base_block::bins_size, static_cast<quint32>(bytes.size() - first_bin));
    put_checksum(bytes);
    return bytes;
}

} // namespace evidence
