#include "sorted_rows.h"

#include <algorithm>

namespace results {

namespace {

/// What a row is sorted by.
struct sort_key
{
    enum class rank
    {
        number,
        text,
        nothing
    };

    rank is = rank::nothing;
    qint64 number = 0;
    double real = 0;
    QString text;
};

sort_key key_of(const cell &value)
{
    if (value.is == cell::kind::integer)
        return {sort_key::rank::number, value.number, double(value.number), {}};
    if (value.is == cell::kind::real)
        return {sort_key::rank::number, qint64(0), value.real, {}};
    if (value.is_empty())
        return {};
    return {sort_key::rank::text, 0, 0, QString::fromStdString(value.bytes).toLower()};
}

bool is_less(const sort_key &a, const sort_key &b)
{
    if (a.is == sort_key::rank::text)
        return a.text < b.text;
    return a.real != b.real ? a.real < b.real : a.number < b.number;
}

/// Whether the one comes before the other: numbers, texts, and then what is empty.
bool is_before(const sort_key &a, const sort_key &b, bool is_descending)
{
    if (a.is != b.is)
        return a.is < b.is;
    return is_descending ? is_less(b, a) : is_less(a, b);
}

/// The places of the keys in their order.
std::vector<size_t> ordered(const std::vector<sort_key> &keys, bool is_descending)
{
    std::vector<size_t> places(keys.size());
    for (size_t i = 0; i < places.size(); ++i)
        places[i] = i;
    std::stable_sort(places.begin(), places.end(), [&](size_t a, size_t b) {
        return is_before(keys[a], keys[b], is_descending);
    });
    return places;
}

} // namespace

std::vector<qint64> sorted_ids(row_source &rows, const sort_order &order)
{
    const int place = place_of(rows.columns(), order.column);
    std::vector<qint64> ids;
    std::vector<sort_key> keys;
    while (const row *read = rows.next()) {
        ids.push_back(read->id);
        keys.push_back(key_of(cell_at(*read, place)));
    }
    std::vector<qint64> sorted;
    sorted.reserve(ids.size());
    for (const size_t index : ordered(keys, order.is_descending))
        sorted.push_back(ids[index]);
    return sorted;
}

void sort_rows(std::vector<row> &rows, const QList<column> &columns, const sort_order &order)
{
    const int place = place_of(columns, order.column);
    std::vector<sort_key> keys;
    keys.reserve(rows.size());
    for (const row &each : rows)
        keys.push_back(key_of(cell_at(each, place)));
    std::vector<row> sorted;
    sorted.reserve(rows.size());
    for (const size_t index : ordered(keys, order.is_descending))
        sorted.push_back(std::move(rows[index]));
    rows = std::move(sorted);
}

} // namespace results
