#include "hive_file.h"

#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <unistd.h>
#include <utility>

namespace {

/// Cells are designated by 32-bit offsets.
constexpr qint64 longest_hive = qint64(1) << 32;

/// Offsets that are stored in a hive count from here, where its first bin begins.
constexpr qint64 first_bin = 0x1000;

/// A cell begins with its size in bytes, negative while the cell is in use; records begin with two
/// letters that tell their kind.
constexpr qint64 cell_size_length = 4;
constexpr qint64 signature_offset = 0x04;
constexpr qint64 signature_length = 2;

/// Key node (nk): offset of the list of its subkeys.
constexpr qint64 subkey_list_offset = 0x20;

/// Index of lists (ri): number of lists at 0x06, their offsets from 0x08 on.
constexpr qint64 list_count_offset = 0x06;
constexpr qint64 list_entries_offset = 0x08;
constexpr int deepest_index = 32; ///< libhivex refuses deeper ones

/// Big-data record (db): number of blocks at 0x06, offset of their list at 0x08.
constexpr qsizetype block_count_offset = 0x06;
constexpr qsizetype block_list_offset = 0x08;
constexpr qint64 big_data_record_length = 0x0c;

/// Length of a list entry: the offset of a list, or of a block of big data.
constexpr qint64 entry_length = 4;

/// The cells of one key's values lie close together, mostly in the order of its list: one read
/// around what is needed serves the cells of an application. Keys themselves lie in any order, so
/// that more would be copied for nothing.
constexpr qint64 bytes_before = 0x100;
constexpr qint64 bytes_behind = 0x600;

/// Where in the file the cell begins whose stored offset is given.
qint64 cell_at(const char *stored_offset)
{
    return first_bin + qint64(qFromLittleEndian<quint32>(stored_offset));
}

/// Returns how many bytes were read: fewer where the file ends, or cannot be read on.
qint64 read_at(int file, char *destination, qint64 length, qint64 offset)
{
    qint64 done = 0;
    while (done < length) {
        const ssize_t part =
            pread(file, destination + done, static_cast<size_t>(length - done), offset + done);
        if (part == 0 || (part < 0 && errno != EINTR))
            break;
        done += std::max(part, ssize_t(0));
    }
    return done;
}

} // namespace

bool hive_file::open(const QString &path)
{
    const QFileInfo info(path);
    if (!info.isFile() || info.size() > longest_hive)
        return false;
    m_length = info.size();
    m_file.setFileName(path);
    m_window.clear();
    return m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

void hive_file::close()
{
    m_file.close();
}

bool hive_file::holds(quint64 offset, qint64 length) const
{
    return !is_open() || static_cast<qint64>(offset) + length <= m_length;
}

qint64 hive_file::name_length(quint64 offset, const named_record &record)
{
    constexpr qint64 number_length = 2;
    if (!is_open())
        return 0;
    const QByteArrayView number =
        bytes_at(static_cast<qint64>(offset) + record.name_length_offset, number_length);
    return number.size() < number_length ? 0 : qFromLittleEndian<quint16>(number.data());
}

qint64 hive_file::block_list_length(quint64 offset, qint64 declared_length)
{
    if (offset == 0 || !is_open())
        return 0;
    const QByteArrayView record = bytes_at(static_cast<qint64>(offset), big_data_record_length);
    if (record.size() < block_count_offset)
        return -1;
    const auto cell_size = std::abs(qint64(qFromLittleEndian<qint32>(record.data())));
    if (declared_length <= cell_size - cell_size_length ||
        record.sliced(signature_offset, signature_length) != "db")
        return 0;
    if (record.size() < big_data_record_length)
        return -1;
    const qint64 blocks = qFromLittleEndian<quint16>(record.data() + block_count_offset);
    const qint64 list = cell_at(record.data() + block_list_offset);
    const qint64 list_length = blocks * entry_length;
    return holds(static_cast<quint64>(list + cell_size_length), list_length) ? list_length : -1;
}

qint64 hive_file::indexed_lists(quint64 node, qint64 most)
{
    if (!is_open())
        return 0;
    QList<qint64> level = cells_listed_at(static_cast<qint64>(node) + subkey_list_offset, 1);
    qint64 lists = 0;
    for (int depth = 0; depth <= deepest_index && !level.isEmpty() && lists < most; ++depth) {
        QList<qint64> next_level;
        for (const qint64 list : std::as_const(level))
            next_level += lists_below(list, most - lists - next_level.size());
        lists += next_level.size();
        level = next_level;
    }
    return lists;
}

/// At most `most` of the lists that an index lists; none below a list of keys.
QList<qint64> hive_file::lists_below(qint64 list, qint64 most)
{
    const QByteArrayView head = bytes_at(list, list_entries_offset);
    if (head.size() < list_entries_offset ||
        head.sliced(signature_offset, signature_length) != "ri")
        return {};
    const qint64 entries = qFromLittleEndian<quint16>(head.data() + list_count_offset);
    return cells_listed_at(list + list_entries_offset, std::min(entries, most));
}

/// The cells whose offsets stand there, fewer where the file ends before.
QList<qint64> hive_file::cells_listed_at(qint64 offset, qint64 count)
{
    const QByteArrayView entries = bytes_at(offset, count * entry_length);
    QList<qint64> cells;
    for (qsizetype i = 0; i + entry_length <= entries.size(); i += entry_length)
        cells.append(cell_at(entries.data() + i));
    return cells;
}

/// Fewer than `length` bytes, or none, where the file ends before.
QByteArrayView hive_file::bytes_at(qint64 offset, qint64 length)
{
    if (offset < m_window_offset || offset + length > m_window_offset + m_window.size())
        read_window(offset, length);
    const qint64 begin = std::min(offset - m_window_offset, qint64(m_window.size()));
    return QByteArrayView(m_window).sliced(begin).first(
        std::min(length, qint64(m_window.size()) - begin));
}

void hive_file::read_window(qint64 offset, qint64 length)
{
    m_window_offset = std::max(offset - bytes_before, qint64(0));
    m_window.resize(offset - m_window_offset + length + bytes_behind);
    m_window.truncate(read_at(m_file.handle(), m_window.data(), m_window.size(), m_window_offset));
}
