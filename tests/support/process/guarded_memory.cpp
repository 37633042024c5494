#include "guarded_memory.h"

#include <cstdlib>

#ifdef __GLIBC__

#include <array>
#include <sys/mman.h>
#include <unistd.h>

// NOLINTBEGIN(bugprone-reserved-identifier, readability-identifier-naming): glibc's own names
extern "C" void *__libc_malloc(std::size_t size);
extern "C" void __libc_free(void *memory);
// NOLINTEND(bugprone-reserved-identifier, readability-identifier-naming)

namespace {

struct guarded_block
{
    char *mapping = nullptr; ///< with a page that is not mapped on either side
    std::size_t mapping_size = 0;
    void *memory = nullptr;
};

std::size_t guarded_size = 0;
std::size_t allocations = 0;
std::array<guarded_block, 8> blocks;

/// libhivex reads numbers of 32 bits from its buffer, so that it begins at a multiple of their
/// size.
std::size_t aligned(std::size_t size)
{
    constexpr std::size_t alignment = 4;
    return (size + alignment - 1) / alignment * alignment;
}

guarded_block *block_of(const void *memory)
{
    for (guarded_block &block : blocks) {
        if (block.memory == memory)
            return &block;
    }
    return nullptr;
}

/// Null when there are too many blocks already, or no memory.
void *guarded_allocation(std::size_t size)
{
    guarded_block *const block = block_of(nullptr);
    if (block == nullptr)
        return nullptr;
    const auto page_size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t used = (size + page_size - 1) / page_size * page_size;
    const std::size_t mapped = used + 2 * page_size;
    void *const mapping = mmap(nullptr, mapped, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED)
        return nullptr;
    char *const begin = static_cast<char *>(mapping);
    if (mprotect(begin + page_size, used, PROT_READ | PROT_WRITE) != 0) {
        munmap(mapping, mapped);
        return nullptr;
    }
    *block = {begin, mapped, begin + page_size + used - aligned(size)};
    ++allocations;
    return block->memory;
}

} // namespace

extern "C" __attribute__((visibility("default"))) void *malloc(std::size_t size)
{
    void *const guarded = size != 0 && size == guarded_size ? guarded_allocation(size) : nullptr;
    return guarded != nullptr ? guarded : __libc_malloc(size);
}

extern "C" __attribute__((visibility("default"))) void free(void *memory)
{
    guarded_block *const block = memory == nullptr ? nullptr : block_of(memory);
    if (block == nullptr) {
        __libc_free(memory);
        return;
    }
    munmap(block->mapping, block->mapping_size);
    *block = {};
}

namespace test_support {

void guard_memory_of_size(std::size_t size)
{
    // Only a hive is so long: memory of other sizes may have to be aligned.
    constexpr std::size_t shortest_hive = 8192;
    guarded_size = size % 16 == 0 || size >= shortest_hive ? size : 0;
}

std::size_t guarded_allocations()
{
    return allocations;
}

} // namespace test_support

#else

namespace test_support {

void guard_memory_of_size(std::size_t /*size*/) {}

std::size_t guarded_allocations()
{
    return 0;
}

} // namespace test_support

#endif
