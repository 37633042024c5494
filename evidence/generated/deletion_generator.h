#ifndef DELETION_GENERATOR_H
#define DELETION_GENERATOR_H

#include "byte_choices.h"

#include <QByteArray>

namespace evidence {

/// Makes a hive with keys below `Uninstall` and `Assist` from a byte string, deletes some of its
/// keys and values, takes some of the free cells for new ones, and then alters some fields
/// anywhere. The checksum is right. A used-up string makes a hive from which nothing was deleted.
QByteArray generate_deletions(byte_choices &choices);

} // namespace evidence

#endif
