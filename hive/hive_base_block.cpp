#include "hive_base_block.h"

#include "regf_format.h"

#include <QtEndian>

using namespace regf;

bool hive_base_block::is_whole() const
{
    return m_bytes.size() >= base_block::size;
}

bool hive_base_block::has_fields() const
{
    return m_bytes.size() >= base_block::fields;
}

bool hive_base_block::is_of_a_hive() const
{
    return m_bytes.startsWith("regf");
}

bool hive_base_block::is_checksum_right() const
{
    return checksum_of(m_bytes) == field_at(base_block::checksum);
}

/// The XOR of the words before the checksum; Windows never stores 0 or -1.
quint32 hive_base_block::checksum_of(const QByteArray &bytes)
{
    const hive_base_block block(bytes);
    quint32 sum = 0;
    for (qint64 offset = 0; offset < base_block::checksum; offset += qint64(sizeof(quint32)))
        sum ^= block.field_at(offset);
    if (sum == 0)
        sum = 1;
    if (sum == 0xffffffff)
        sum = 0xfffffffe;
    return sum;
}

quint32 hive_base_block::primary_sequence() const
{
    return field_at(base_block::primary_sequence);
}

quint32 hive_base_block::secondary_sequence() const
{
    return field_at(base_block::secondary_sequence);
}

quint64 hive_base_block::last_written() const
{
    return qFromLittleEndian<quint64>(m_bytes.constData() + base_block::last_write);
}

quint32 hive_base_block::file_type() const
{
    return field_at(base_block::file_type);
}

quint32 hive_base_block::bins_size() const
{
    return field_at(base_block::bins_size);
}

quint32 hive_base_block::flags() const
{
    return field_at(base_block::flags);
}

qint64 hive_base_block::told_length() const
{
    return base_block::size + qint64(bins_size());
}

bool hive_base_block::ends_within_a_bin_head(qint64 length) const
{
    // libhivex reads up to the end of the bin's size. Bins begin at pages.
    constexpr qint64 head_length = hbin::size + qint64(sizeof(quint32));
    const qint64 behind_last_page = length % page_size;
    return behind_last_page > 0 && behind_last_page < head_length &&
           told_length() > length - behind_last_page;
}

quint32 hive_base_block::field_at(qint64 offset) const
{
    return qFromLittleEndian<quint32>(m_bytes.constData() + offset);
}
