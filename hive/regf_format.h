#ifndef REGF_FORMAT_H
#define REGF_FORMAT_H

#include <QtGlobal>

// Where the fields of a registry hive file ("regf") lie. All numbers are little-endian. The offsets
// of the base block and of a bin count from its first byte; those of a cell count from the cell's
// first byte, which is its size. An offset that is stored inside the file counts from the first
// bin, `first_bin` bytes less than the offset in the file.
namespace regf {

constexpr qint64 page_size = 4096;
constexpr qint64 first_bin = 4096;
constexpr quint32 no_cell = 0xffffffff;

namespace base_block {
constexpr qint64 signature = 0; // "regf"
constexpr qint64 size = 4096;
constexpr qint64 primary_sequence = 4;
constexpr qint64 secondary_sequence = 8;
constexpr qint64 last_write = 12;
constexpr qint64 major_version = 20;
constexpr qint64 minor_version = 24;
constexpr qint64 file_type = 28; // see below
constexpr qint64 format = 32;    // 1: a hive loaded from its file
constexpr qint64 root_cell = 36;
constexpr qint64 bins_size = 40;
constexpr qint64 clustering_factor = 44;
constexpr qint64 file_name = 48; // 32 UTF-16LE characters
constexpr qint64 file_name_size = 64;
constexpr qint64 flags = 144;
constexpr qint64 checksum = 508; // exclusive or of the 127 32-bit words before it
constexpr qint64 fields = 512;   // nothing behind them is copied to a log

constexpr quint32 type_of_hive = 0;
constexpr quint32 type_of_old_log = 1;
constexpr quint32 type_of_oldest_log = 2; // Windows 2000
constexpr quint32 type_of_new_log = 6;    // Windows 8.1 and later
} // namespace base_block

namespace hbin {
constexpr qint64 offset = 4;
constexpr qint64 size = 8; // a multiple of a page
constexpr qint64 last_write = 20;
constexpr qint64 cells = 32;
} // namespace hbin

namespace cell_head {
constexpr qint64 size = 0; // counts itself; negative while the cell is in use
constexpr qint64 length = 4;
constexpr qint64 signature = 4;
constexpr qint64 signature_length = 2;
constexpr qint64 alignment = 8;
} // namespace cell_head

namespace nk { // key
constexpr qint64 flags = 6;
constexpr qint64 last_write = 8;
constexpr qint64 parent = 20;
constexpr qint64 subkey_count = 24;
constexpr qint64 subkey_list = 32;
constexpr qint64 volatile_subkey_list = 36;
constexpr qint64 value_count = 40;
constexpr qint64 value_list = 44;
constexpr qint64 security = 48;
constexpr qint64 class_name = 52;
constexpr qint64 longest_subkey_name = 56; // this and the next in bytes of UTF-16
constexpr qint64 longest_value_name = 64;
constexpr qint64 longest_value_data = 68;
constexpr qint64 name_size = 76;
constexpr qint64 name = 80;
constexpr quint16 flag_hive_root = 0x0004 | 0x0008; // entry of the hive, must not be deleted
constexpr quint16 flag_compressed_name = 0x0020;    // Latin-1 instead of UTF-16LE
} // namespace nk

namespace vk { // value
constexpr qint64 name_size = 6;
constexpr qint64 data_size = 8;
constexpr qint64 data = 12;
constexpr qint64 type = 16;
constexpr qint64 flags = 20;
constexpr qint64 name = 24;
constexpr quint16 flag_compressed_name = 0x0001;
constexpr quint32 data_inside = 0x80000000; // in data_size: the data stand in the field `data`
constexpr qsizetype data_inside_limit = 4;
} // namespace vk

namespace list { // "li", "lf", "lh", "ri"
constexpr qint64 count = 6;
constexpr qint64 entries = 8;
constexpr qint64 plain_entry_size = 4;  // li, ri: the offset of a key or of a list
constexpr qint64 hashed_entry_size = 8; // lf, lh: the offset of a key and its name's hash
constexpr qsizetype entry_limit = 0xffff;
} // namespace list

namespace value_list { // no signature
constexpr qint64 entries = 4;
} // namespace value_list

namespace sk { // security descriptor
constexpr qint64 previous = 8;
constexpr qint64 next = 12;
constexpr qint64 reference_count = 16;
constexpr qint64 descriptor_size = 20;
constexpr qint64 descriptor = 24;
} // namespace sk

namespace db { // data in blocks
constexpr qint64 block_count = 6;
constexpr qint64 block_list = 8;
constexpr qint64 size = 16;
constexpr qint64 block_list_entries = 4;
constexpr qint64 block_data = 4;
constexpr qint64 block_tail = 4; // each block ends with four bytes that belong to no data
constexpr qsizetype block_limit = 16344;
constexpr quint32 first_minor_version = 4;
} // namespace db

} // namespace regf

#endif
