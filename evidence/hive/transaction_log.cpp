#include "transaction_log.h"

#include "base_block.h"
#include "byte_fields.h"
#include "log_format.h"
#include "log_hash.h"

namespace evidence {

using namespace regf;

namespace {

QByteArray in_whole_sectors(const QByteArray &bytes)
{
    const qint64 sectors = (bytes.size() + sector_size - 1) / sector_size;
    return bytes.leftJustified(sectors * sector_size, '\0');
}

QByteArray head_of_log(const QByteArray &hive, quint32 file_type)
{
    QByteArray head = hive.first(base_block::fields);
    put_32(head, base_block::file_type, file_type);
    put_checksum(head);
    return head;
}

quint32 bins_size_of(const QByteArray &hive)
{
    return static_cast<quint32>(hive.size() - first_bin);
}

QByteArray with_number(const QByteArray &bytes, quint32 number)
{
    QByteArray field(4, '\0');
    put_32(field, 0, number);
    return bytes + field;
}

/// A bit for each sector of the bins.
QByteArray bitmap_of(const QList<logged_page> &pages, quint32 bins_size)
{
    QByteArray bitmap(bins_size / sector_size / 8, '\0');
    for (const logged_page &page : pages) {
        const qint64 sector = page.offset / sector_size;
        bitmap[sector / 8] = static_cast<char>(bitmap.at(sector / 8) | 1 << (sector % 8));
    }
    return bitmap;
}

} // namespace

QList<logged_page> pages_that_differ(const QByteArray &before, const QByteArray &after, qint64 size)
{
    QList<logged_page> pages;
    for (qint64 offset = first_bin; offset < after.size(); offset += size) {
        const QByteArray bytes = after.mid(offset, size);
        if (before.mid(offset, size) != bytes)
            pages.append({offset - first_bin, bytes});
    }
    return pages;
}

QByteArray bytes_of_entry(const logged_entry &entry)
{
    QByteArray bytes = "HvLE" + QByteArray(log_entry::references - 4, '\0');
    put_32(bytes, log_entry::flags, entry.flags);
    put_32(bytes, log_entry::sequence, entry.sequence);
    put_32(bytes, log_entry::bins_size, entry.bins_size);
    put_32(bytes, log_entry::page_count, static_cast<quint32>(entry.pages.size()));
    for (const logged_page &page : entry.pages) {
        bytes = with_number(bytes, static_cast<quint32>(page.offset));
        bytes = with_number(bytes, static_cast<quint32>(page.bytes.size()));
    }
    for (const logged_page &page : entry.pages)
        bytes += page.bytes;
    bytes = in_whole_sectors(bytes);
    put_32(bytes, log_entry::size, static_cast<quint32>(bytes.size()));
    return with_right_hashes(bytes);
}

QByteArray with_right_hashes(QByteArray entry)
{
    put_64(entry, log_entry::hash_of_content, log_hash(entry.mid(log_entry::references)));
    put_64(entry, log_entry::hash_of_head, log_hash(entry.first(log_entry::hash_of_head)));
    return entry;
}

QByteArray numbered(const QByteArray &hive, quint32 primary, quint32 secondary)
{
    QByteArray bytes = hive;
    put_32(bytes, base_block::primary_sequence, primary);
    put_32(bytes, base_block::secondary_sequence, secondary);
    put_checksum(bytes);
    return bytes;
}

QByteArray written_at(QByteArray hive, quint64 filetime)
{
    put_64(hive, base_block::last_write, filetime);
    put_64(hive, first_bin + hbin::last_write, filetime);
    put_checksum(hive);
    return hive;
}

new_format_log::new_format_log(const QByteArray &hive, quint32 sequence)
    : m_bytes(head_of_log(numbered(hive, sequence, sequence), base_block::type_of_new_log)),
      m_next(sequence)
{
}

new_format_log &new_format_log::change(const QByteArray &before, const QByteArray &after,
                                       quint32 flags)
{
    return append(
        bytes_of_entry({m_next++, bins_size_of(after), pages_that_differ(before, after), flags}));
}

new_format_log &new_format_log::pages(const QList<logged_page> &pages, quint32 bins_size)
{
    return append(bytes_of_entry({m_next++, bins_size, pages}));
}

new_format_log &new_format_log::append(const QByteArray &bytes)
{
    m_bytes += bytes;
    return *this;
}

QByteArray old_format_log(const QByteArray &before, const QByteArray &after)
{
    return old_format_log(after, pages_that_differ(before, after, sector_size),
                          bins_size_of(after));
}

QByteArray old_format_log(const QByteArray &hive, const QList<logged_page> &pages,
                          quint32 bins_size)
{
    QByteArray sized = hive;
    put_32(sized, base_block::bins_size, bins_size);
    QByteArray bytes = head_of_log(sized, base_block::type_of_old_log);
    bytes = in_whole_sectors(bytes + "DIRT" + bitmap_of(pages, bins_size));
    for (const logged_page &page : pages)
        bytes += page.bytes;
    return bytes;
}

} // namespace evidence
