#include "checked_hive.h"

#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <cstring>

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

/// How many times its own length an intact hive never comes to, whatever is listed.
constexpr qint64 hive_lengths_in_a_walk = 4;
/// How many refused lists use a walk up.
constexpr qint64 refusals_in_a_walk = 4096;

} // namespace

// Writable in memory only: libhivex then reads the file instead of mapping it, so that a bad sector
// of the evidence is an error and not a SIGBUS.
checked_hive::checked_hive(const QString &hive_file)
    : m_file(hive_file),
      m_handle(hivex_open(QFile::encodeName(hive_file).constData(), HIVEX_OPEN_WRITE)),
      m_length(QFileInfo(hive_file).size())
{
    m_file.open(QIODevice::ReadOnly);
    begin_walk();
}

void checked_hive::begin_walk()
{
    m_left = hive_lengths_in_a_walk * m_length;
}

std::optional<QList<hive_node_h>> checked_hive::subkeys(hive_node_h key)
{
    auto found = list_of(key, hivex_node_children);
    if (found && !found->isEmpty() && has_forged_index(key, found->size()))
        m_left = -1;
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

bool checked_hive::is_index(qint64 list)
{
    return bytes_at(list + signature_offset, 2) == "ri";
}

/// Indexes of indexes, or of more lists than there are keys, let libhivex read thousands of empty
/// lists for a key.
bool checked_hive::has_forged_index(hive_node_h key, qsizetype subkey_count)
{
    const auto cells_at = [this](qint64 offset, qint64 count) {
        const QByteArray stored = bytes_at(offset, count * list_entry_length);
        QList<qint64> cells;
        for (qsizetype i = 0; i + list_entry_length <= stored.size(); i += list_entry_length)
            cells.append(first_bin + qFromLittleEndian<quint32>(stored.constData() + i));
        return cells;
    };
    const QList<qint64> list = cells_at(static_cast<qint64>(key) + subkey_list_offset, 1);
    if (list.isEmpty() || !is_index(list.first()))
        return false;
    const qint64 list_count = number_at(list.first() + entry_count_offset);
    const QList<qint64> lists = cells_at(list.first() + entries_offset, list_count);
    return list_count > subkey_count || std::any_of(lists.cbegin(), lists.cend(),
                                                    [this](qint64 cell) { return is_index(cell); });
}

std::optional<QList<size_t>> checked_hive::list_of(hive_node_h key, list_operation list)
{
    if (is_exhausted() || !holds(key, key_record.length))
        return std::nullopt;
    const std::unique_ptr<size_t, memory_freer> entries(list(m_handle.get(), key));
    if (entries == nullptr) {
        m_left -= refusal_cost();
        return std::nullopt;
    }
    const size_t *const begin = entries.get();
    const size_t *end = begin;
    while (*end != 0)
        ++end;
    m_left -= list_entry_length * (end - begin);
    return QList<size_t>(begin, end);
}

checked_hive::text checked_hive::name_of(size_t record, const named_record &layout,
                                         name_operation name)
{
    if (is_exhausted() || !holds(record, layout.length))
        return nullptr;
    text found(name(m_handle.get(), record));
    if (found != nullptr)
        m_left -= layout.length + static_cast<qint64>(std::strlen(found.get()));
    else // by a record that may claim more than the file has
        m_left -= std::min(layout.length +
                               number_at(static_cast<qint64>(record) + layout.name_length_offset),
                           refusal_cost());
    return found;
}

/// libhivex does not tell what it read before it refused.
qint64 checked_hive::refusal_cost() const
{
    return hive_lengths_in_a_walk * m_length / refusals_in_a_walk;
}
