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
    // A block is cut from the smallest free one that has room. One that is a little too small for
    // the hive keeps all small blocks out of the gap that the closed hive leaves, so that the hive
    // fits there again. Pages of it that are never used cost nothing.
    const auto room_for_small_blocks = static_cast<size_t>(largest_hive - (largest_hive >> 4));
    void *volatile room = std::malloc(room_for_small_blocks); // volatile: must really be made
    // Stays, so that the room does not become part of what follows; too large to lie before it.
    static void *volatile const fence = std::malloc(size_t(4) << 20);
    std::free(room);
    static_cast<void>(fence);
#endif
}
