#ifndef BARE_HIVE_H
#define BARE_HIVE_H

#include "hivex_memory.h"

#include <hivex.h>
#include <string>
#include <string_view>
#include <vector>

// What the bare program needs of libhivex. Nothing is checked: it reads the benchmarks' own hives.

struct hive_closer
{
    void operator()(hive_h *hive) const { hivex_close(hive); }
};

using unique_hive = std::unique_ptr<hive_h, hive_closer>;

/// A subkey and its name.
struct named_key
{
    std::string name;
    hive_node_h node;
};

/// The data of a value.
struct value_data
{
    hivex_text bytes;
    size_t length = 0;

    /// The bytes, valid as long as this object.
    std::string_view view() const { return {bytes.get(), length}; }
};

/// Opens a hive as the plug-in does: read into memory, not mapped. Throws std::runtime_error.
unique_hive open_hive(const std::string &path);

/// Descends from the root along a path with backslashes; 0 when a key is missing.
hive_node_h find_key(hive_h *hive, std::string_view path);

/// The subkeys by name, compared byte by byte.
std::vector<named_key> sorted_subkeys(hive_h *hive, hive_node_h node);

/// The last-write time of a key in Unix seconds, as decimal text.
std::string last_write(hive_h *hive, hive_node_h node);

/// The data of a value; null when they cannot be read.
value_data read_value(hive_h *hive, hive_value_h value);

/// The same without its zero bytes, which makes plain text of UTF-16LE.
value_data read_text(hive_h *hive, hive_value_h value);

/// Calls `use` with the name and the handle of each value of the key, in the hive's order.
template<typename function>
void for_each_value(hive_h *hive, hive_node_h node, function use)
{
    const hivex_handles values(hivex_node_values(hive, node));
    for (const size_t *value = values.get(); value != nullptr && *value != 0; ++value) {
        const hivex_text name(hivex_value_key(hive, *value));
        use(name.get(), *value);
    }
}

#endif
