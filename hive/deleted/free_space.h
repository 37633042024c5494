#ifndef FREE_SPACE_H
#define FREE_SPACE_H

#include "cancel_test.h"

#include <QByteArrayView>

#include <vector>

/// Bytes of a hive file that no cell in use has, from their first place to the place behind them.
/// Places count the units of 8 bytes at which cells may begin, from the beginning of the file.
struct free_region
{
    quint32 begin = 0;
    quint32 end = 0;
};

/// Where a hive file has cells in use and where it has none: free cells, and what lies behind the
/// last bin. What belongs to no sound bin or cell is neither.
class free_space
{
public:
    /// Looks through the hive file with these bytes.
    free_space(QByteArrayView hive, const cancel_test &cancelled);

    /// Those in the bins and behind them, in their order; none touches the next one in its bin.
    const std::vector<free_region> &regions() const { return m_regions; }

    /// The places of the cells in use that begin as a key does, in their order.
    const std::vector<quint32> &used_keys() const { return m_used_keys; }

    /// The end of the region that the file's byte lies in, as an offset; 0 if it lies in none.
    qint64 end_of_region_at(qint64 offset) const;

    qint64 free_bytes() const { return m_free_bytes; }
    qint64 bytes_behind_bins() const { return m_bytes_behind_bins; }

private:
    qint64 bin_at(qint64 offset, qint64 end) const;
    void add_bin(qint64 begin, qint64 end);
    void add_region(qint64 begin, qint64 end);

    QByteArrayView m_hive;
    std::vector<free_region> m_regions;
    std::vector<quint32> m_used_keys;
    qint64 m_free_bytes = 0;
    qint64 m_bytes_behind_bins = 0;
};

#endif
