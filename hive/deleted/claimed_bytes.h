#ifndef CLAIMED_BYTES_H
#define CLAIMED_BYTES_H

#include <QtGlobal>

#include <vector>

/// Parts of a file that deleted records say are theirs. At most one of two records that claim the
/// same byte is right.
class claimed_bytes
{
public:
    /// A part from `begin` up to `end`, and what the claimant calls it.
    struct claim
    {
        qint64 begin = 0;
        qint64 end = 0;
        quint32 number = 0;
    };

    /// Enters claims. Returns the numbers of those that share a byte with another one of them or
    /// with one that was entered before; these are not kept.
    std::vector<quint32> enter(std::vector<claim> claims);

private:
    std::vector<claim> m_kept; ///< in their order; none touches another one
};

#endif
