#ifndef VALUE_OWNERS_H
#define VALUE_OWNERS_H

#include "free_space.h"

#include <QByteArrayView>

#include <vector>

/// A value, by its place (see free_region), and the number of its key.
struct value_owner
{
    quint32 value = 0;
    quint32 key = 0;
};

/// Finds the keys of deleted values that no list of a deleted key names. Lists of values grow by
/// moving, so that free space has older lists of keys that live: offsets of values in a row, some
/// of which still belong to the key. `orphans` and `living` are sorted by the value. Only values in
/// a row with values of one single key are assigned, and only if all rows agree.
std::vector<value_owner> owners_by_old_lists(QByteArrayView hive, const free_space &space,
                                             const std::vector<quint32> &orphans,
                                             const std::vector<value_owner> &living);

#endif
