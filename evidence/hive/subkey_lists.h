#ifndef SUBKEY_LISTS_H
#define SUBKEY_LISTS_H

#include "hive_bins.h"
#include "hive_key.h"

#include <QList>

namespace evidence {

/// A subkey as its parent lists it.
struct subkey_entry
{
    qint64 cell; ///< file offset of the "nk" cell
    hive_name name;
};

/// The cells that list a key's subkeys.
struct placed_list
{
    qint64 list = 0;
    QList<qint64> leaves; ///< the lists below an "ri", else empty
};

/// Adds the list of the given subkeys, of which there is at least one, in the given order. What
/// does not fit into one list of the wanted kind becomes several of them below an "ri".
placed_list place_subkey_list(hive_bins &bins, const QList<subkey_entry> &keys, subkey_list kind);

} // namespace evidence

#endif
