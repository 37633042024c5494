#include "rebuilt_hive_writer.h"

#include "hive_base_block.h"
#include "regf_format.h"

#include <QtEndian>

#include <algorithm>

using namespace regf;

namespace {

constexpr quint32 minor_version = 3;
constexpr size_t most_entries = 1000; // of one list of subkeys, well below what its count can tell

template<typename number>
void put(QByteArray &bytes, qint64 offset, number value)
{
    qToLittleEndian(value, bytes.data() + offset);
}

qint64 rounded_up(qint64 size, qint64 unit)
{
    return (size + unit - 1) / unit * unit;
}

quint32 stored(qint64 offset)
{
    return static_cast<quint32>(offset - first_bin);
}

/// A name as Windows stores it: in Latin-1 if it has no other characters.
struct stored_name
{
    explicit stored_name(const QString &name)
        : is_latin_1(
              std::all_of(name.begin(), name.end(), [](QChar c) { return c.unicode() <= 0xff; }))
    {
        bytes = name.toLatin1();
        if (is_latin_1)
            return;
        bytes.resize(name.size() * 2);
        for (qsizetype i = 0; i < name.size(); ++i)
            put<quint16>(bytes, i * 2, name.at(i).unicode());
    }

    bool is_latin_1;
    QByteArray bytes;
};

QByteArray signed_cell(const char *signature, qint64 size)
{
    QByteArray cell(size, '\0');
    return cell.replace(cell_head::signature, cell_head::signature_length, signature);
}

} // namespace

rebuilt_hive_writer::rebuilt_hive_writer(const std::deque<rebuilt_hive::key> &keys)
    : m_keys(keys), m_bytes(first_bin, '\0'), m_bin_end(first_bin)
{
}

QByteArray rebuilt_hive_writer::bytes()
{
    add_security();
    for (const rebuilt_hive::key &key : m_keys)
        add_key(key);
    for (size_t number = 0; number < m_keys.size(); ++number) {
        add_values(m_keys[number], m_places[number]);
        add_subkeys(m_keys[number], m_places[number]);
    }
    end_bin();
    write_base_block();
    return m_bytes;
}

/// Puts a cell into the last bin, or into a new one.
qint64 rebuilt_hive_writer::add(QByteArray cell)
{
    const qint64 size = rounded_up(cell.size(), cell_head::alignment);
    cell.resize(size, '\0');
    put(cell, cell_head::size, static_cast<qint32>(-size));
    if (m_bytes.size() + size > m_bin_end) {
        end_bin();
        const qint64 bin_size = rounded_up(hbin::cells + size, page_size);
        QByteArray head(hbin::cells, '\0');
        head.replace(0, 4, "hbin");
        put(head, hbin::offset, stored(m_bytes.size()));
        put(head, hbin::size, static_cast<quint32>(bin_size));
        m_bin_end = m_bytes.size() + bin_size;
        m_bytes += head;
    }
    const qint64 place = m_bytes.size();
    m_bytes += cell;
    return place;
}

/// What is left of the bin becomes a free cell.
void rebuilt_hive_writer::end_bin()
{
    const qint64 rest = m_bin_end - m_bytes.size();
    if (rest == 0)
        return;
    QByteArray cell(rest, '\0');
    put(cell, cell_head::size, static_cast<quint32>(rest));
    m_bytes += cell;
}

/// One descriptor for all keys, without owner, group and access lists.
void rebuilt_hive_writer::add_security()
{
    const QByteArray descriptor = QByteArray::fromHex("0100008000000000000000000000000000000000");
    QByteArray cell = signed_cell("sk", sk::descriptor) + descriptor;
    put(cell, sk::reference_count, static_cast<quint32>(m_keys.size()));
    put(cell, sk::descriptor_size, static_cast<quint32>(descriptor.size()));
    m_security = add(cell);
    put(m_bytes, m_security + sk::previous, stored(m_security));
    put(m_bytes, m_security + sk::next, stored(m_security));
}

