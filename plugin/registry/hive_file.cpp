#include "hive_file.h"

#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <cstdlib>

namespace {

/// Cells are designated by 32-bit offsets.
constexpr qint64 longest_hive = qint64(1) << 32;

/// Offsets that are stored in a hive count from here, where its first bin begins.
constexpr quint64 first_bin = 0x1000;

/// A cell begins with its size in bytes, negative while the cell is in use.
constexpr qint64 cell_size_length = 4;

/// Big-data record (db): signature at 0x04, number of blocks at 0x06, offset of their list at 0x08.
constexpr qsizetype signature_offset = 0x04;
constexpr qsizetype block_count_offset = 0x06;
constexpr qsizetype block_list_offset = 0x08;
constexpr qint64 big_data_record_length = 0x0c;

/// The list of blocks: the cell's size, then one offset for each block.
constexpr qint64 block_entry_length = 4;

/// The cells of one key's values lie close together: one read serves many of them.
constexpr qint64 window_length = 0x1000;

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

qint64 hive_file::block_list_length(quint64 offset, qint64 declared_length)
{
    if (offset == 0 || !is_open())
        return 0;
    const QByteArrayView record = bytes_at(static_cast<qint64>(offset), big_data_record_length);
    if (record.size() < block_count_offset)
        return 0;
    const auto cell_size = std::abs(qint64(qFromLittleEndian<qint32>(record.data())));
    if (declared_length <= cell_size - cell_size_length ||
        record.sliced(signature_offset, 2) != "db")
        return 0;
    if (record.size() < big_data_record_length)
        return -1;
    const qint64 blocks = qFromLittleEndian<quint16>(record.data() + block_count_offset);
    const quint64 list = qFromLittleEndian<quint32>(record.data() + block_list_offset);
    const qint64 list_length = blocks * block_entry_length;
    return holds(first_bin + list + cell_size_length, list_length) ? list_length : -1;
}

/// Fewer than `length` bytes, or none, where the file ends before.
QByteArrayView hive_file::bytes_at(qint64 offset, qint64 length)
{
    if (offset < m_window_offset || offset + length > m_window_offset + m_window.size()) {
        m_window_offset = offset - offset % window_length;
        m_window.clear();
        if (m_file.seek(m_window_offset))
            m_window = m_file.read(window_length + length);
    }
    const qint64 begin = std::min(offset - m_window_offset, qint64(m_window.size()));
    return QByteArrayView(m_window).sliced(begin).first(
        std::min(length, qint64(m_window.size()) - begin));
}
