#include "checked_hive.h"

#include <QtEndian>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "walk_limits.h"

namespace {

constexpr checked_hive::named_record key_record = {0x50, 0x4c};   ///< nk
constexpr checked_hive::named_record value_record = {0x18, 0x06}; ///< vk
constexpr qint64 list_entry_length = 4;

/// Offsets that are stored in a hive count from here.
constexpr qint64 first_bin = 0x1000;
/// Key's record: where the offset of its subkeys' list stands.
constexpr qint64 subkey_list_offset = 0x20;
/// A list begins with its cell's size, two letters and, at 0x06, the number of its entries.
constexpr qint64 signature_offset = 0x04;
constexpr qint64 entry_count_offset = 0x06;
constexpr qint64 entries_offset = 0x08;

/// Big-data record: where the number of its blocks stands, and the offset of their list.
constexpr qint64 block_count_offset = 0x06;
constexpr qint64 block_list_offset = 0x08;
constexpr qint64 big_data_record_length = 0x0c;

/// A cell begins with its size, which counts itself and is negative while the cell is in use.
constexpr qint64 cell_size_length = 4;
/// libhivex refuses longer data unread.
constexpr qint64 longest_data = 8000000;

} // namespace

// Writable in memory only: libhivex then reads the file instead of mapping it, so that a bad sector
// of the evidence is an error and not a SIGBUS.
checked_hive::checked_hive(const QString &hive_file)
    : m_file(hive_file),
      m_handle(m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)
                   ? hivex_open(QFile::encodeName(hive_file).constData(), HIVEX_OPEN_WRITE)
                   : nullptr),
      m_length(m_file.size()),
      m_size(walk_limits::hive_lengths * m_length),
      m_left(m_size)
{
}

void checked_hive::begin_walk()
{
    m_left = m_size;
}

std::optional<QList<hive_node_h>> checked_hive::subkeys(hive_node_h key)
{
    auto found = list_of(key, hivex_node_children);
    if (found && !found->isEmpty())
        spend_on_index(key, found->size());
    return found;
}

std::optional<QList<hive_value_h>> checked_hive::values(hive_node_h key)
{
    return list_of(key, hivex_node_values);
}

checked_hive::text checked_hive::key_name(hive_node_h key)
{
    return name_of(key, key_record, hivex_node_name);
}

checked_hive::text checked_hive::value_name(hive_value_h value)
{
    return name_of(value, value_record, hivex_value_key);
}

qint64 checked_hive::data_length(hive_value_h value)
{
    size_t counted_length = 0; // with the cell's size; 0 when the data stand in the value itself
    const auto cell =
        static_cast<qint64>(hivex_value_data_cell_offset(m_handle.get(), value, &counted_length));
    const qint64 declared_length =
        std::max(static_cast<qint64>(counted_length) - cell_size_length, qint64(0));
    const qint64 list_length = cell == 0 ? 0 : block_list_length(cell, declared_length);
    spend(std::max(list_length, qint64(0)));
    if (list_length < 0 || is_exhausted())
        return 0;
    hive_type type; // NOLINT(cppcoreguidelines-init-variables): written by libhivex, never read
    size_t length = 0;
    const text data(hivex_value_value(m_handle.get(), value, &type, &length));
    if (data == nullptr) {
        const bool was_collected = list_length > 0 && declared_length <= longest_data;
        spend(refusal_cost() +
              (was_collected ? declared_length / walk_limits::refused_bytes_per_byte : 0));
        return 0;
    }
    spend(static_cast<qint64>(length));
    return static_cast<qint64>(length);
}

bool checked_hive::holds(size_t record, qint64 length) const
{
    return static_cast<qint64>(record) + length <= m_length;
}

/// A 16-bit number; 0 where the file ends before.
qint64 checked_hive::number_at(qint64 offset)
{
    const QByteArray bytes = bytes_at(offset, 2);
    return bytes.size() < 2 ? 0 : qFromLittleEndian<quint16>(bytes.constData());
}

