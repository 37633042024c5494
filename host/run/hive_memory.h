#ifndef HIVE_MEMORY_H
#define HIVE_MEMORY_H

#include <cstdint>

/// Has the block in which libhivex will hold the largest hive made of huge pages, where the system
/// has such: reading a hive then takes one page fault for 2 MB instead of one for 4 KB. Call it
/// once, before the first hive is opened, with the size in bytes of the largest hive. It does
/// nothing for short hives, and with other C libraries than glibc.
void prepare_memory_for_hive(std::int64_t largest_hive);

#endif
