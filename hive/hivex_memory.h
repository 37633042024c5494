#ifndef HIVEX_MEMORY_H
#define HIVEX_MEMORY_H

#include <cstddef>
#include <cstdlib>
#include <memory>

/// Frees what libhivex hands out in malloc'ed memory.
struct malloc_deleter
{
    void operator()(void *memory) const { std::free(memory); }
};

using hivex_text = std::unique_ptr<char, malloc_deleter>;
/// Zero-terminated array of node handles or of value handles.
using hivex_handles = std::unique_ptr<std::size_t, malloc_deleter>;

#endif
