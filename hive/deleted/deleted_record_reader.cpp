#include "deleted_record_reader.h"

#include "hive_cells.h"
#include "regf_format.h"

#include <algorithm>

using namespace regf;

namespace {

constexpr qint64 unit = cell_head::alignment;
constexpr qint64 word = sizeof(quint32);

bool is_before(const value_owner &a, const value_owner &b)
{
    return a.value < b.value;
}

/// The place of a number among sorted ones; -1 if it is none of them.
qint64 index_in(const std::vector<quint32> &sorted, qint64 offset)
{
    const auto place = static_cast<quint32>(offset / unit);
    const auto found = std::lower_bound(sorted.begin(), sorted.end(), place);
    const bool is_there = offset % unit == 0 && found != sorted.end() && *found == place;
    return is_there ? found - sorted.begin() : -1;
}

qint64 offset_at(QByteArrayView cell, qint64 field)
{
    return first_bin + qint64(hive_cells::number_32(cell, field));
}

} // namespace

void deleted_record_reader::read()
{
    m_named.resize(m_records.m_places.values.size());
    add_deleted_keys();
    check_lists();
    read_lists();
    drop_other_keys();
    if (is_cancelled(m_cancelled))
        return;
    living_lists lists =
        read_living_lists(m_hive, m_records.m_keys, m_records.m_wanted, m_records.m_places.values);
    m_records.m_living = std::move(lists.values);
    m_rest_of_lists = std::move(lists.rest);
    add_values_of_living_keys();
    std::stable_sort(
        m_records.m_found.begin(), m_records.m_found.end(),
        [](const deleted_key &a, const deleted_key &b) { return a.offset < b.offset; });
    add_values_of_no_key();
    if (!is_cancelled(m_cancelled))
        check_data();
}

void deleted_record_reader::add_deleted_keys()
{
    const known_keys &keys = m_records.m_keys;
    for (quint32 number = 0; number < keys.all().size(); ++number) {
        const known_keys::key &known = keys.at(number);
        if (!known.is_deleted)
            continue;
        const QByteArrayView cell = keys.cell_of(number);
        deleted_key key;
        key.number = number;
        key.offset = keys.offset_of(number);
        key.path = known.path;
        key.last_write = hive_cells::number_64(cell, nk::last_write);
        key.values_told = hive_cells::number_32(cell, nk::value_count);
        m_records.m_found.push_back(key);
    }
}

void deleted_record_reader::check_lists()
{
    std::vector<claim> lists;
    for (quint32 i = 0; i < m_records.m_found.size(); ++i) {
        deleted_key &key = m_records.m_found[i];
        if (key.values_told == 0)
            continue;
        const qint64 begin = offset_at(m_records.cell_at(key.offset), nk::value_list);
        const qint64 size = qint64(key.values_told) * word;
        key.list = m_parts.flaw_of(begin, size);
        if (key.list == record_flaw::none)
            lists.push_back({begin, begin + cell_head::length + size, i});
    }
    for (const quint32 refused : m_claims.enter(std::move(lists)))
        m_records.m_found[refused].list = record_flaw::shared;
}

/// Calls `visit` with the key and the index of each value that a list of a deleted key names. No
/// list shares a byte with another one.
template<typename function>
void deleted_record_reader::for_each_listed(function visit) const
{
    for (size_t key = 0; key < m_records.m_found.size(); ++key) {
        const deleted_key &found = m_records.m_found[key];
        if (found.list != record_flaw::none || found.values_told == 0)
            continue;
        const qint64 list = offset_at(m_records.cell_at(found.offset), nk::value_list);
        for (qint64 entry = 0; entry < found.values_told; ++entry) {
            const qint64 value = offset_at(m_hive, list + value_list::entries + entry * word);
            const qint64 index = index_in(m_records.m_places.values, value);
            if (index >= 0)
                visit(key, size_t(index));
        }
    }
}

/// A value that two entries name belongs to one of them at most.
void deleted_record_reader::read_lists()
{
    constexpr quint8 several = 2;
    for_each_listed([this](size_t, size_t index) {
        m_named[index] = static_cast<quint8>(std::min<int>(m_named[index] + 1, several));
    });
    for_each_listed([this](size_t key, size_t index) {
        if (m_named[index] < several && is_wanted(m_records.m_found[key]))
            m_records.m_found[key].values.push_back(
                value_at(qint64(m_records.m_places.values[index]) * unit));
    });
}

