#include "deleted_records.h"

#include "deleted_record_reader.h"
#include "hive_cells.h"
#include "regf_format.h"

#include <algorithm>

using namespace regf;

namespace {

constexpr qint64 unit = cell_head::alignment;

/// The data of a value whose cell, or the cell of whose data, was checked.
QByteArray data_in(QByteArrayView hive, QByteArrayView cell)
{
    const quint32 stored = hive_cells::number_32(cell, vk::data_size);
    const qint64 size = stored & ~vk::data_inside;
    if ((stored & vk::data_inside) != 0)
        return cell.sliced(vk::data, std::min(size, qint64(vk::data_inside_limit))).toByteArray();
    const qint64 begin = first_bin + qint64(hive_cells::number_32(cell, vk::data));
    if (size == 0 || begin + cell_head::length + size > hive.size())
        return {};
    return hive.sliced(begin + cell_head::length, size).toByteArray();
}

} // namespace

bool deleted_key::is_whole() const
{
    const auto is_there = [](const deleted_value &value) {
        return value.data == record_flaw::none;
    };
    return path != path_state::unknown && list == record_flaw::none &&
           values.size() == values_told && std::all_of(values.begin(), values.end(), is_there);
}

deleted_records::deleted_records(const QByteArray &hive, const QList<wanted_key> &wanted,
                                 const cancel_test &cancelled)
    : m_hive(hive),
      m_wanted(wanted),
      m_space(m_hive, cancelled),
      m_places(find_records(m_hive, m_space, cancelled)),
      m_keys(m_hive, m_space, m_places.keys, m_wanted, cancelled)
{
    deleted_record_reader(*this, cancelled).read();
    m_is_cancelled = ::is_cancelled(cancelled);
    if (m_is_cancelled)
        m_found.clear();
}

deleted_records::~deleted_records() = default;

QByteArrayView deleted_records::cell_at(qint64 offset) const
{
    return deleted_cell(m_hive, offset, m_space.end_of_region_at(offset));
}

QByteArrayView deleted_records::used_cell_at(qint64 offset) const
{
    const qint64 size = -qint64(static_cast<qint32>(hive_cells::number_32(m_hive, offset)));
    return size > 0 && size <= m_hive.size() - offset ? QByteArrayView(m_hive).sliced(offset, size)
                                                      : QByteArrayView();
}

QStringList deleted_records::path_of(const deleted_key &key) const
{
    return key.number == known_keys::none ? QStringList() : m_keys.path_of(key.number);
}

QString deleted_records::name_of(const deleted_value &value) const
{
    return name_of_value(cell_at(value.offset));
}

QByteArray deleted_records::data_of(const deleted_value &value) const
{
    return value.data == record_flaw::none ? data_in(m_hive, cell_at(value.offset)) : QByteArray();
}

QStringList deleted_records::path_of(const living_value &value) const
{
    return m_keys.path_of(value.key);
}

quint64 deleted_records::last_write_of(const living_value &value) const
{
    return hive_cells::number_64(m_keys.cell_of(value.key), nk::last_write);
}

QString deleted_records::name_of(const living_value &value) const
{
    return name_of_value(used_cell_at(qint64(value.place) * unit));
}

quint32 deleted_records::type_of(const living_value &value) const
{
    return hive_cells::number_32(used_cell_at(qint64(value.place) * unit), vk::type);
}

QByteArray deleted_records::data_of(const living_value &value) const
{
    return data_in(m_hive, used_cell_at(qint64(value.place) * unit));
}
