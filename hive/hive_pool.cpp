#include "hive_pool.h"

#include <algorithm>

guarded_hive *hive_pool::open(const QString &path)
{
    const auto known = std::find_if(m_hives.begin(), m_hives.end(),
                                    [&](const kept_hive &kept) { return kept.path == path; });
    if (known != m_hives.end()) {
        m_hives.splice(m_hives.begin(), m_hives, known);
        m_hives.front().hive.begin_walk();
        return &m_hives.front().hive;
    }
    m_hives.emplace_front();
    m_hives.front().path = path;
    if (!m_hives.front().hive.open(path)) {
        m_hives.pop_front();
        return nullptr;
    }
    close_oldest();
    return &m_hives.front().hive;
}

void hive_pool::close(const QString &path)
{
    m_hives.remove_if([&](const kept_hive &kept) { return kept.path == path; });
}

void hive_pool::close_oldest()
{
    qint64 bytes = 0;
    for (const kept_hive &kept : m_hives)
        bytes += kept.hive.file_length();
    while (bytes > m_most_bytes && m_hives.size() > 1) {
        bytes -= m_hives.back().hive.file_length();
        m_hives.pop_back();
    }
}