bool deleted_record_reader::is_wanted(const deleted_key &key) const
{
    return m_records.m_wanted.is_wanted(m_records.m_keys.at(key.number).wanted);
}

/// Other keys count only because of what their lists name.
void deleted_record_reader::drop_other_keys()
{
    std::vector<deleted_key> &found = m_records.m_found;
    found.erase(std::remove_if(found.begin(), found.end(),
                               [this](const deleted_key &key) { return !is_wanted(key); }),
                found.end());
}

deleted_key &deleted_record_reader::living_key(quint32 number, path_state path)
{
    std::vector<deleted_key> &found = m_records.m_found;
    if (found.empty() || found.back().number != number || found.back().path != path) {
        const known_keys &keys = m_records.m_keys;
        deleted_key key;
        key.number = number;
        key.offset = keys.offset_of(number);
        key.is_alive = true;
        key.path = path;
        key.last_write = hive_cells::number_64(keys.cell_of(number), nk::last_write);
        found.push_back(key);
    }
    return found.back();
}

/// What a list has behind its end may be of another list that was there before.
void deleted_record_reader::add_values_of_living_keys()
{
    std::vector<quint32> orphans;
    for (size_t i = 0; i < m_named.size(); ++i) {
        if (m_named[i] == 0)
            orphans.push_back(m_records.m_places.values[i]);
    }
    std::vector<value_owner> living;
    for (const living_value &value : m_records.m_living)
        living.push_back({value.place, value.key});
    std::sort(living.begin(), living.end(), is_before);
    const auto add = [this](std::vector<value_owner> owners, path_state path) {
        std::stable_sort(owners.begin(), owners.end(),
                         [](const value_owner &a, const value_owner &b) { return a.key < b.key; });
        for (const value_owner &each : owners) {
            const auto index = index_in(m_records.m_places.values, qint64(each.value) * unit);
            if (m_named[size_t(index)] != 0)
                continue;
            m_named[size_t(index)] = 1;
            deleted_key &key = living_key(each.key, path);
            key.values.push_back(value_at(qint64(each.value) * unit));
            ++key.values_told;
        }
    };
    add(owners_by_old_lists(m_hive, m_records.m_space, orphans, living), path_state::whole);
    add(m_rest_of_lists, path_state::doubtful);
}

void deleted_record_reader::add_values_of_no_key()
{
    deleted_key nobody;
    for (size_t i = 0; i < m_named.size(); ++i) {
        if (m_named[i] == 0)
            nobody.values.push_back(value_at(qint64(m_records.m_places.values[i]) * unit));
    }
    nobody.values_told = static_cast<quint32>(nobody.values.size());
    if (!nobody.values.empty())
        m_records.m_found.push_back(nobody);
}

deleted_value deleted_record_reader::value_at(qint64 offset) const
{
    const QByteArrayView cell = m_records.cell_at(offset);
    deleted_value value;
    value.offset = offset;
    value.type = hive_cells::number_32(cell, vk::type);
    value.data_size = hive_cells::number_32(cell, vk::data_size) & ~vk::data_inside;
    return value;
}

std::vector<deleted_value *> deleted_record_reader::found_values()
{
    std::vector<deleted_value *> values;
    for (deleted_key &key : m_records.m_found) {
        for (deleted_value &value : key.values)
            values.push_back(&value);
    }
    return values;
}

void deleted_record_reader::check_data()
{
    const std::vector<deleted_value *> values = found_values();
    std::vector<claim> claims;
    for (quint32 i = 0; i < values.size(); ++i) {
        const QByteArrayView cell = m_records.cell_at(values[i]->offset);
        const quint32 stored = hive_cells::number_32(cell, vk::data_size);
        if (stored == 0 || (stored & vk::data_inside) != 0)
            continue;
        values[i]->data = m_parts.flaw_of_data(cell);
        const qint64 begin = offset_at(cell, vk::data);
        if (values[i]->data == record_flaw::none)
            claims.push_back({begin, begin + cell_head::length + qint64(stored), i});
    }
    for (const quint32 refused : m_claims.enter(std::move(claims)))
        values[refused]->data = record_flaw::shared;
}
