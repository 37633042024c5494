#include "guarded_hive.h"

#include "hive_base_block.h"
#include "regf_format.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <cstdlib>
#include <hivex.h>
#include <vector>

using namespace regf;

// Before each call of libhivex the budget notes what libhivex will read: the lists, the record
// with its name, the cells of the data.

namespace {

// libhivex refuses longer lists and data without reading them.
constexpr quint32 most_subkeys = 70000;
constexpr quint32 most_values = 110000;
constexpr qint64 longest_data = 8000000;
/// How many lists of subkeys, and how many levels of them, it reads for one key.
constexpr quint32 most_lists = 70000;
constexpr int deepest_list = 32;

/// Length of a list entry: the offset of a key, a value, a list, or a block of big data.
constexpr qint64 entry_length = list::plain_entry_size;

/// A list of subkeys.
struct subkey_list_head
{
    QByteArray signature;
    qint64 entries;

    bool is_index() const { return signature == "ri"; }
    bool is_known() const { return is_index() || is_hashed() || signature == "li"; }
    qint64 length() const
    {
        return list::entries +
               entries * (is_hashed() ? list::hashed_entry_size : list::plain_entry_size);
    }

private:
    bool is_hashed() const { return signature == "lf" || signature == "lh"; }
};

/// Nothing is known of a list whose head cannot be read.
subkey_list_head head_of(QByteArrayView bytes)
{
    if (bytes.size() < list::entries)
        return {};
    return {bytes.sliced(cell_head::signature, cell_head::signature_length).toByteArray(),
            qFromLittleEndian<quint16>(bytes.data() + list::count)};
}

/// The name in a value's record if it is ASCII, of which libhivex would make the same text; null
/// for all other names. libhivex opens a converter for each, which takes a tenth of a run's
/// instructions.
hivex_text plain_name(QByteArrayView record)
{
    if (record.size() <= vk::name ||
        record.sliced(cell_head::signature, cell_head::signature_length) != "vk")
        return nullptr;
    const auto number_16 = [record](qint64 offset) {
        return qFromLittleEndian<quint16>(record.data() + offset);
    };
    const qint64 cell_size = std::abs(qint64(qFromLittleEndian<qint32>(record.data())));
    const QByteArrayView name = record.sliced(vk::name);
    const bool is_whole = name.size() == number_16(vk::name_size) && record.size() <= cell_size;
    const bool is_plain =
        std::all_of(name.begin(), name.end(), [](char c) { return c != 0 && (c & 0x80) == 0; });
    if (!is_whole || !is_plain || (number_16(vk::flags) & vk::flag_compressed_name) == 0)
        return nullptr;
    hivex_text text(static_cast<char *>(std::malloc(size_t(name.size()) + 1)));
    if (text)
        *std::copy(name.begin(), name.end(), text.get()) = '\0';
    return text;
}

/// A list of subkeys that is still to be read, and how many indexes stand above it.
struct pending_list
{
    qint64 cell;
    int depth;
};

} // namespace

guarded_hive::~guarded_hive()
{
    close();
}

bool guarded_hive::open(const QString &path)
{
    close();
    if (!m_file.open(path))
        return false;
    const hive_base_block base_block(m_file.bytes_at(0, base_block::size).toByteArray());
    // With the flag for writing, libhivex reads the file into memory instead of mapping it, so that
    // a file that shrinks meanwhile cannot crash the walk. It still opens the file for reading
    // only.
    if (!base_block.is_whole() || !base_block.ends_within_a_bin_head(m_file.length()))
        set_handle(hivex_open(path.toLocal8Bit().constData(), HIVEX_OPEN_WRITE));
    if (!is_open() || root() == 0) {
        close();
        return false;
    }
    // Bytes behind the last bin are no part of the hive and must not allow longer walks.
    m_length = std::min(m_file.length(), base_block.told_length());
    begin_walk();
    return true;
}

void guarded_hive::close()
{
    if (is_open())
        hivex_close(handle()); // nothing was changed, so nothing can be lost
    set_handle(nullptr);
    m_file.close();
    m_listed = {};
}

