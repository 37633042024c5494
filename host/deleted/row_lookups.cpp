#include "row_lookups.h"

#include <algorithm>

#include "recovered_paths.h"

namespace {

constexpr qsizetype lookup_overhead = 200; // bytes that a value takes besides name and data

} // namespace

bool row_lookups::is_lookup(const QStringList &path) const
{
    for (const recovered_key &wanted : m_keys) {
        for (const wanted_key &lookup : wanted.lookups) {
            if (starts_with(path, names_of(lookup)) && is_readable(path))
                return true;
        }
    }
    return false;
}

/// Appends a value as long as all of them together stay short: each generation gets them.
void row_lookups::append_lookup(QList<lookup_value> &lookups, const lookup_value &value)
{
    constexpr qsizetype most_bytes = 1 << 20;
    m_lookup_bytes += value.data.size() + value.name.size() + lookup_overhead;
    if (m_lookup_bytes <= most_bytes && value.name.isValidUtf16())
        lookups.append(value);
}

QList<lookup_value> row_lookups::living_lookups()
{
    QList<lookup_value> lookups;
    for (const living_value &value : m_records.living_values()) {
        const QStringList path = m_records.path_of(value);
        if (is_lookup(path))
            append_lookup(lookups, {path, m_records.name_of(value), m_records.type_of(value),
                                    m_records.data_of(value)});
    }
    for (const lookup_value &value : std::as_const(lookups))
        m_lookup_keys.insert(value.path.join(u'\\').toCaseFolded());
    return lookups;
}

/// Deleted keys where none lives; of several the one that was written last.
QList<lookup_value> row_lookups::deleted_lookups()
{
    std::vector<const deleted_key *> deleted;
    for (const deleted_key &key : m_records.keys()) {
        if (!key.is_alive && key.is_whole() && key.path == path_state::whole &&
            is_lookup(m_records.path_of(key)))
            deleted.push_back(&key);
    }
    std::stable_sort(
        deleted.begin(), deleted.end(),
        [](const deleted_key *a, const deleted_key *b) { return a->last_write > b->last_write; });
    QList<lookup_value> lookups;
    for (const deleted_key *key : deleted) {
        const QStringList path = m_records.path_of(*key);
        const QString folded = path.join(u'\\').toCaseFolded();
        if (m_lookup_keys.contains(folded))
            continue;
        m_lookup_keys.insert(folded);
        for (const deleted_value &value : key->values)
            append_lookup(lookups,
                          {path, m_records.name_of(value), value.type, m_records.data_of(value)});
    }
    return lookups;
}
