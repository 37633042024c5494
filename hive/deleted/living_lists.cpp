#include "living_lists.h"

#include "hive_cells.h"
#include "record_places.h"
#include "regf_format.h"

#include <algorithm>

using namespace regf;

namespace {

constexpr qint64 unit = cell_head::alignment;
constexpr qint64 word = sizeof(quint32);

bool is_value_in_use(QByteArrayView hive, qint64 offset)
{
    if (offset % unit != 0 || offset >= hive.size())
        return false;
    const qint64 size = -qint64(static_cast<qint32>(hive_cells::number_32(hive, offset)));
    return size > 0 && size <= hive.size() - offset &&
           is_sound_value(hive.sliced(offset, size), hive.size());
}

bool is_before(const value_owner &a, const value_owner &b)
{
    return a.value != b.value ? a.value < b.value : a.key < b.key;
}

/// Leaves one owner of each value that has no other one.
std::vector<value_owner> with_one_owner(std::vector<value_owner> owners)
{
    std::sort(owners.begin(), owners.end(), is_before);
    std::vector<value_owner> kept;
    for (auto first = owners.begin(); first != owners.end();) {
        const auto behind = std::find_if(first, owners.end(), [first](const value_owner &each) {
            return each.value != first->value;
        });
        if (std::prev(behind)->key == first->key)
            kept.push_back(*first);
        first = behind;
    }
    return kept;
}

} // namespace

/// Each list is read once, so that many keys with one list take no longer than one.
living_lists read_living_lists(QByteArrayView hive, const known_keys &keys,
                               const wanted_keys &wanted, const std::vector<quint32> &deleted)
{
    living_lists lists;
    hive_cells cells(hive);
    for (quint32 number = 0; number < keys.all().size(); ++number) {
        const known_keys::key &known = keys.at(number);
        if (known.is_deleted || known.path == path_state::partial ||
            !wanted.are_values_wanted(known.wanted))
            continue;
        const QByteArrayView key = keys.cell_of(number);
        const qint64 count = hive_cells::number_32(key, nk::value_count);
        if (count == 0)
            continue;
        const QByteArrayView list =
            cells.take(hive_cells::number_32(key, nk::value_list), cell_head::length);
        const qint64 entries = (list.size() - value_list::entries) / word;
        for (qint64 entry = 0; entry < entries; ++entry) {
            const quint32 stored = hive_cells::number_32(list, value_list::entries + entry * word);
            const qint64 value = first_bin + qint64(stored);
            const auto place = static_cast<quint32>(value / unit);
            if (entry < count && is_value_in_use(hive, value))
                lists.values.push_back({place, number});
            else if (entry >= count && value % unit == 0 &&
                     std::binary_search(deleted.begin(), deleted.end(), place))
                lists.rest.push_back({place, number});
        }
    }
    lists.rest = with_one_owner(std::move(lists.rest));
    return lists;
}
