#include "hive_key.h"

#include <algorithm>
#include <stdexcept>

namespace evidence {

namespace {

constexpr qint64 default_last_write_seconds = 1700000000; // 2023-11-14T22:13:20Z

} // namespace

hive_key::hive_key(std::deque<hive_key> &arena, hive_key *parent, const hive_name &name)
    : m_arena(arena),
      m_parent(parent),
      m_name(name),
      m_last_write(filetime_of_unix(default_last_write_seconds))
{
}

hive_key &hive_key::key(const QString &path)
{
    hive_key *found = this;
    const QStringList parts = path.split(u'\\', Qt::SkipEmptyParts);
    for (const QString &part : parts)
        found = &found->subkey(part);
    return *found;
}

hive_key &hive_key::subkey(const QString &name)
{
    hive_key *known = m_first_by_folded_name.value(name.toCaseFolded());
    return known != nullptr ? *known : add_key(name);
}

hive_key &hive_key::add_key(const hive_name &name)
{
    m_arena.push_back(hive_key(m_arena, this, name));
    hive_key *added = &m_arena.back();
    m_subkeys.push_back(added);
    const QString folded = name.text().toCaseFolded();
    if (!m_first_by_folded_name.contains(folded))
        m_first_by_folded_name.insert(folded, added);
    return *added;
}

void hive_key::sort_subkeys()
{
    std::stable_sort(m_subkeys.begin(), m_subkeys.end(),
                     [](const hive_key *left, const hive_key *right) {
                         return left->m_name.text().toUpper() < right->m_name.text().toUpper();
                     });
}

hive_key &hive_key::value(const hive_name &name, quint32 type, const QByteArray &data)
{
    m_values.push_back({name, type, data, {}});
    return *this;
}

hive_key &hive_key::text(const hive_name &name, const QString &text, quint32 type)
{
    return value(name, type, registry_text(text));
}

hive_key &hive_key::multi_text(const hive_name &name, const QStringList &texts)
{
    return value(name, reg_multi_sz, registry_multi_text(texts));
}

hive_key &hive_key::binary(const hive_name &name, const QByteArray &data)
{
    return value(name, reg_binary, data);
}

hive_key &hive_key::dword(const hive_name &name, quint32 number)
{
    return value(name, reg_dword, registry_dword(number));
}

hive_key &hive_key::qword(const hive_name &name, quint64 number)
{
    return value(name, reg_qword, registry_qword(number));
}

hive_key &hive_key::last_write(qint64 filetime)
{
    m_last_write = filetime;
    return *this;
}

hive_key &hive_key::last_write_unix(qint64 seconds)
{
    return last_write(filetime_of_unix(seconds));
}

hive_key &hive_key::list_kind(subkey_list kind)
{
    m_list_kind = kind;
    return *this;
}

const value_cells &hive_key::cells_of_value(const QString &name) const
{
    const auto found =
        std::find_if(m_values.begin(), m_values.end(),
                     [&name](const value_entry &entry) { return entry.name.text() == name; });
    return cells_of_value(found - m_values.begin());
}

const value_cells &hive_key::cells_of_value(qsizetype index) const
{
    if (index < 0 || static_cast<size_t>(index) >= m_values.size())
        throw std::out_of_range("the key has no such value");
    return m_values[static_cast<size_t>(index)].cells;
}

} // namespace evidence
