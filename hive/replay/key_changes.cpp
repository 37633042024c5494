#include "key_changes.h"

#include <QList>

#include <algorithm>
#include <utility>

namespace {

/// A subkey under its name without letter case.
struct folded_key
{
    QString name;
    quint32 number;
};

QList<folded_key> sorted_subkeys(const key_tree &tree, quint32 number)
{
    QList<folded_key> subkeys;
    const key_tree::key &key = tree.at(number);
    for (quint32 i = 0; i < key.subkey_count; ++i)
        subkeys.append({tree.name_of(key.first_subkey + i).toCaseFolded(), key.first_subkey + i});
    std::stable_sort(subkeys.begin(), subkeys.end(),
                     [](const folded_key &a, const folded_key &b) { return a.name < b.name; });
    return subkeys;
}

class key_comparison
{
public:
    key_comparison(const key_tree &before, const key_tree &after, const key_change_taker &take)
        : m_before(before), m_after(after), m_take(take)
    {
    }

    key_change_counts run();

private:
    void compare(quint32 before, quint32 after);
    void compare_subkeys(quint32 before, quint32 after);
    void take_all(const key_tree &tree, quint32 number, key_change change, qint64 &count);
    void tell(const key_tree &tree, quint32 number, key_change change)
    {
        if (m_take)
            m_take(change, tree.path_of(number));
    }

    const key_tree &m_before;
    const key_tree &m_after;
    const key_change_taker &m_take;
    key_change_counts m_counts;
    QList<std::pair<quint32, quint32>> m_waiting; ///< the same key before and after
};

key_change_counts key_comparison::run()
{
    m_counts.before = m_before.count();
    m_counts.after = m_after.count();
    if (m_counts.before == 0 && m_counts.after > 0)
        take_all(m_after, key_tree::root, key_change::added, m_counts.added);
    else if (m_counts.after == 0 && m_counts.before > 0)
        take_all(m_before, key_tree::root, key_change::removed, m_counts.removed);
    else if (m_counts.before > 0)
        m_waiting.append({key_tree::root, key_tree::root});
    while (!m_waiting.isEmpty()) {
        const auto [before, after] = m_waiting.takeLast();
        compare(before, after);
        compare_subkeys(before, after);
    }
    return m_counts;
}

void key_comparison::compare(quint32 before, quint32 after)
{
    const key_tree::key &old_key = m_before.at(before);
    const key_tree::key &new_key = m_after.at(after);
    if (old_key.last_write == new_key.last_write && old_key.values == new_key.values)
        return;
    ++m_counts.changed;
    tell(m_after, after, key_change::changed);
}

void key_comparison::compare_subkeys(quint32 before, quint32 after)
{
    const QList<folded_key> old_keys = sorted_subkeys(m_before, before);
    const QList<folded_key> new_keys = sorted_subkeys(m_after, after);
    auto old_key = old_keys.cbegin();
    auto new_key = new_keys.cbegin();
    while (old_key != old_keys.cend() || new_key != new_keys.cend()) {
        const bool is_old_left = old_key != old_keys.cend();
        const bool is_new_left = new_key != new_keys.cend();
        if (is_old_left && is_new_left && old_key->name == new_key->name)
            m_waiting.append({(old_key++)->number, (new_key++)->number});
        else if (!is_new_left || (is_old_left && old_key->name < new_key->name))
            take_all(m_before, (old_key++)->number, key_change::removed, m_counts.removed);
        else
            take_all(m_after, (new_key++)->number, key_change::added, m_counts.added);
    }
}

/// The key and all below it.
void key_comparison::take_all(const key_tree &tree, quint32 number, key_change change,
                              qint64 &count)
{
    QList<quint32> waiting{number};
    while (!waiting.isEmpty()) {
        const quint32 key = waiting.takeLast();
        ++count;
        tell(tree, key, change);
        for (quint32 i = tree.at(key).subkey_count; i > 0; --i)
            waiting.append(tree.at(key).first_subkey + i - 1);
    }
}

} // namespace

key_change_counts compare_keys(const key_tree &before, const key_tree &after,
                               const key_change_taker &take)
{
    return key_comparison(before, after, take).run();
}