/// Fewer bytes, or none, where the file ends before.
QByteArray checked_hive::bytes_at(qint64 offset, qint64 length)
{
    return m_file.seek(offset) ? m_file.read(length) : QByteArray();
}

/// Length of the list of blocks that libhivex reads for the data in a cell: 0 when they are no big
/// data, negative when the record or the list leaves the file, which libhivex does not check.
qint64 checked_hive::block_list_length(qint64 cell, qint64 declared_length)
{
    const QByteArray record = bytes_at(cell, big_data_record_length);
    if (record.size() < block_count_offset)
        return -1;
    const auto cell_size = std::abs(qint64(qFromLittleEndian<qint32>(record.constData())));
    if (declared_length <= cell_size - cell_size_length || record.mid(signature_offset, 2) != "db")
        return 0;
    if (record.size() < big_data_record_length)
        return -1;
    const char *const fields = record.constData();
    const qint64 length =
        list_entry_length * qFromLittleEndian<quint16>(fields + block_count_offset);
    const qint64 list = first_bin + qFromLittleEndian<quint32>(fields + block_list_offset);
    return holds(static_cast<size_t>(list + cell_size_length), length) ? length : -1;
}

bool checked_hive::is_index(qint64 list)
{
    return bytes_at(list + signature_offset, 2) == "ri";
}

/// The cells whose offsets stand there, fewer where the file ends before.
QList<qint64> checked_hive::cells_at(qint64 offset, qint64 count)
{
    const QByteArray stored = bytes_at(offset, count * list_entry_length);
    QList<qint64> cells;
    for (qsizetype i = 0; i + list_entry_length <= stored.size(); i += list_entry_length)
        cells.append(first_bin + qFromLittleEndian<quint32>(stored.constData() + i));
    return cells;
}

/// Indexes of indexes, or of more lists than there are keys, let libhivex read thousands of empty
/// lists for a key: they end the walk.
void checked_hive::spend_on_index(hive_node_h key, qsizetype subkey_count)
{
    const QList<qint64> list = cells_at(static_cast<qint64>(key) + subkey_list_offset, 1);
    if (list.isEmpty() || !is_index(list.first()))
        return;
    const qint64 list_count = number_at(list.first() + entry_count_offset);
    const QList<qint64> lists = cells_at(list.first() + entries_offset, list_count);
    const bool is_forged =
        list_count > subkey_count ||
        std::any_of(lists.cbegin(), lists.cend(), [this](qint64 cell) { return is_index(cell); });
    if (is_forged)
        m_left = -1;
    else
        spend(list_count * walk_limits::indexed_list_cost);
}

std::optional<QList<size_t>> checked_hive::list_of(hive_node_h key, list_operation list)
{
    if (is_exhausted() || !holds(key, key_record.length))
        return std::nullopt;
    const std::unique_ptr<size_t, memory_freer> entries(list(m_handle.get(), key));
    if (entries == nullptr) {
        spend_refusals(1);
        return std::nullopt;
    }
    const size_t *const begin = entries.get();
    const size_t *end = begin;
    while (*end != 0)
        ++end;
    spend(list_entry_length * (end - begin));
    return QList<size_t>(begin, end);
}

checked_hive::text checked_hive::name_of(size_t record, const named_record &layout,
                                         name_operation name)
{
    if (is_exhausted() || !holds(record, layout.length))
        return nullptr;
    text found(name(m_handle.get(), record));
    if (found != nullptr)
        spend(layout.length + static_cast<qint64>(std::strlen(found.get())));
    else // by a record that may claim more than the file has
        spend(std::min(layout.length +
                           number_at(static_cast<qint64>(record) + layout.name_length_offset),
                       refusal_cost()));
    return found;
}

/// libhivex does not tell what it read before it refused.
qint64 checked_hive::refusal_cost() const
{
    return m_size / walk_limits::refusals;
}
