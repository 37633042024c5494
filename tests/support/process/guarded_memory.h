#ifndef GUARDED_MEMORY_H
#define GUARDED_MEMORY_H

#include <cstddef>

namespace test_support {

/// From now on, memory of exactly `size` bytes is allocated so that it ends where nothing is
/// mapped, and begins there too if it fills whole pages. A read or write beyond it, by whichever
/// library, ends the process. `size` is a multiple of 16 or the length of a hive; 0 ends this. Does
/// nothing where the C library is not glibc.
///
/// Linked as an object of its own: it replaces malloc() and free() of the whole program, and must
/// not be linked with a sanitizer that does the same.
void guard_memory_of_size(std::size_t size);

/// How many allocations have been guarded so far.
std::size_t guarded_allocations();

} // namespace test_support

#endif
