#ifndef LIVING_LISTS_H
#define LIVING_LISTS_H

#include "known_keys.h"
#include "value_owners.h"
#include "wanted_keys.h"

#include <QByteArrayView>

#include <vector>

/// A value of a key in use.
struct living_value
{
    quint32 place = 0; ///< see free_region
    quint32 key = 0;   ///< number of its key
};

/// What the lists of values of keys in use name.
struct living_lists
{
    std::vector<living_value> values;
    /// Deleted values that a list has behind its end, sorted. A value that the rests of several
    /// keys' lists name is left out.
    std::vector<value_owner> rest;
};

/// Reads the lists of the keys in use of whose values the wanted keys tell. `deleted` has the
/// places of deleted values.
living_lists read_living_lists(QByteArrayView hive, const known_keys &keys,
                               const wanted_keys &wanted, const std::vector<quint32> &deleted);

#endif
