#ifndef HIVE_CELLS_H
#define HIVE_CELLS_H

#include <QByteArrayView>

#include <vector>

/// The cells of a hive file that is in memory. Each is given out once.
class hive_cells
{
public:
    explicit hive_cells(QByteArrayView hive);

    /// The cell that a stored offset designates, its size field included; empty when it does not
    /// lie within the file, has fewer than `least_size` bytes or was given out before.
    QByteArrayView take(quint32 stored_offset, qint64 least_size);

    /// The number that stands at `offset` of the bytes; 0 where they end before.
    static quint16 number_16(QByteArrayView bytes, qint64 offset);
    static quint32 number_32(QByteArrayView bytes, qint64 offset);
    static quint64 number_64(QByteArrayView bytes, qint64 offset);

private:
    QByteArrayView m_hive;
    std::vector<bool> m_taken; ///< one for each place at which a cell may begin
};

#endif
