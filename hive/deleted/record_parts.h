#ifndef RECORD_PARTS_H
#define RECORD_PARTS_H

#include "free_space.h"
#include "record_places.h"

#include <QByteArrayView>

/// Why a part of a deleted record is not there any more, or cannot be told to be its own.
enum class record_flaw
{
    none,
    in_use,       ///< a cell in use lies where it was
    written_over, ///< another deleted record lies in it
    shared,       ///< two records say that it is theirs
    in_blocks ///< the data are so long that Windows stores them in blocks, which are not followed
};

/// Tells whether lists and data of deleted records are still where they were. What several records
/// claim is not seen here.
class record_parts
{
public:
    record_parts(QByteArrayView hive, const free_space &space, const record_places &places)
        : m_hive(hive), m_space(space), m_places(places)
    {
    }

    /// What is wrong with a list, or with data, of `size` bytes behind the size field of the cell
    /// that begins at the offset `begin`.
    record_flaw flaw_of(qint64 begin, qint64 size) const;

    /// The same of the data of a value whose data are not in its cell.
    record_flaw flaw_of_data(QByteArrayView cell) const;

private:
    bool is_any_record_in(const std::vector<quint32> &places, qint64 begin, qint64 end,
                          qint64 (*length_of)(QByteArrayView)) const;

    QByteArrayView m_hive;
    const free_space &m_space;
    const record_places &m_places;
};

#endif
