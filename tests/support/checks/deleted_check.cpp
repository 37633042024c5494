#include "deleted_check.h"

#include "deleted_records.h"
#include "hive_base_block.h"
#include "rebuilt_hive.h"
#include "regf_format.h"

#include <QSet>

#include <stdexcept>

namespace test_support {

namespace {

using namespace Qt::StringLiterals;

void require(bool is_so, const char *what)
{
    if (!is_so)
        throw std::runtime_error(what);
}

/// What is checked of one hive.
class deleted_check
{
public:
    explicit deleted_check(const QByteArray &hive)
        : m_hive(hive),
          m_space(m_hive, {}),
          m_records(hive, {{u"Uninstall"_s, 1, 1}, {u"Assist"_s, 2, 1 << 20}})
    {
    }

    found_counts run();

private:
    void check(const deleted_key &key);
    void check(const deleted_value &value, const QStringList &path);
    void check_place(qint64 offset);

    QByteArray m_hive;
    free_space m_space;
    deleted_records m_records;
    QSet<qint64> m_places;
    qint64 m_data_size = 0;
    rebuilt_hive m_rebuilt;
};

found_counts deleted_check::run()
{
    found_counts counts;
    for (const deleted_key &key : m_records.keys()) {
        check(key);
        ++(key.is_whole() ? counts.whole : counts.partial);
    }
    require(m_data_size <= m_hive.size(), "more data than the file has");
    for (const living_value &value : m_records.living_values())
        require(m_records.data_of(value).size() <= m_hive.size() &&
                    !m_records.path_of(value).isEmpty(),
                "a living value without a path");
    const QByteArray bytes = m_rebuilt.bytes();
    const hive_base_block block(bytes.first(regf::base_block::size));
    require(block.is_checksum_right() && block.told_length() == bytes.size(), "no sound hive");
    return counts;
}

void deleted_check::check_place(qint64 offset)
{
    require(m_space.end_of_region_at(offset) > 0, "a record in a cell that is in use");
    require(!m_places.contains(offset), "a record that is told twice");
    m_places.insert(offset);
}

void deleted_check::check(const deleted_key &key)
{
    const QStringList path = m_records.path_of(key);
    require(path.isEmpty() == (key.path == path_state::unknown), "a path that is not known");
    if (!key.is_alive && key.path != path_state::unknown)
        check_place(key.offset);
    require(key.values.size() <= key.values_told, "more values than the key had");
    if (!path.isEmpty())
        m_rebuilt.add_key(path, key.last_write);
    for (const deleted_value &value : key.values)
        check(value, path);
}

void deleted_check::check(const deleted_value &value, const QStringList &path)
{
    check_place(value.offset);
    const QByteArray data = m_records.data_of(value);
    const bool is_there = value.data == record_flaw::none;
    require(data.size() == (is_there ? qsizetype(value.data_size) : 0), "data of another length");
    m_data_size += data.size();
    if (!path.isEmpty())
        m_rebuilt.add_value(path, m_records.name_of(value), value.type, data);
}

} // namespace

found_counts check_deleted(const QByteArray &hive)
{
    return deleted_check(hive).run();
}

} // namespace test_support