void guarded_hive::begin_walk()
{
    m_budget.start(m_length);
    m_listed.clear();
    m_key_of_values = 0;
    m_last_key = 0;
}

// Built from the walk's own way down, because the parent that a key names may be forged.
QString guarded_hive::key_path(unsigned long node) const
{
    constexpr qsizetype longest_path = 500;
    QString path;
    for (unsigned long parent = parent_of(node); parent != 0; parent = parent_of(node)) {
        const hivex_text name(hivex_node_name(handle(), node));
        path.prepend(u'\\' + (name ? QString::fromUtf8(name.get()) : QStringLiteral("?")));
        if (path.size() > longest_path)
            return u'…' + path.right(longest_path);
        node = parent;
    }
    return path.mid(1);
}

/// The first key under which the walk found the one at `node`, or 0.
unsigned long guarded_hive::parent_of(unsigned long node) const
{
    if (!is_open() || node == root())
        return 0;
    const auto listed =
        std::find_if(m_listed.cbegin(), m_listed.cend(),
                     [node](const listed_subkeys &list) { return list.subkeys.contains(node); });
    return listed == m_listed.cend() ? 0 : listed->parent;
}

/// Notes where the walk ended when the budget has none left.
bool guarded_hive::may_go_on(bool has_budget, unsigned long key)
{
    if (!has_budget && is_walk_over() && m_last_key == 0)
        m_last_key = key;
    return has_budget;
}

hivex_handles guarded_hive::subkeys(unsigned long node)
{
    if (is_walk_over() || !has_key(node) ||
        !may_go_on(read_subkey_lists(static_cast<qint64>(node)), node))
        return nullptr;
    hivex_handles listed = unguarded_hive::subkeys(node);
    if (listed && listed.get()[0] != 0)
        m_listed.push_back({node, entries_of(listed)});
    return listed;
}

hivex_handles guarded_hive::values(unsigned long node)
{
    if (is_walk_over() || !has_key(node))
        return nullptr;
    m_key_of_values = node;
    const bool may_read = may_go_on(read_value_list(static_cast<qint64>(node)), node);
    return may_read ? unguarded_hive::values(node) : nullptr;
}

hivex_text guarded_hive::key_name(unsigned long node)
{
    if (!has_key(node))
        return nullptr;
    const auto length = static_cast<qint64>(hivex_node_struct_length(handle(), node));
    if (m_budget.read(static_cast<qint64>(node), std::max(length, nk::name)))
        return unguarded_hive::key_name(node);
    may_go_on(false, parent_of(node));
    return nullptr;
}

hivex_text guarded_hive::value_name(unsigned long value)
{
    if (!has_value(value))
        return nullptr;
    const auto cell = static_cast<qint64>(value);
    const qint64 length = vk::name + m_file.number_16(cell + vk::name_size);
    if (!may_go_on(m_budget.read(cell, length), m_key_of_values))
        return nullptr;
    hivex_text name = plain_name(m_file.bytes_at(cell, length));
    return name ? std::move(name) : unguarded_hive::value_name(value);
}

qint64 guarded_hive::last_write_time(unsigned long node) const
{
    return has_key(node) ? unguarded_hive::last_write_time(node) : -1;
}

unguarded_hive::value_data guarded_hive::data(unsigned long value)
{
    if (is_walk_over() || !has_value(value))
        return {};
    size_t counted_length = 0; // with the cell's size; 0 when the data stand in the value itself
    const auto cell =
        static_cast<qint64>(hivex_value_data_cell_offset(handle(), value, &counted_length));
    const auto length = static_cast<qint64>(counted_length) - cell_head::length;
    const bool may_read = cell == 0 || may_go_on(read_data(cell, length), m_key_of_values);
    return may_read ? unguarded_hive::data(value) : value_data();
}

int guarded_hive::value_type(unsigned long value) const
{
    return has_value(value) ? unguarded_hive::value_type(value) : 0;
}

