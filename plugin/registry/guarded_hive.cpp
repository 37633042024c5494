#include "guarded_hive.h"

#include <hivex.h>

#include <cstring>
#include <utility>

namespace {

constexpr named_record key_record = {0x50, 0x4c};   ///< key node cell (nk)
constexpr named_record value_record = {0x18, 0x06}; ///< value cell (vk)
/// Length of a list entry: the 32-bit offset of a cell.
constexpr qint64 list_entry_length = 4;

/// libhivex refuses longer data unread.
constexpr size_t longest_data = 8000000;

/// Data from this length on is kept once when several values share its cell.
constexpr size_t large_data_length = 4096;

/// Where the data of a value lie, and how long the value says they are.
struct data_cell
{
    size_t offset = 0; ///< 0 when the data lie in the value's own cell
    size_t declared_length = 0;
};

data_cell data_cell_of(hive_h *hive, unsigned long value)
{
    size_t cell_length = 0;
    const size_t offset = hivex_value_data_cell_offset(hive, value, &cell_length);
    // libhivex counts the size that stands before the data in.
    constexpr size_t size_field_length = 4;
    return {offset, cell_length < size_field_length ? 0 : cell_length - size_field_length};
}

QByteArray byte_array(const guarded_hive::value_data &data)
{
    return {data.bytes.get(), data.length};
}

} // namespace

void guarded_hive::closer::operator()(hive_h *hive) const
{
    hivex_close(hive);
}

bool guarded_hive::open(const QString &path)
{
    if (!m_file.open(path))
        return false;
    // Opened for writing, libhivex reads the file into memory instead of mapping it, so that a file
    // that shrinks meanwhile cannot crash the walk; the file itself is only ever opened to read.
    m_handle.reset(hivex_open(path.toLocal8Bit().constData(), HIVEX_OPEN_WRITE));
    if (!m_handle || root() == 0) {
        close();
        return false;
    }
    m_budget.start(m_file.length());
    return true;
}

void guarded_hive::close()
{
    m_handle.reset();
    m_file.close();
    m_budget = {};
    m_large_data.clear();
}

unsigned long guarded_hive::root() const
{
    return hivex_root(m_handle.get());
}

QList<size_t> guarded_hive::subkeys(hive_h *hive, unsigned long node)
{
    QList<size_t> listed = list_of(hive, node, hivex_node_children);
    // libhivex reads every list below an index, the empty ones too, which may be thousands.
    if (!listed.isEmpty())
        m_budget.spend_on_indexed_lists(m_file.indexed_lists(node, m_budget.most_indexed_lists()));
    return listed;
}

QList<size_t> guarded_hive::values(hive_h *hive, unsigned long node)
{
    return list_of(hive, node, hivex_node_values);
}

QList<size_t> guarded_hive::list_of(hive_h *hive, unsigned long node, list_operation list)
{
    if (m_budget.is_spent() || !m_file.holds(node, key_record.length))
        return {};
    const hivex_handles handles(list(hive, node));
    if (!handles) {
        m_budget.spend_refusal();
        return {};
    }
    const size_t *const begin = handles.get();
    const size_t *end = begin;
    while (*end != 0)
        ++end;
    m_budget.spend(list_entry_length * (end - begin));
    return {begin, end};
}

hivex_text guarded_hive::key_name(hive_h *hive, unsigned long node)
{
    if (!m_file.holds(node, key_record.length))
        return nullptr;
    return affordable(hivex_text(hivex_node_name(hive, node)), node, key_record);
}

hivex_text guarded_hive::value_name(hive_h *hive, unsigned long value)
{
    if (!m_file.holds(value, value_record.length))
        return nullptr;
    return affordable(hivex_text(hivex_value_key(hive, value)), value, value_record);
}

/// Null when libhivex refused the name, which Windows may well have stored, and once the budget is
/// spent.
hivex_text guarded_hive::affordable(hivex_text name, size_t record, const named_record &layout)
{
    if (!name) {
        m_budget.spend_refused_name(layout.length + m_file.name_length(record, layout));
        return nullptr;
    }
    const auto length = static_cast<qint64>(std::strlen(name.get()));
    return m_budget.spend(layout.length + length) ? std::move(name) : nullptr;
}

qint64 guarded_hive::last_write_time(hive_h *hive, unsigned long node) const
{
    // -1 is libhivex's own answer for a key without a readable time.
    return m_file.holds(node, key_record.length) ? hivex_node_timestamp(hive, node) : -1;
}

// Only the length that comes back with the bytes is trusted: the declared one may be larger.
guarded_hive::value_data guarded_hive::data(hive_h *hive, unsigned long value)
{
    const data_cell cell = data_cell_of(hive, value);
    const qint64 list_length =
        m_file.block_list_length(cell.offset, static_cast<qint64>(cell.declared_length));
    if (list_length < 0 || !m_budget.spend(list_length))
        return {};
    hive_type type; // NOLINT(cppcoreguidelines-init-variables): written by libhivex, never read
    size_t length = 0;
    hivex_text bytes(hivex_value_value(hive, value, &type, &length));
    if (!bytes) {
        const bool was_collected = list_length > 0 && cell.declared_length <= longest_data;
        m_budget.spend_refusal(was_collected ? static_cast<qint64>(cell.declared_length) : 0);
        return {};
    }
    m_budget.spend(static_cast<qint64>(length));
    return {std::move(bytes), static_cast<qsizetype>(length)};
}

QByteArray guarded_hive::bytes(hive_h *hive, unsigned long value)
{
    const data_cell cell = data_cell_of(hive, value);
    if (cell.declared_length < large_data_length || !m_file.is_open())
        return byte_array(data(hive, value));

    const QPair<size_t, size_t> key(cell.offset, cell.declared_length);
    const auto known = m_large_data.constFind(key);
    if (known != m_large_data.cend())
        return *known;
    return *m_large_data.insert(key, byte_array(data(hive, value)));
}

int guarded_hive::value_type(hive_h *hive, unsigned long value)
{
    hive_type type = hive_t_REG_NONE;
    size_t length = 0;
    if (hivex_value_type(hive, value, &type, &length) != 0)
        return 0;
    // Copied as bytes: a damaged hive may hold a number that the enumeration does not have.
    int code = 0;
    static_assert(sizeof code == sizeof type);
    std::memcpy(&code, &type, sizeof code);
    return code;
}