void rebuilt_hive_writer::add_key(const rebuilt_hive::key &key)
{
    const stored_name name(key.name);
    const bool is_root = m_places.empty();
    QByteArray cell = signed_cell("nk", nk::name) + name.bytes;
    put<quint16>(cell, nk::flags,
                 static_cast<quint16>((is_root ? nk::flag_hive_root : 0) |
                                      (name.is_latin_1 ? nk::flag_compressed_name : 0)));
    put(cell, nk::last_write, key.last_write);
    put(cell, nk::parent, is_root ? no_cell : stored(m_places[key.parent]));
    put(cell, nk::subkey_list, no_cell);
    put(cell, nk::volatile_subkey_list, no_cell);
    put(cell, nk::value_list, no_cell);
    put(cell, nk::security, stored(m_security));
    put(cell, nk::class_name, no_cell);
    put(cell, nk::name_size, static_cast<quint16>(name.bytes.size()));
    m_places.push_back(add(cell));
}

void rebuilt_hive_writer::add_values(const rebuilt_hive::key &key, qint64 place)
{
    if (key.values.empty())
        return;
    QByteArray list(value_list::entries, '\0');
    for (const rebuilt_hive::value &value : key.values) {
        list.resize(list.size() + qsizetype(sizeof(quint32)));
        put(list, list.size() - qsizetype(sizeof(quint32)), stored(add_value(value)));
    }
    const qint64 list_place = add(list);
    put(m_bytes, place + nk::value_count, static_cast<quint32>(key.values.size()));
    put(m_bytes, place + nk::value_list, stored(list_place));
}

qint64 rebuilt_hive_writer::add_value(const rebuilt_hive::value &value)
{
    const stored_name name(value.name);
    QByteArray cell = signed_cell("vk", vk::name) + name.bytes;
    put(cell, vk::name_size, static_cast<quint16>(name.bytes.size()));
    put(cell, vk::type, value.type);
    put<quint16>(cell, vk::flags, name.is_latin_1 ? vk::flag_compressed_name : 0);
    const auto size = static_cast<quint32>(value.data.size());
    if (value.data.size() <= vk::data_inside_limit) {
        put(cell, vk::data_size, size | vk::data_inside);
        cell.replace(vk::data, value.data.size(), value.data);
    } else {
        put(cell, vk::data_size, size);
        put(cell, vk::data, stored(add(QByteArray(cell_head::length, '\0') + value.data)));
    }
    return add(cell);
}

void rebuilt_hive_writer::add_subkeys(const rebuilt_hive::key &key, qint64 place)
{
    std::vector<qint64> lists;
    for (size_t from = 0; from < key.subkeys.size(); from += most_entries) {
        std::vector<qint64> cells;
        const size_t end = std::min(key.subkeys.size(), from + most_entries);
        for (size_t i = from; i < end; ++i)
            cells.push_back(m_places[key.subkeys[i]]);
        lists.push_back(add_list("li", cells));
    }
    if (lists.empty())
        return;
    const qint64 list = lists.size() == 1 ? lists.front() : add_list("ri", lists);
    put(m_bytes, place + nk::subkey_count, static_cast<quint32>(key.subkeys.size()));
    put(m_bytes, place + nk::subkey_list, stored(list));
}

qint64 rebuilt_hive_writer::add_list(const char *signature, const std::vector<qint64> &cells)
{
    QByteArray list =
        signed_cell(signature, list::entries + qint64(cells.size()) * list::plain_entry_size);
    put(list, list::count, static_cast<quint16>(cells.size()));
    for (size_t i = 0; i < cells.size(); ++i)
        put(list, list::entries + qint64(i) * list::plain_entry_size, stored(cells[i]));
    return add(list);
}

void rebuilt_hive_writer::write_base_block()
{
    m_bytes.replace(0, 4, "regf");
    put<quint32>(m_bytes, base_block::primary_sequence, 1);
    put<quint32>(m_bytes, base_block::secondary_sequence, 1);
    put<quint32>(m_bytes, base_block::major_version, 1);
    put(m_bytes, base_block::minor_version, minor_version);
    put<quint32>(m_bytes, base_block::format, 1);
    put(m_bytes, base_block::root_cell, stored(m_places.front()));
    put(m_bytes, base_block::bins_size, static_cast<quint32>(m_bytes.size() - first_bin));
    put<quint32>(m_bytes, base_block::clustering_factor, 1);
    put(m_bytes, base_block::checksum,
        hive_base_block::checksum_of(m_bytes.first(base_block::fields)));
}
