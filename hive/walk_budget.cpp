#include "walk_budget.h"

#include <QtAlgorithms>

#include <algorithm>

namespace {

constexpr qint64 units_per_word = 64;

/// The bits of one word from `first` to before `end`.
quint64 bits_between(qint64 first, qint64 end)
{
    const quint64 from_first = ~quint64(0) << first;
    return end == units_per_word ? from_first : from_first & ~(~quint64(0) << end);
}

} // namespace

void walk_budget::start(qint64 hive_length)
{
    const qint64 units = (hive_length + unit - 1) / unit;
    m_units_read.assign(static_cast<size_t>((units + units_per_word - 1) / units_per_word), 0);
    m_left = std::max(hive_lengths * hive_length, least_allowance);
    m_read_again = 0;
}

bool walk_budget::read(qint64 offset, qint64 length)
{
    const auto all_units = static_cast<qint64>(m_units_read.size()) * units_per_word;
    const qint64 end = std::min((offset + length + unit - 1) / unit, all_units);
    qint64 units_again = 0;
    for (qint64 position = offset / unit; position < end;) {
        const qint64 first = position % units_per_word;
        const qint64 last = std::min(first + end - position, units_per_word);
        const quint64 bits = bits_between(first, last);
        quint64 &word = m_units_read[static_cast<size_t>(position / units_per_word)];
        units_again += qPopulationCount(word & bits);
        word |= bits;
        position += last - first;
    }
    m_read_again += units_again * unit;
    m_left = is_spent() ? m_left : m_left - units_again * unit;
    return !is_spent();
}
