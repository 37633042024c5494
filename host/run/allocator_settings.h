#ifndef ALLOCATOR_SETTINGS_H
#define ALLOCATOR_SETTINGS_H

#include <cstdint>

/// Lets the process keep the memory in which libhivex holds a hive, so that opening it for the
/// next tab takes no new pages. Call it once, before the first hive is opened, with the size in
/// bytes of the largest hive. It does nothing for sizes that the C library keeps anyway, and with
/// other C libraries than glibc.
void keep_hive_memory_mapped(std::int64_t largest_hive);

#endif
