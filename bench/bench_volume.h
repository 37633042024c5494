#ifndef BENCH_VOLUME_H
#define BENCH_VOLUME_H

#include "volume_sizes.h"

/// Writes a Windows volume of the given sizes, with the one account "ann", into a new or empty
/// folder; throws std::runtime_error when that fails. The hives are the same bytes every time.
void write_bench_volume(const QString &folder, const volume_sizes &sizes);

#endif
