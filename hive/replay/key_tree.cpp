#include "key_tree.h"

#include "hive_cells.h"
#include "regf_format.h"

#include <QStringDecoder>
#include <QStringList>
#include <QtEndian>

#include <algorithm>

using namespace regf;

/// Reads the keys of a hive in breadth, so that the subkeys of each have numbers in a row.
class key_tree_reader
{
public:
    key_tree_reader(QByteArrayView hive, key_tree &tree)
        : m_root(hive_cells::number_32(hive, base_block::root_cell)), m_cells(hive), m_tree(tree)
    {
    }

    void read();

private:
    void add_key(quint32 stored_offset, quint32 parent);
    void add_name(QByteArrayView cell, key_tree::key &key);
    void add_subkeys(quint32 number);
    void add_list(quint32 stored_offset, quint32 parent, bool may_list_lists);
    quint64 hash_of_values(quint32 stored_list, quint32 count);
    quint64 hash_of_value(quint32 stored_offset, quint64 before);
    quint64 hash_of_data(quint32 stored_offset, quint32 size, quint64 before);
    quint64 hash_of_blocks(QByteArrayView record, qint64 size, quint64 before);

    quint32 m_root;
    hive_cells m_cells;
    key_tree &m_tree;
    std::vector<quint32> m_lists; ///< the stored offset of each key's list of subkeys
};

namespace {

/// Goes on from the hash before. Qt's hash takes several times as long over all data of a hive.
quint64 hash_of(QByteArrayView bytes, quint64 before)
{
    constexpr quint64 factor = 0x9e3779b97f4a7c15; // odd, without a pattern in its bits
    constexpr qsizetype word_size = sizeof(quint64);
    quint64 hash = before ^ static_cast<quint64>(bytes.size());
    const auto add = [&hash](quint64 word) {
        hash = (hash ^ word) * factor;
        hash ^= hash >> 29;
    };
    for (; bytes.size() >= word_size; bytes = bytes.sliced(word_size))
        add(qFromUnaligned<quint64>(bytes.data()));
    quint64 rest = 0;
    for (const char byte : bytes)
        rest = rest << 8 | static_cast<quint8>(byte);
    add(rest);
    return hash;
}

QByteArrayView part_of(QByteArrayView cell, qint64 begin, qint64 size)
{
    const qint64 from = std::min(begin, qint64(cell.size()));
    return cell.sliced(from, std::min(size, qint64(cell.size()) - from));
}

bool has_signature(QByteArrayView cell, const char *letters)
{
    return part_of(cell, cell_head::signature, cell_head::signature_length) ==
           QByteArrayView(letters);
}

bool is_of_plain_entries(QByteArrayView list)
{
    return has_signature(list, "li") || has_signature(list, "ri");
}

} // namespace

void key_tree_reader::read()
{
    add_key(m_root, key_tree::root);
    for (quint32 number = 0; number < m_tree.count(); ++number)
        add_subkeys(number);
}

void key_tree_reader::add_key(quint32 stored_offset, quint32 parent)
{
    const QByteArrayView cell = m_cells.take(stored_offset, nk::name);
    if (!has_signature(cell, "nk"))
        return;
    key_tree::key key;
    key.parent = parent;
    key.last_write = hive_cells::number_64(cell, nk::last_write);
    key.values = hash_of_values(hive_cells::number_32(cell, nk::value_list),
                                hive_cells::number_32(cell, nk::value_count));
    add_name(cell, key);
    m_tree.m_keys.push_back(key);
    const bool has_subkeys = hive_cells::number_32(cell, nk::subkey_count) > 0;
    m_lists.push_back(has_subkeys ? hive_cells::number_32(cell, nk::subkey_list) : no_cell);
}

void key_tree_reader::add_name(QByteArrayView cell, key_tree::key &key)
{
    const QByteArrayView bytes =
        part_of(cell, nk::name, hive_cells::number_16(cell, nk::name_size));
    const bool is_latin_1 =
        (hive_cells::number_16(cell, nk::flags) & nk::flag_compressed_name) != 0;
    QStringDecoder decoder(is_latin_1 ? QStringDecoder::Latin1 : QStringDecoder::Utf16LE);
    const QString name = decoder(bytes);
    key.name_begin = static_cast<quint32>(m_tree.m_names.size());
    m_tree.m_names += name.toUtf8();
    key.name_size = static_cast<quint32>(m_tree.m_names.size()) - key.name_begin;
}

