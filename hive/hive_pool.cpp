#include "hive_pool.h"

#include <cerrno>
#include <iterator>

namespace {

/// Opens the hive. Otherwise tells whether it failed for want of something that open hives hold.
bool is_opened(guarded_hive &hive, const QString &path, bool &is_short)
{
    errno = 0;
    const bool is_open = hive.open(path);
    is_short = !is_open && (errno == EMFILE || errno == ENFILE || errno == ENOMEM);
    return is_open;
}

} // namespace

guarded_hive *hive_pool::open(const QString &path)
{
    if (const auto known = m_by_path.constFind(path); known != m_by_path.constEnd()) {
        m_hives.splice(m_hives.begin(), m_hives, *known);
        m_hives.front().hive.begin_walk();
        return &m_hives.front().hive;
    }
    m_hives.emplace_front();
    m_hives.front().path = path;
    guarded_hive &hive = m_hives.front().hive;
    bool is_short = false;
    bool is_open = is_opened(hive, path, is_short);
    if (is_short && m_hives.size() > 1) {
        while (m_hives.size() > 1)
            close(std::prev(m_hives.end()));
        is_open = is_opened(hive, path, is_short);
    }
    if (!is_open) {
        m_hives.pop_front();
        return nullptr;
    }
    m_by_path.insert(path, m_hives.begin());
    m_bytes += hive.file_length();
    close_oldest();
    return &hive;
}

void hive_pool::close(const QString &path)
{
    if (const auto known = m_by_path.constFind(path); known != m_by_path.constEnd())
        close(*known);
}

void hive_pool::close(hive_list::iterator kept)
{
    m_bytes -= kept->hive.file_length();
    m_by_path.remove(kept->path);
    m_hives.erase(kept);
}

void hive_pool::close_oldest()
{
    while ((m_bytes > m_most.bytes || count() > m_most.hives) && count() > 1)
        close(std::prev(m_hives.end()));
}
