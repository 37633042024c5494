#include "hive_layout.h"

#include "base_block.h"
#include "byte_fields.h"
#include "regf_format.h"
#include "subkey_lists.h"

#include <algorithm>

namespace evidence {

using namespace regf;

namespace {

// A self-relative security descriptor of revision 1 without owner, group and access lists.
const char *const empty_descriptor = "0100008000000000000000000000000000000000";

QByteArray signed_cell(const char *signature, qint64 size)
{
    QByteArray cell(size, '\0');
    cell.replace(cell_head::signature, 2, signature);
    return cell;
}

template<typename range, typename size_of>
quint32 longest(const range &entries, size_of size)
{
    quint32 result = 0;
    for (const auto &entry : entries)
        result = std::max(result, size(entry));
    return result;
}

quint32 data_size(const QByteArray &data)
{
    return static_cast<quint32>(data.size());
}

} // namespace

hive_layout::hive_layout(quint32 minor_version) : m_minor_version(minor_version) {}

QByteArray hive_layout::bytes(std::deque<hive_key> &keys)
{
    for (hive_key &key : keys) {
        place_key(key);
        place_values(key);
    }
    const qint64 security = place_security(keys.size());
    for (hive_key &key : keys) {
        put_32(m_bins.bytes(), key.m_cells.key + nk::security, stored_offset(security));
        place_subkeys(key);
    }
    m_bins.close_bin();
    put_base_block(m_bins.bytes(), keys.front().m_cells.key, m_minor_version);
    return m_bins.bytes();
}

qint64 hive_layout::place_security(size_t key_count)
{
    const QByteArray descriptor = QByteArray::fromHex(empty_descriptor);
    QByteArray cell = signed_cell("sk", sk::descriptor) + descriptor;
    put_32(cell, sk::reference_count, static_cast<quint32>(key_count));
    put_32(cell, sk::descriptor_size, data_size(descriptor));
    const qint64 placed = m_bins.add(cell);
    put_32(m_bins.bytes(), placed + sk::previous, stored_offset(placed));
    put_32(m_bins.bytes(), placed + sk::next, stored_offset(placed));
    return placed;
}

void hive_layout::place_key(hive_key &key)
{
    const hive_name &name = key.m_name;
    QByteArray cell = signed_cell("nk", nk::name) + name.stored();
    const bool is_root = key.m_parent == nullptr;
    put_16(cell, nk::flags,
           static_cast<quint16>((is_root ? nk::flag_hive_root : 0) |
                                (name.compressed() ? nk::flag_compressed_name : 0)));
    put_64(cell, nk::last_write, static_cast<quint64>(key.m_last_write));
    put_32(cell, nk::parent, stored_offset(is_root ? 0 : key.m_parent->m_cells.key));
    put_32(cell, nk::subkey_list, no_cell);
    put_32(cell, nk::volatile_subkey_list, no_cell);
    put_32(cell, nk::value_list, no_cell);
    put_32(cell, nk::class_name, no_cell);
    put_16(cell, nk::name_size, static_cast<quint16>(name.stored().size()));
    key.m_cells = {};
    key.m_cells.key = m_bins.add(cell);
}

void hive_layout::place_values(hive_key &key)
{
    if (key.m_values.empty())
        return;
    QList<qint64> cells;
    cells.reserve(static_cast<qsizetype>(key.m_values.size()));
    for (hive_key::value_entry &value : key.m_values) {
        place_value(value);
        cells.append(value.cells.value);
    }
    key.m_cells.value_list = place_offsets(cells);

    const qint64 at = key.m_cells.key;
    put_32(m_bins.bytes(), at + nk::value_count, static_cast<quint32>(cells.size()));
    put_32(m_bins.bytes(), at + nk::value_list, stored_offset(key.m_cells.value_list));
    put_32(m_bins.bytes(), at + nk::longest_value_name,
           longest(key.m_values, [](const auto &value) { return value.name.utf16_size(); }));
    put_32(m_bins.bytes(), at + nk::longest_value_data,
           longest(key.m_values, [](const auto &value) { return data_size(value.data); }));
}

void hive_layout::place_value(hive_key::value_entry &value)
{
    QByteArray cell = signed_cell("vk", vk::name) + value.name.stored();
    put_16(cell, vk::name_size, static_cast<quint16>(value.name.stored().size()));
    put_32(cell, vk::type, value.type);
    put_16(cell, vk::flags, value.name.compressed() ? vk::flag_compressed_name : 0);
    value.cells = {};
    if (value.data.size() <= vk::data_inside_limit) {
        put_32(cell, vk::data_size, data_size(value.data) | vk::data_inside);
        cell.replace(vk::data, value.data.size(), value.data);
    } else {
        place_data(value);
        put_32(cell, vk::data_size, data_size(value.data));
        put_32(cell, vk::data, stored_offset(value.cells.data));
    }
    value.cells.value = m_bins.add(cell);
}

void hive_layout::place_data(hive_key::value_entry &value)
{
    const bool is_big =
        value.data.size() > db::block_limit && m_minor_version >= db::first_minor_version;
    if (is_big)
        place_big_data(value);
    else
        value.cells.data = m_bins.add(QByteArray(cell_head::signature, '\0') + value.data);
}

void hive_layout::place_big_data(hive_key::value_entry &value)
{
    const QByteArray tail(db::block_tail, '\0');
    for (qsizetype from = 0; from < value.data.size(); from += db::block_limit)
        value.cells.blocks.append(m_bins.add(QByteArray(db::block_data, '\0') +
                                             value.data.mid(from, db::block_limit) + tail));
    value.cells.block_list = place_offsets(value.cells.blocks);

    QByteArray cell = signed_cell("db", db::size);
    put_16(cell, db::block_count, static_cast<quint16>(value.cells.blocks.size()));
    put_32(cell, db::block_list, stored_offset(value.cells.block_list));
    value.cells.data = m_bins.add(cell);
}

void hive_layout::place_subkeys(hive_key &key)
{
    if (key.m_subkeys.empty())
        return;
    QList<subkey_entry> subkeys;
    subkeys.reserve(static_cast<qsizetype>(key.m_subkeys.size()));
    for (const hive_key *subkey : key.m_subkeys)
        subkeys.append({subkey->m_cells.key, subkey->m_name});
    const placed_list placed = place_subkey_list(m_bins, subkeys, key.m_list_kind);
    key.m_cells.subkey_list = placed.list;
    key.m_cells.subkey_leaves = placed.leaves;

    const qint64 at = key.m_cells.key;
    put_32(m_bins.bytes(), at + nk::subkey_count, static_cast<quint32>(subkeys.size()));
    put_32(m_bins.bytes(), at + nk::subkey_list, stored_offset(placed.list));
    const quint32 longest_name =
        longest(subkeys, [](const subkey_entry &subkey) { return subkey.name.utf16_size(); });
    put_16(m_bins.bytes(), at + nk::longest_subkey_name, static_cast<quint16>(longest_name));
}

qint64 hive_layout::place_offsets(const QList<qint64> &cells)
{
    QByteArray cell(value_list::entries + 4 * cells.size(), '\0');
    for (qsizetype i = 0; i < cells.size(); ++i)
        put_32(cell, value_list::entries + 4 * i, stored_offset(cells.at(i)));
    return m_bins.add(cell);
}

} // namespace evidence
