#ifndef GUARDED_MEMORY_H
#define GUARDED_MEMORY_H

#include <cstddef>

namespace test_support {

/// From now on, memory of exactly `size` bytes, a multiple of 16 or as long as a hive, is allocated
/// so that it ends where nothing is mapped, and begins there too if it fills whole pages: a read or
/// write beyond it, by whichever library, ends the process. 0 ends this. Does nothing where the C
/// library is not glibc.
///
/// Linked as an object of its own: it replaces malloc() and free() of the whole program, and must
/// not be linked with a sanitizer that does the same.
void guard_memory_of_size(std::size_t size);

/// How many allocations have been guarded so far.
std::size_t guarded_allocations();

} // namespace test_support

#endif
