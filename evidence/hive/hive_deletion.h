#ifndef HIVE_DELETION_H
#define HIVE_DELETION_H

#include <QByteArray>
#include <QList>

namespace evidence {

/// Deletes keys and values from the bytes of an intact hive as Windows does: cells become free,
/// free neighbours in a bin become one cell, and what the cells hold stays. Cells are meant by
/// their file offsets, which key_cells and value_cells give. The operations chain.
///
///     hive_deletion deletion(hive.bytes());
///     deletion.key(hive_builder::offset_of(editor), filetime_of_unix(1700000000));
///     write_file(folder.filePath(u"SOFTWARE"_s), deletion.bytes());
class hive_deletion
{
public:
    explicit hive_deletion(const QByteArray &hive) : m_bytes(hive) {}

    /// Deletes the key with all below it. Its parent gets the time as its last write, as those
    /// below it do, of which the subkeys go first.
    hive_deletion &key(qint64 key, qint64 filetime);

    /// Deletes a value from the key's list; the key gets the time as its last write.
    hive_deletion &value(qint64 key, qint64 value, qint64 filetime);

    /// Makes a cell free.
    hive_deletion &cell(qint64 cell);

    /// Takes the first bytes of a free cell for a new cell in use with these bytes behind its size.
    /// The rest stays free, as it is.
    hive_deletion &use(qint64 free_cell, const QByteArray &record);

    QByteArray bytes() const { return m_bytes; }

private:
    quint32 number_at(qint64 offset) const;
    qint64 cell_named_at(qint64 offset) const;
    qint32 size_of(qint64 cell) const;
    qint64 bin_of(qint64 cell) const;
    QList<qint64> lists_of(qint64 key) const;
    QList<qint64> subkeys_of(qint64 key) const;
    void free_values(qint64 key);
    void free_value(qint64 value);
    void free_lists(qint64 key);
    void unlist_key(qint64 key);
    bool take_from(qint64 list, qint64 key);

    QByteArray m_bytes;
};

/// The hive with one bin more, which is a free cell with these bytes in it: cells, one behind the
/// other, of which the first one's size becomes that of the free cell.
QByteArray with_free_bin(const QByteArray &hive, const QByteArray &cells);

} // namespace evidence

#endif
