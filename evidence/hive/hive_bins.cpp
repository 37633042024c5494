#include "hive_bins.h"

#include "byte_fields.h"
#include "regf_format.h"

namespace evidence {

using namespace regf;

hive_bins::hive_bins() : m_bytes(first_bin, '\0'), m_bin_end(first_bin) {}

qint64 hive_bins::add(const QByteArray &cell)
{
    const QByteArray used = used_cell(cell);
    if (m_bytes.size() + used.size() > m_bin_end)
        open_bin(used.size());
    const qint64 offset = m_bytes.size();
    m_bytes += used;
    return offset;
}

void hive_bins::open_bin(qint64 cell_size)
{
    close_bin();
    const qint64 size = rounded_up(hbin::cells + cell_size, page_size);
    m_bin_end = m_bytes.size() + size;
    m_bytes += bin_head(m_bytes.size(), size);
}

void hive_bins::close_bin()
{
    m_bytes += free_cell(m_bin_end - m_bytes.size());
}

qint64 rounded_up(qint64 size, qint64 unit)
{
    return (size + unit - 1) / unit * unit;
}

QByteArray bin_head(qint64 file_offset, qint64 size)
{
    QByteArray head(hbin::cells, '\0');
    head.replace(0, 4, "hbin");
    put_32(head, hbin::offset, static_cast<quint32>(file_offset - first_bin));
    put_32(head, hbin::size, static_cast<quint32>(size));
    return head;
}

QByteArray used_cell(QByteArray cell)
{
    const qint64 size = rounded_up(cell.size(), cell_head::alignment);
    cell.resize(size, '\0');
    put_32(cell, cell_head::size, static_cast<quint32>(-size));
    return cell;
}

QByteArray free_cell(qint64 size)
{
    QByteArray cell(size, '\0');
    if (size > 0)
        put_32(cell, cell_head::size, static_cast<quint32>(size));
    return cell;
}

quint32 stored_offset(qint64 file_offset)
{
    return file_offset == 0 ? no_cell : static_cast<quint32>(file_offset - first_bin);
}

} // namespace evidence
