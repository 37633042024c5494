#ifndef LOG_FORMAT_H
#define LOG_FORMAT_H

#include "regf_format.h"

// Where the fields of a hive's transaction logs lie. Both formats begin with a copy of the base
// block's fields, which has a file type and a checksum of its own. Offsets of pages count from the
// first bin.
namespace regf {

constexpr qint64 sector_size = 512;

/// Bins are never longer, and logs hold little more than bins.
constexpr qint64 most_bins_size = qint64(2) << 30;
constexpr qint64 longest_log = most_bins_size + (qint64(64) << 20);

/// A cell has 1 MiB at most, and a bin is made for one cell: no bin is longer than this.
constexpr qint64 longest_bin = (qint64(1) << 20) + page_size;

namespace dirty_bitmap { // old format, which ends with the pages that the bitmap names
constexpr qint64 signature = sector_size; // "DIRT"
constexpr qint64 bits = sector_size + 4;  // a bit for each sector of the bins, the lowest first
constexpr qint64 sectors_of_a_byte = 8;
} // namespace dirty_bitmap

namespace log_entry {           // new format: entries without gaps from the second sector on
constexpr qint64 signature = 0; // "HvLE"
constexpr qint64 size = 4;      // a multiple of a sector
constexpr qint64 flags = 8;
constexpr qint64 sequence = 12;
constexpr qint64 bins_size = 16; // once the entry is applied
constexpr qint64 page_count = 20;
constexpr qint64 hash_of_content = 24; // of all that follows both hashes
constexpr qint64 hash_of_head = 32;    // of the 32 bytes before it
constexpr qint64 references = 40;      // a page's offset and size; behind them the pages
constexpr qint64 reference_size = 8;
constexpr quint32 replaced_flags = 1; // bits of the base block's flags that the entry's replace
} // namespace log_entry

} // namespace regf

#endif
