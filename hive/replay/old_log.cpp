#include "old_log.h"

#include "log_format.h"

#include <QtAlgorithms>
#include <QtEndian>

#include <algorithm>

using namespace regf;

namespace {

constexpr qint64 in_whole_sectors(qint64 size)
{
    return (size + sector_size - 1) / sector_size * sector_size;
}

qint64 bits_in(QByteArrayView bitmap)
{
    qint64 bits = 0;
    for (const char byte : bitmap)
        bits += qPopulationCount(static_cast<quint8>(byte));
    return bits;
}

bool is_set(QByteArrayView bitmap, qint64 bit)
{
    return (static_cast<quint8>(bitmap[bit / 8]) >> (bit % 8) & 1) != 0;
}

/// The sectors of the bins that the bitmap names.
std::vector<page_reference> pages_of(QByteArrayView bitmap, qint64 count)
{
    std::vector<page_reference> pages;
    pages.reserve(static_cast<size_t>(count));
    for (qint64 bit = 0; bit < bitmap.size() * 8; ++bit) {
        if (is_set(bitmap, bit))
            pages.push_back({static_cast<quint32>(bit * sector_size), quint32(sector_size)});
    }
    return pages;
}

} // namespace

old_log pages_of_old_log(QByteArrayView log)
{
    old_log read;
    const auto flawed = [](log_flaw flaw) { return old_log{flaw, {}}; };
    if (!log.sliced(std::min(qsizetype(dirty_bitmap::signature), log.size())).startsWith("DIRT"))
        return flawed(log_flaw::no_entry);
    read.batch.bins_size = qFromLittleEndian<quint32>(log.data() + base_block::bins_size);
    const qint64 bins_size = read.batch.bins_size;
    if (bins_size == 0 || bins_size > most_bins_size || bins_size % page_size != 0)
        return flawed(log_flaw::bins_size);
    const qint64 bitmap_size = bins_size / sector_size / 8;
    const qint64 begin = in_whole_sectors(dirty_bitmap::bits + bitmap_size);
    if (begin > log.size())
        return flawed(log_flaw::size);
    const QByteArrayView bitmap = log.sliced(dirty_bitmap::bits, bitmap_size);
    const qint64 count = bits_in(bitmap);
    if (count * sector_size > log.size() - begin)
        return flawed(log_flaw::pages);
    read.batch.pages = pages_of(bitmap, count);
    read.batch.content = log.sliced(begin, count * sector_size);
    return read;
}
