#ifndef HIVE_BINS_H
#define HIVE_BINS_H

#include <QByteArray>

namespace evidence {

/// The file image of a hive while cells are added: a base block's place and the bins behind it.
class hive_bins
{
public:
    hive_bins();

    /// Puts a cell into the bins and returns its offset in the file. `cell` holds the whole cell,
    /// its four size bytes (which are filled here) included.
    qint64 add(const QByteArray &cell);

    /// The image, for fields that are known only after their cell was added.
    QByteArray &bytes() { return m_bytes; }

    /// Ends the last bin; nothing may be added after it.
    void close_bin();

private:
    void open_bin(qint64 cell_size);

    QByteArray m_bytes;
    qint64 m_bin_end;
};

/// The least multiple of `unit` that is not below `size`.
qint64 rounded_up(qint64 size, qint64 unit);

/// The first bytes of a bin of `size` bytes at `file_offset`.
QByteArray bin_head(qint64 file_offset, qint64 size);

/// A cell in use: the given one, its size filled in, brought to a size that a cell may have.
QByteArray used_cell(QByteArray cell);

/// A free cell of the given size; nothing for 0.
QByteArray free_cell(qint64 size);

/// The value that stands in a hive for the cell at `file_offset`; 0 stands for no cell.
quint32 stored_offset(qint64 file_offset);

} // namespace evidence

#endif
