#include "hive_memory.h"

#include <algorithm>
#include <cstdlib>

#ifdef __GLIBC__
#include <limits>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace {

/// Shorter hives take few page faults.
[[maybe_unused]] constexpr std::int64_t shortest_prepared = std::int64_t(4) << 20;

/// A file may claim any length; no hive that Windows writes is longer.
[[maybe_unused]] constexpr std::int64_t longest_prepared = std::int64_t(2) << 30;

#ifdef __GLIBC__
/// A system without huge pages refuses, and the block is as good as before.
void ask_for_huge_pages([[maybe_unused]] void *block, [[maybe_unused]] std::uintptr_t size)
{
#ifdef MADV_HUGEPAGE
    const auto page_size = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto begin = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t first_page = (begin + page_size - 1) / page_size * page_size;
    const std::uintptr_t last_page = (begin + size) / page_size * page_size;
    if (first_page < last_page)
        madvise(static_cast<char *>(block) + (first_page - begin), last_page - first_page,
                MADV_HUGEPAGE);
#endif
}
#endif

} // namespace

void prepare_memory_for_hive([[maybe_unused]] std::int64_t largest_hive)
{
#ifdef __GLIBC__
    if (largest_hive < shortest_prepared)
        return;
    // glibc makes a mapping of its own of every large block. From now on it takes them from the end
    // of the heap, and keeps what is freed there: the hive gets the pages of the block below.
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    const std::int64_t length = std::min(largest_hive, longest_prepared);
    void *volatile block = std::malloc(static_cast<std::size_t>(length)); // must really be made
    if (block != nullptr)
        ask_for_huge_pages(block, static_cast<std::uintptr_t>(length));
    std::free(block);
#endif
}
