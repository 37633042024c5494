#include "allocator_settings.h"

#include <cstdlib>

#ifdef __GLIBC__
#include <limits>
#include <malloc.h>
#endif

namespace {

/// glibc makes a mapping of its own of every larger block and removes it when the block is freed;
/// for a hive the page faults then cost more than reading the file.
[[maybe_unused]] constexpr std::int64_t largest_kept_block = std::int64_t(32) << 20;

} // namespace

void keep_hive_memory_mapped([[maybe_unused]] std::int64_t largest_hive)
{
#ifdef __GLIBC__
    if (largest_hive <= largest_kept_block)
        return;
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    // glibc takes small blocks from the smallest free block that has room. A free block a little
    // smaller than the hive gets all of them, so that none lands in the gap that the closed hive
    // leaves, and the hive fits there again. Pages of it that are never used take no memory.
    const auto room_for_small_blocks = static_cast<size_t>(largest_hive - (largest_hive >> 4));
    void *volatile room = std::malloc(room_for_small_blocks); // volatile: must really be made
    // This block stays, so that the room is not joined with what follows. It is too large to lie
    // before the room.
    static void *volatile const fence = std::malloc(size_t(4) << 20);
    std::free(room);
    static_cast<void>(fence);
#endif
}
