#include "unguarded_hive.h"

#include <cstring>
#include <hivex.h>
#include <utility>

unsigned long unguarded_hive::root() const
{
    return hivex_root(m_hive);
}

hivex_handles unguarded_hive::subkeys(unsigned long node)
{
    return hivex_handles(hivex_node_children(m_hive, node));
}

hivex_handles unguarded_hive::values(unsigned long node)
{
    return hivex_handles(hivex_node_values(m_hive, node));
}

hivex_text unguarded_hive::key_name(unsigned long node)
{
    return hivex_text(hivex_node_name(m_hive, node));
}

hivex_text unguarded_hive::value_name(unsigned long value)
{
    return hivex_text(hivex_value_key(m_hive, value));
}

qint64 unguarded_hive::last_write_time(unsigned long node) const
{
    return hivex_node_timestamp(m_hive, node);
}

// Only the length that comes back with the bytes is used; the declared one may be larger.
unguarded_hive::value_data unguarded_hive::data(unsigned long value)
{
    hive_type type; // NOLINT(cppcoreguidelines-init-variables): written by libhivex, never read
    size_t length = 0;
    hivex_text bytes(hivex_value_value(m_hive, value, &type, &length));
    return {std::move(bytes), static_cast<qsizetype>(length)};
}

int unguarded_hive::value_type(unsigned long value) const
{
    hive_type type = hive_t_REG_NONE;
    size_t length = 0;
    if (hivex_value_type(m_hive, value, &type, &length) != 0)
        return 0;
    // Copied as bytes, because a damaged hive may hold a number that the enumeration does not have.
    int code = 0;
    static_assert(sizeof code == sizeof type);
    std::memcpy(&code, &type, sizeof code);
    return code;
}

QList<size_t> entries_of(const hivex_handles &handles)
{
    const size_t *const begin = handles.get();
    if (begin == nullptr)
        return {};
    const size_t *end = begin;
    while (*end != 0)
        ++end;
    return {begin, end};
}
