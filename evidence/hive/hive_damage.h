#ifndef HIVE_DAMAGE_H
#define HIVE_DAMAGE_H

#include "hive_key.h"

#include <QByteArray>
#include <QList>

namespace evidence {

/// Alters the bytes of a hive field by field; the operations chain. Cells are meant by their file
/// offsets, which key_cells and value_cells give. Whatever is altered, the base block's checksum is
/// right in the end, so that a reader gets as far as the damage. A field that lies outside the
/// bytes, or a cell offset that lies before the first bin, throws std::out_of_range.
class hive_damage
{
public:
    explicit hive_damage(const QByteArray &hive);

    /// Writes a number at any file offset.
    hive_damage &set_16(qint64 offset, quint16 value);
    hive_damage &set_32(qint64 offset, quint32 value);
    hive_damage &set_64(qint64 offset, quint64 value);

    /// Cuts the file off after `size` bytes.
    hive_damage &truncate(qint64 size);

    /// Sets the two sequence numbers of the base block; unequal ones mark a hive as dirty.
    hive_damage &sequence_numbers(quint32 primary, quint32 secondary);

    /// Sets the size of all bins that the base block claims.
    hive_damage &bins_size(quint32 size);

    /// Sets the size of a cell in use, its size field included.
    hive_damage &cell_size(qint64 cell, qint32 size);

    /// Gives a cell in use a smaller size, a multiple of 8, and makes a free cell of the rest, so
    /// that the bin stays without a gap and only the record is cut.
    hive_damage &shrink_cell(qint64 cell, qint32 size);

    /// Sets the two letters with which a cell's record begins.
    hive_damage &signature(qint64 cell, const char *letters);

    /// Sets fields of a key's cell: how many subkeys and values it claims, its name's size in
    /// bytes, its last-write time as a FILETIME of any sign.
    hive_damage &subkey_count(qint64 key, quint32 count);
    hive_damage &value_count(qint64 key, quint32 count);
    hive_damage &key_name_size(qint64 key, quint16 size);
    hive_damage &last_write(qint64 key, qint64 filetime);

    /// Lets a key point at a subkey list or a value list; the count stays.
    hive_damage &subkey_list(qint64 key, qint64 list);
    hive_damage &value_list(qint64 key, qint64 list);

    /// Lets `key` have the very subkeys of `other`: the same list and the same count.
    hive_damage &share_subkeys(qint64 key, qint64 other);

    /// Puts a cell in place of the list's entry number `index`: a key in a list of keys, a list in
    /// an "ri". An ancestor makes a loop.
    hive_damage &list_entry(qint64 list, qint64 index, qint64 cell);

    /// Puts a key in place of every entry of a list of keys.
    hive_damage &list_only(qint64 list, qint64 key);

    /// Sets how many entries a list of keys or lists claims.
    hive_damage &list_count(qint64 list, quint16 count);

    /// Puts a cell in place of entry number `index` of a value list or of big data's block list.
    hive_damage &offset_entry(qint64 list, qint64 index, qint64 cell);

    /// Sets fields of a value's cell; in the data size the highest bit means data in the cell.
    hive_damage &value_name_size(qint64 value, quint16 size);
    hive_damage &value_type(qint64 value, quint32 type);
    hive_damage &data_size(qint64 value, quint32 size);
    hive_damage &data_cell(qint64 value, qint64 cell);

    /// Sets how many blocks the "db" cell of big data claims.
    hive_damage &block_count(qint64 big_data, quint16 count);

    /// Adds a bin whose last cell, of the given bytes behind the size field, ends with the file.
    hive_damage &add_last_cell(const QByteArray &record);

    /// Adds a list as the last cell: of keys ("li") or of lists ("ri").
    hive_damage &add_list(const char *signature, const QList<qint64> &cells);

    /// The file offset of the cell that was added last.
    qint64 last_cell() const { return m_last_cell; }

    /// The damaged hive, its checksum right.
    QByteArray bytes() const;

private:
    hive_damage &set_16_in(qint64 cell, qint64 field, quint16 value);
    hive_damage &set_32_in(qint64 cell, qint64 field, quint32 value);

    QByteArray m_bytes;
    qint64 m_last_cell = 0;
};

} // namespace evidence

#endif
