#include "bare_hive.h"

#include "bare_time.h"

#include <algorithm>
#include <stdexcept>

unique_hive open_hive(const std::string &path)
{
    unique_hive hive(hivex_open(path.c_str(), HIVEX_OPEN_WRITE));
    if (!hive)
        throw std::runtime_error("no hive: " + path);
    return hive;
}

hive_node_h find_key(hive_h *hive, std::string_view path)
{
    hive_node_h node = hivex_root(hive);
    for (size_t begin = 0; begin < path.size();) {
        const size_t end = std::min(path.find('\\', begin), path.size());
        if (end > begin)
            node = hivex_node_get_child(hive, node, std::string(path, begin, end - begin).c_str());
        begin = end + 1;
    }
    return node;
}

std::vector<named_key> sorted_subkeys(hive_h *hive, hive_node_h node)
{
    std::vector<named_key> subkeys;
    const hivex_handles children(hivex_node_children(hive, node));
    for (const size_t *child = children.get(); child != nullptr && *child != 0; ++child) {
        const hivex_text name(hivex_node_name(hive, *child));
        subkeys.push_back({name.get(), *child});
    }
    std::sort(subkeys.begin(), subkeys.end(),
              [](const named_key &left, const named_key &right) { return left.name < right.name; });
    return subkeys;
}

std::string last_write(hive_h *hive, hive_node_h node)
{
    return std::to_string(unix_seconds(hivex_node_timestamp(hive, node)));
}

value_data read_value(hive_h *hive, hive_value_h value)
{
    hive_type type = hive_t_REG_NONE;
    value_data data;
    data.bytes.reset(hivex_value_value(hive, value, &type, &data.length));
    return data;
}

value_data read_text(hive_h *hive, hive_value_h value)
{
    value_data data = read_value(hive, value);
    char *const begin = data.bytes.get();
    data.length = static_cast<size_t>(std::remove(begin, begin + data.length, '\0') - begin);
    return data;
}