void key_tree_reader::add_subkeys(quint32 number)
{
    const quint32 first = m_tree.count();
    add_list(m_lists[number], number, true);
    m_tree.m_keys[number].first_subkey = first;
    m_tree.m_keys[number].subkey_count = m_tree.count() - first;
}

/// Windows puts no list of lists into another one.
void key_tree_reader::add_list(quint32 stored_offset, quint32 parent, bool may_list_lists)
{
    const QByteArrayView list = m_cells.take(stored_offset, list::entries);
    const bool is_of_lists = has_signature(list, "ri");
    const qint64 entry_size =
        is_of_plain_entries(list) ? list::plain_entry_size : list::hashed_entry_size;
    if (is_of_lists && !may_list_lists)
        return;
    const qint64 count =
        std::min(qint64(hive_cells::number_16(list, list::count)),
                 std::max(qint64(list.size()) - list::entries, qint64(0)) / entry_size);
    for (qint64 i = 0; i < count; ++i) {
        const quint32 entry = hive_cells::number_32(list, list::entries + i * entry_size);
        if (is_of_lists)
            add_list(entry, parent, false);
        else
            add_key(entry, parent);
    }
}

quint64 key_tree_reader::hash_of_values(quint32 stored_list, quint32 count)
{
    if (count == 0)
        return 0;
    const QByteArrayView list = m_cells.take(stored_list, cell_head::length);
    quint64 hash = 1;
    const qint64 most = (qint64(list.size()) - value_list::entries) / qint64(sizeof(quint32));
    for (qint64 i = 0; i < std::min(qint64(count), most); ++i) {
        const qint64 place = value_list::entries + i * qint64(sizeof(quint32));
        hash = hash_of_value(hive_cells::number_32(list, place), hash);
    }
    return hash;
}

/// Where the data lie does not count.
quint64 key_tree_reader::hash_of_value(quint32 stored_offset, quint64 before)
{
    const QByteArrayView cell = m_cells.take(stored_offset, vk::name);
    if (!has_signature(cell, "vk"))
        return before;
    const quint32 size = hive_cells::number_32(cell, vk::data_size);
    const qint64 name_size = hive_cells::number_16(cell, vk::name_size);
    quint64 hash = hash_of(part_of(cell, vk::type, vk::flags + 2 - vk::type), before);
    hash = hash_of(part_of(cell, vk::name, name_size), hash);
    hash = hash_of(part_of(cell, vk::data_size, sizeof(quint32)), hash);
    if ((size & vk::data_inside) != 0)
        return hash_of(part_of(cell, vk::data, sizeof(quint32)), hash);
    return size == 0 ? hash : hash_of_data(hive_cells::number_32(cell, vk::data), size, hash);
}

quint64 key_tree_reader::hash_of_data(quint32 stored_offset, quint32 size, quint64 before)
{
    const QByteArrayView cell = m_cells.take(stored_offset, cell_head::length);
    const bool is_too_short = qint64(cell.size()) - cell_head::length < size;
    if (is_too_short && has_signature(cell, "db"))
        return hash_of_blocks(cell, size, before);
    return hash_of(part_of(cell, cell_head::length, size), before);
}

quint64 key_tree_reader::hash_of_blocks(QByteArrayView record, qint64 size, quint64 before)
{
    const QByteArrayView list =
        m_cells.take(hive_cells::number_32(record, db::block_list), db::block_list_entries);
    const qint64 most = (qint64(list.size()) - db::block_list_entries) / qint64(sizeof(quint32));
    const qint64 count = std::min(qint64(hive_cells::number_16(record, db::block_count)), most);
    quint64 hash = before;
    for (qint64 i = 0, left = size; i < count && left > 0; ++i, left -= db::block_limit) {
        const qint64 place = db::block_list_entries + i * qint64(sizeof(quint32));
        const QByteArrayView block =
            m_cells.take(hive_cells::number_32(list, place), db::block_data);
        hash =
            hash_of(part_of(block, db::block_data, std::min(left, qint64(db::block_limit))), hash);
    }
    return hash;
}

key_tree::key_tree(QByteArrayView hive)
{
    key_tree_reader(hive, *this).read();
}

QString key_tree::name_of(quint32 number) const
{
    const key &named = m_keys[number];
    return QString::fromUtf8(QByteArrayView(m_names).sliced(named.name_begin, named.name_size));
}

QString key_tree::path_of(quint32 number) const
{
    QStringList names;
    for (quint32 step = number; step != root; step = m_keys[step].parent)
        names.prepend(name_of(step));
    return names.join(u'\\');
}
