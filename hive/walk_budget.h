#ifndef WALK_BUDGET_H
#define WALK_BUDGET_H

#include <QtGlobal>

#include <vector>

/// Bounds how much of its hive one walk may read again. Each byte of an intact hive belongs to one
/// cell, and each cell to one owner, so a walk reads each byte once. Only a forged hive, whose
/// cells are shared or listed in loops, can make a walk read for hours. The first reading of a byte
/// does not count; every further one does. The walk ends when these come to a few lengths of the
/// hive.
class walk_budget
{
public:
    /// How many times the hive's length may be read again, and the least that may.
    static constexpr qint64 hive_lengths = 4;
    static constexpr qint64 least_allowance = qint64(64) << 20;
    /// Bytes are counted in units of this size, to which cells are aligned.
    static constexpr qint64 unit = 8;

    /// Starts a walk over a hive of `hive_length` bytes, of which nothing has been read.
    void start(qint64 hive_length);

    /// Notes that `length` bytes from `offset` on are about to be read. False, from then on for
    /// every reading, once too much has been read again.
    bool read(qint64 offset, qint64 length);

    /// Whether the walk has ended. An ended walk reads nothing more.
    bool is_spent() const { return m_left < 0; }

    /// Bytes that were read again.
    qint64 read_again() const { return m_read_again; }

private:
    std::vector<quint64> m_units_read; ///< a bit for each unit of the file
    qint64 m_left = 0;
    qint64 m_read_again = 0;
};

#endif
