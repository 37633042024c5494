#include "record_places.h"

#include "hive_cells.h"
#include "regf_format.h"

using namespace regf;

namespace {

constexpr qint64 unit = cell_head::alignment;

constexpr quint16 known_key_flags = 0x53ff;
constexpr quint16 known_value_flags = 0x0003;
constexpr int most_key_name = 512;

/// Whether a cell of the hive can begin where a stored offset says.
bool can_be_cell(quint32 stored, qint64 hive_size)
{
    return stored % unit == 0 && first_bin + qint64(stored) + cell_head::length <= hive_size;
}

bool has_sound_name(QByteArrayView cell, qint64 begin, qint64 size, bool is_latin_1)
{
    return begin + size <= cell.size() && (is_latin_1 || size % 2 == 0);
}

QString decoded(QByteArrayView name, bool is_latin_1)
{
    if (is_latin_1)
        return QString::fromLatin1(name);
    QString text(name.size() / 2, Qt::Uninitialized);
    for (qsizetype i = 0; i < text.size(); ++i)
        text[i] = QChar(hive_cells::number_16(name, i * 2));
    return text;
}

bool is_key_in_latin_1(QByteArrayView cell)
{
    return (hive_cells::number_16(cell, nk::flags) & nk::flag_compressed_name) != 0;
}

bool is_value_in_latin_1(QByteArrayView cell)
{
    return (hive_cells::number_16(cell, vk::flags) & vk::flag_compressed_name) != 0;
}

/// The parent of the root may be anything, but the root is never deleted.
bool has_sound_parent(QByteArrayView cell, qint64 hive_size)
{
    return can_be_cell(hive_cells::number_32(cell, nk::parent), hive_size);
}

/// Collects records in the order of their places.
class record_search
{
public:
    record_search(QByteArrayView hive, record_places &found) : m_hive(hive), m_found(found) {}

    void search(const free_region &region);

private:
    void look_at(qint64 offset, qint64 end);
    void add(std::vector<quint32> &records, qint64 offset, qint64 length);

    QByteArrayView m_hive;
    record_places &m_found;
    std::vector<quint32> *m_last = nullptr; ///< what holds the record before
    qint64 m_last_end = 0;
};

void record_search::search(const free_region &region)
{
    const qint64 end = qint64(region.end) * unit;
    for (qint64 offset = qint64(region.begin) * unit; offset + unit <= end; offset += unit) {
        const char *letters = m_hive.data() + offset + cell_head::signature;
        if (letters[1] == 'k' && (letters[0] == 'n' || letters[0] == 'v'))
            look_at(offset, end);
    }
}

void record_search::look_at(qint64 offset, qint64 end)
{
    const QByteArrayView cell = deleted_cell(m_hive, offset, end);
    if (is_sound_key(cell, m_hive.size()) && has_sound_parent(cell, m_hive.size()))
        add(m_found.keys, offset, length_of_key(cell));
    else if (is_sound_value(cell, m_hive.size()))
        add(m_found.values, offset, length_of_value(cell));
}

void record_search::add(std::vector<quint32> &records, qint64 offset, qint64 length)
{
    if (m_last != nullptr && offset < m_last_end)
        m_last->pop_back();
    records.push_back(static_cast<quint32>(offset / unit));
    m_last = &records;
    m_last_end = offset + length;
}

} // namespace

QByteArrayView deleted_cell(QByteArrayView hive, qint64 offset, qint64 end)
{
    if (offset + cell_head::length > end)
        return {};
    const qint64 size = std::abs(qint64(static_cast<qint32>(hive_cells::number_32(hive, offset))));
    if (size < unit || size % unit != 0 || size > end - offset)
        return {};
    return hive.sliced(offset, size);
}

bool is_sound_key(QByteArrayView cell, qint64 hive_size)
{
    if (cell.size() <= nk::name || !cell.sliced(cell_head::signature).startsWith("nk"))
        return false;
    const quint16 name_size = hive_cells::number_16(cell, nk::name_size);
    const bool has_list = hive_cells::number_32(cell, nk::value_count) > 0;
    return (hive_cells::number_16(cell, nk::flags) & ~known_key_flags) == 0 && name_size > 0 &&
           name_size <= most_key_name &&
           has_sound_name(cell, nk::name, name_size, is_key_in_latin_1(cell)) &&
           (!has_list || can_be_cell(hive_cells::number_32(cell, nk::value_list), hive_size));
}

bool is_sound_value(QByteArrayView cell, qint64 hive_size)
{
    if (cell.size() < vk::name || !cell.sliced(cell_head::signature).startsWith("vk"))
        return false;
    const quint32 stored_size = hive_cells::number_32(cell, vk::data_size);
    const qint64 size = stored_size & ~vk::data_inside;
    const bool is_inside = (stored_size & vk::data_inside) != 0;
    const bool has_sound_data =
        is_inside ? size <= vk::data_inside_limit
                  : size == 0 || (size <= hive_size &&
                                  can_be_cell(hive_cells::number_32(cell, vk::data), hive_size));
    return (hive_cells::number_16(cell, vk::flags) & ~known_value_flags) == 0 && has_sound_data &&
           has_sound_name(cell, vk::name, hive_cells::number_16(cell, vk::name_size),
                          is_value_in_latin_1(cell));
}

qint64 length_of_key(QByteArrayView cell)
{
    return nk::name + hive_cells::number_16(cell, nk::name_size);
}

qint64 length_of_value(QByteArrayView cell)
{
    return vk::name + hive_cells::number_16(cell, vk::name_size);
}

QString name_of_key(QByteArrayView cell)
{
    return decoded(cell.sliced(nk::name, length_of_key(cell) - nk::name), is_key_in_latin_1(cell));
}

QString name_of_value(QByteArrayView cell)
{
    return decoded(cell.sliced(vk::name, length_of_value(cell) - vk::name),
                   is_value_in_latin_1(cell));
}

record_places find_records(QByteArrayView hive, const free_space &space,
                           const cancel_test &cancelled)
{
    constexpr int regions_between_polls = 1024;
    record_places found;
    record_search search(hive, found);
    int polls = 0;
    for (const free_region &region : space.regions()) {
        if (++polls % regions_between_polls == 0 && is_cancelled(cancelled))
            break;
        search.search(region);
    }
    return found;
}
