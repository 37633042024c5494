#ifndef WALK_BUDGET_H
#define WALK_BUDGET_H

#include <QtGlobal>

#include <algorithm>
#include <limits>

/// How much one walk may read from its hive. Every list entry, name and value of an intact hive
/// stands in the file once, so a walk over it reads less than a few times the file's length. A
/// hostile hive can make a few bytes count many thousandfold (one value list under every key, one
/// 8 MB cell behind every value); the budget ends such a walk before memory or time run out.
class walk_budget
{
public:
    /// How many times the hive's length one walk may read. An intact hive stays below: most of them
    /// below 2, and only very short entries of a very long class id come near.
    static constexpr qint64 hive_lengths = 4;
    /// How many lists and data libhivex may refuse in one walk. It tells nothing of what it read
    /// before it refused, so that each of them costs the same.
    static constexpr qint64 refusals = 4096;
    /// Collecting data that are refused in the end is cheap beside reading as many list entries;
    /// an intact hive has none, and a damaged one should not lose a walk over a few of them.
    static constexpr qint64 refused_bytes_per_byte = 16;
    /// What each list of subkeys below an index costs beside its entries. Still a list of a single
    /// key with the key's record costs less than four times what they take in the file.
    static constexpr qint64 indexed_list_cost = 256;

    /// Limits nothing before a walk is started: handles that were opened outside of one are not
    /// limited.
    walk_budget() = default;

    /// A budget of `bytes`, for work beyond a single walk.
    explicit walk_budget(qint64 bytes) : m_size(bytes), m_left(bytes) {}

    /// Starts a walk over a hive of `hive_length` bytes.
    void start(qint64 hive_length)
    {
        m_size = m_left = hive_lengths * hive_length;
        m_refusal_cost = m_left / refusals;
    }

    /// Takes `bytes` from the budget; false, from then on for every request, once it is used up.
    bool spend(qint64 bytes)
    {
        m_left = bytes > m_left ? -1 : m_left - bytes;
        return !is_spent();
    }

    /// Takes what a refused list or datum costs: of `data_length` bytes that libhivex may
    /// have put together before it refused them.
    void spend_refusal(qint64 data_length = 0)
    {
        spend(m_refusal_cost + data_length / refused_bytes_per_byte);
    }

    /// Whether a request went beyond the budget; the walk then reads nothing more.
    bool is_spent() const { return m_left < 0; }

    /// Takes what a refused name costs whose record claims `length` bytes, more than the file may
    /// have.
    void spend_refused_name(qint64 length) { spend(std::min(length, m_refusal_cost)); }

    /// Takes what lists below an index cost.
    void spend_on_indexed_lists(qint64 lists) { spend(lists * indexed_list_cost); }

    /// How many such lists the rest pays for, with the one that goes beyond it.
    qint64 most_indexed_lists() const
    {
        return std::max(m_left, qint64(0)) / indexed_list_cost + 1;
    }

    /// Bytes taken so far: never more than the budget has.
    qint64 spent() const { return m_size - std::max(m_left, qint64(0)); }

private:
    qint64 m_size = std::numeric_limits<qint64>::max();
    qint64 m_left = m_size;
    qint64 m_refusal_cost = 0;
};

#endif
