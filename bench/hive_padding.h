#ifndef HIVE_PADDING_H
#define HIVE_PADDING_H

#include "hive_builder.h"

/// Adds keys and values that no walk looks for below the key at `path`, until the hive is about as
/// long as wanted. A longer hive stays as it is.
void pad_hive(evidence::hive_builder &hive, const QString &path, int megabytes);

#endif
