#ifndef MARVIN_HASH_H
#define MARVIN_HASH_H

#include <QByteArrayView>

/// The Marvin32 hash, in 64 bits, with the seed of Windows' transaction logs. The number of bytes
/// must be a multiple of 4. The hash finds entries that were not written to their end; whoever
/// forges an entry can make it right.
quint64 marvin_hash(QByteArrayView bytes);

#endif
