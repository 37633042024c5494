#ifndef BENCH_HIVES_H
#define BENCH_HIVES_H

#include "hive_builder.h"
#include "volume_sizes.h"

/// Fills a SOFTWARE hive: two Uninstall keys, RegisteredApplications, and padding.
void fill_software(evidence::hive_builder &hive, const volume_sizes &sizes);

/// Fills a user's hive: UserAssist, the compatibility store, hidden icons, and padding.
void fill_user(evidence::hive_builder &hive, const volume_sizes &sizes);

/// The Windows path of the program that the compatibility store names at `index`.
QString store_program(int index);

#endif
