#include "hive_cells.h"

#include "regf_format.h"

#include <QtEndian>

using namespace regf;

namespace {

template<typename number>
number number_at(QByteArrayView bytes, qint64 offset)
{
    if (offset > bytes.size() - qsizetype(sizeof(number)))
        return 0;
    return qFromLittleEndian<number>(bytes.data() + offset);
}

} // namespace

hive_cells::hive_cells(QByteArrayView hive)
    : m_hive(hive), m_taken(static_cast<size_t>(hive.size() / cell_head::alignment))
{
}

QByteArrayView hive_cells::take(quint32 stored_offset, qint64 least_size)
{
    const qint64 begin = first_bin + qint64(stored_offset);
    if (stored_offset == no_cell || begin % cell_head::alignment != 0 ||
        begin + cell_head::length > m_hive.size())
        return {};
    const qint64 size = -qint64(static_cast<qint32>(number_32(m_hive, begin)));
    if (size < least_size || size > m_hive.size() - begin)
        return {};
    const auto place = static_cast<size_t>(begin / cell_head::alignment);
    if (m_taken[place])
        return {};
    m_taken[place] = true;
    return m_hive.sliced(begin, size);
}

quint16 hive_cells::number_16(QByteArrayView bytes, qint64 offset)
{
    return number_at<quint16>(bytes, offset);
}

quint32 hive_cells::number_32(QByteArrayView bytes, qint64 offset)
{
    return number_at<quint32>(bytes, offset);
}

quint64 hive_cells::number_64(QByteArrayView bytes, qint64 offset)
{
    return number_at<quint64>(bytes, offset);
}
