#include "value_owners.h"

#include "hive_cells.h"
#include "regf_format.h"

#include <algorithm>

using namespace regf;

namespace {

constexpr qint64 unit = cell_head::alignment;
constexpr qint64 word = sizeof(quint32);
constexpr quint32 nobody = 0xffffffff;
constexpr quint32 several = 0xfffffffe;

quint32 joined(quint32 a, quint32 b)
{
    if (a == nobody || a == b)
        return b;
    return b == nobody ? a : several;
}

/// Goes through the words of free space.
class old_list_search
{
public:
    old_list_search(QByteArrayView hive, const std::vector<quint32> &orphans,
                    const std::vector<value_owner> &living)
        : m_hive(hive),
          m_orphans(orphans),
          m_living(living),
          m_is_value(static_cast<size_t>(hive.size() / unit)),
          m_owners(orphans.size(), nobody)
    {
        for (const quint32 place : orphans)
            m_is_value[place] = true;
        for (const value_owner &each : living)
            m_is_value[each.value] = true;
    }

    void search(const free_region &region);
    std::vector<value_owner> owners() const;

private:
    bool take(quint32 stored);
    void end_row();

    QByteArrayView m_hive;
    const std::vector<quint32> &m_orphans;
    const std::vector<value_owner> &m_living;
    std::vector<bool> m_is_value;  ///< for each place
    std::vector<quint32> m_owners; ///< of each orphan
    std::vector<size_t> m_row;     ///< orphans of the row that is being read
    quint32 m_row_owner = nobody;
};

void old_list_search::search(const free_region &region)
{
    const qint64 end = qint64(region.end) * unit;
    for (qint64 offset = qint64(region.begin) * unit; offset < end; offset += word) {
        if (!take(hive_cells::number_32(m_hive, offset)))
            end_row();
    }
    end_row();
}

/// Takes the value that the word designates into the row; false if it designates none.
bool old_list_search::take(quint32 stored)
{
    const qint64 offset = first_bin + qint64(stored);
    if (offset % unit != 0 || offset >= m_hive.size() / unit * unit)
        return false;
    const auto place = static_cast<quint32>(offset / unit);
    if (!m_is_value[place])
        return false;
    const auto owner = std::lower_bound(
        m_living.begin(), m_living.end(), place,
        [](const value_owner &each, quint32 wanted) { return each.value < wanted; });
    if (owner != m_living.end() && owner->value == place)
        m_row_owner = joined(m_row_owner, owner->key);
    else
        m_row.push_back(static_cast<size_t>(
            std::lower_bound(m_orphans.begin(), m_orphans.end(), place) - m_orphans.begin()));
    return true;
}

void old_list_search::end_row()
{
    if (m_row_owner != nobody) {
        for (const size_t orphan : m_row)
            m_owners[orphan] = joined(m_owners[orphan], m_row_owner);
    }
    m_row.clear();
    m_row_owner = nobody;
}

std::vector<value_owner> old_list_search::owners() const
{
    std::vector<value_owner> owners;
    for (size_t i = 0; i < m_orphans.size(); ++i) {
        if (m_owners[i] < several)
            owners.push_back({m_orphans[i], m_owners[i]});
    }
    return owners;
}

} // namespace

std::vector<value_owner> owners_by_old_lists(QByteArrayView hive, const free_space &space,
                                             const std::vector<quint32> &orphans,
                                             const std::vector<value_owner> &living)
{
    if (orphans.empty() || living.empty())
        return {};
    old_list_search search(hive, orphans, living);
    for (const free_region &region : space.regions())
        search.search(region);
    return search.owners();
}
