#ifndef TRANSACTION_LOG_H
#define TRANSACTION_LOG_H

#include <QByteArray>
#include <QList>

namespace evidence {

/// Bytes of the bins, from an offset behind the base block on.
struct logged_page
{
    qint64 offset;
    QByteArray bytes;
};

/// The pieces of `size` bytes in which the bins of `after` differ from those of `before`, or which
/// `before` does not have.
QList<logged_page> pages_that_differ(const QByteArray &before, const QByteArray &after,
                                     qint64 size = 4096);

/// What an entry of a log says; its hashes follow from that.
struct logged_entry
{
    quint32 sequence;
    quint32 bins_size;
    QList<logged_page> pages;
    quint32 flags = 0;
};

/// The bytes of the entry with right hashes.
QByteArray bytes_of_entry(const logged_entry &entry);

/// The entry with fields that were altered, its hashes made right again.
QByteArray with_right_hashes(QByteArray entry);

/// The hive with other sequence numbers and a right checksum: unequal ones tell that it was not
/// closed cleanly.
QByteArray numbered(const QByteArray &hive, quint32 primary, quint32 secondary);

/// The hive with another time at which it was written last, in base block and first bin.
QByteArray written_at(QByteArray hive, quint64 filetime);

/// A log of the format of Windows 8.1 and later.
///
///     new_format_log log(hive, 7);
///     log.change(hive, hive_later).change(hive_later, hive_last);
///     write_file(folder.filePath(u"SOFTWARE"_s), numbered(hive, 8, 7));
///     write_file(folder.filePath(u"SOFTWARE.LOG1"_s), log.bytes());
class new_format_log
{
public:
    /// A log without entries. Its head is the hive's base block, its first entry has the number
    /// `sequence`.
    new_format_log(const QByteArray &hive, quint32 sequence);

    /// Adds an entry with the pages in which `after` differs from `before`.
    new_format_log &change(const QByteArray &before, const QByteArray &after, quint32 flags = 0);

    /// Adds an entry with these pages.
    new_format_log &pages(const QList<logged_page> &pages, quint32 bins_size);

    /// Adds any bytes, such as an entry of an earlier round.
    new_format_log &append(const QByteArray &bytes);

    /// The number of the next entry.
    quint32 next_sequence() const { return m_next; }

    QByteArray bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
    quint32 m_next;
};

/// A log of the format of Windows before 8.1, with the sectors in which `after` differs from
/// `before`. Its head is the base block of `after`.
QByteArray old_format_log(const QByteArray &before, const QByteArray &after);

/// The same with any pages of 512 bytes, for bins of this size.
QByteArray old_format_log(const QByteArray &hive, const QList<logged_page> &pages,
                          quint32 bins_size);

} // namespace evidence

#endif