/// Whether the fixed part of the record lies inside the file, which libhivex does not check.
bool guarded_hive::has_key(unsigned long node) const
{
    return node >= first_bin && m_file.holds(node, nk::name);
}

bool guarded_hive::has_value(unsigned long value) const
{
    return value >= first_bin && m_file.holds(value, vk::name);
}

/// Follows the lists in libhivex's order, to where it gives up. False when the walk is over.
bool guarded_hive::read_subkey_lists(qint64 node)
{
    const quint32 subkey_count = m_file.number_32(node + nk::subkey_count);
    if (subkey_count == 0 || subkey_count > most_subkeys)
        return true;
    std::vector<pending_list> pending{{m_file.cell_at(node + nk::subkey_list), 0}};
    for (quint32 lists = 0; lists < most_lists && !pending.empty(); ++lists) {
        const pending_list next = pending.back();
        pending.pop_back();
        const subkey_list_head head = head_of(m_file.bytes_at(next.cell, list::entries));
        if (!head.is_known() || next.depth > deepest_list)
            return true; // libhivex refuses the key's subkeys here
        if (!m_budget.read(next.cell, head.length()))
            return false;
        if (!head.is_index())
            continue;
        const QByteArrayView entries =
            m_file.bytes_at(next.cell + list::entries, head.entries * entry_length);
        for (qint64 end = entries.size(); end >= entry_length; end -= entry_length)
            pending.push_back(
                {hive_file::cell_of(entries.data() + end - entry_length), next.depth + 1});
    }
    return true;
}

/// False when the walk is over.
bool guarded_hive::read_value_list(qint64 node)
{
    const quint32 value_count = m_file.number_32(node + nk::value_count);
    if (value_count == 0 || value_count > most_values)
        return true;
    return m_budget.read(m_file.cell_at(node + nk::value_list),
                         value_list::entries + value_count * entry_length);
}

/// False when the walk is over, and when libhivex must not be called: because the record or a list
/// extends past the end of the file, or because the record cannot be read here.
bool guarded_hive::read_data(qint64 cell, qint64 declared_length)
{
    if (declared_length > longest_data)
        return true;
    constexpr qint64 least_length = cell_head::signature + cell_head::signature_length;
    const QByteArrayView head = m_file.bytes_at(cell, least_length);
    if (head.size() < least_length)
        return false;
    const auto cell_size = std::abs(qint64(qFromLittleEndian<qint32>(head.data())));
    if (declared_length <= cell_size - cell_head::length)
        return m_budget.read(cell, cell_head::length + declared_length);
    const bool is_big_data = head.sliced(cell_head::signature, cell_head::signature_length) == "db";
    return !is_big_data || read_big_data(cell, declared_length);
}

/// The same for a big-data record.
bool guarded_hive::read_big_data(qint64 record, qint64 declared_length)
{
    constexpr qint64 record_length = db::block_list + entry_length;
    if (m_file.bytes_at(record, record_length).size() < record_length)
        return false;
    const qint64 count = m_file.number_16(record + db::block_count);
    const qint64 list = m_file.cell_at(record + db::block_list);
    const qint64 list_length = db::block_list_entries + count * entry_length;
    return m_file.holds(static_cast<quint64>(list), list_length) &&
           m_budget.read(record, record_length) && m_budget.read(list, list_length) &&
           read_blocks(list + db::block_list_entries, count, declared_length);
}

/// False when the walk is over.
bool guarded_hive::read_blocks(qint64 list, qint64 count, qint64 declared_length)
{
    const QByteArray blocks = m_file.bytes_at(list, count * entry_length).toByteArray();
    qint64 left = declared_length;
    for (qsizetype i = 0; i + entry_length <= blocks.size() && left > 0; i += entry_length) {
        const qint64 block = hive_file::cell_of(blocks.constData() + i);
        const auto cell_size = std::abs(qint64(static_cast<qint32>(m_file.number_32(block))));
        const qint64 length =
            std::clamp(cell_size - db::block_data - db::block_tail, qint64(0), left);
        if (!m_budget.read(block, db::block_data + length))
            return false;
        left -= length;
    }
    return true;
}
