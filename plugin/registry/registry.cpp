#include "registry.h"

#include <hivex.h>

#include <QScopeGuard>
#include <QStringList>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

namespace {

/// 100 ns intervals from 1601-01-01 to 1970-01-01.
constexpr qint64 filetime_unix_epoch = 116444736000000000;
constexpr qint64 filetime_ticks_per_second = 10000000;

constexpr named_record key_record = {0x50, 0x4c};   ///< key node cell (nk)
constexpr named_record value_record = {0x18, 0x06}; ///< value cell (vk)
/// Length of a list entry: the 32-bit offset of a cell.
constexpr qint64 list_entry_length = 4;

/// libhivex refuses longer data unread.
constexpr size_t longest_data = 8000000;

/// Data from this length on is kept once when several values share its cell.
constexpr size_t large_value_length = 4096;

/// Closes an opened hive; nothing is ever committed, so closing cannot lose anything.
struct hive_closer
{
    void operator()(hive_h *hive) const { hivex_close(hive); }
};

using unique_hive = std::unique_ptr<hive_h, hive_closer>;

/// Every zero byte dropped, the rest decoded as local 8-bit text. Alters the bytes.
QString without_zero_bytes(char *begin, qsizetype length)
{
    char *end = begin;
    int all_bits = 0;
    for (const char *byte = begin; byte != begin + length; ++byte) {
        all_bits |= *byte;
        *end = *byte;
        end += *byte == '\0' ? 0 : 1;
    }
    // Much faster, and the same in every local encoding.
    const bool is_ascii = (all_bits & 0x80) == 0;
    return is_ascii ? QString::fromLatin1(begin, end - begin)
                    : QString::fromLocal8Bit(begin, end - begin);
}

/// The same of ASCII text in UTF-16 with zeros only behind its end, as nearly all texts of a
/// registry are; null for any other data.
QString plain_text(const char *begin, qsizetype length)
{
    if (length % 2 != 0)
        return {};
    while (length > 0 && begin[length - 1] == '\0' && begin[length - 2] == '\0')
        length -= 2;
    QString text(length / 2, Qt::Uninitialized);
    qFromLittleEndian<quint16>(begin, text.size(), text.data());
    ushort all_bits = 0;
    bool has_zero = false;
    for (const QChar character : std::as_const(text)) {
        all_bits |= character.unicode();
        has_zero |= character.isNull();
    }
    return all_bits < 0x80 && !has_zero ? text : QString();
}

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

} // namespace

registry::registry()
    : current_data(nullptr),
      current_installed_app(nullptr),
      current_user_assist(nullptr),
      current_hidden_icon(nullptr)
{
}

registry::~registry() = default;

int registry::start_registry_parse(QString hive_path, QString key_path, bool read_key_values)
{
    return walk_hive(hive_path, key_path, read_key_values,
                     [this](hive_h *hive, unsigned long node) {
                         data_records.append(read_record(hive, node, &registry::current_data));
                     });
}

int registry::walk_hive(const QString &hive_path, const QString &key_path, bool read_key_values,
                        const std::function<void(hive_h *, unsigned long)> &read_key)
{
    if (hive_path.isEmpty() || key_path.isEmpty() || !m_file.open(hive_path))
        return -1;
    const auto walk_end = qScopeGuard([this] { end_walk(); });
    // Opened for writing, libhivex reads the file into memory instead of mapping it, so that a file
    // that shrinks meanwhile cannot crash the walk; the file itself is only ever opened to read.
    const unique_hive hive(hivex_open(hive_path.toLocal8Bit().constData(), HIVEX_OPEN_WRITE));
    const unsigned long root = hive ? hivex_root(hive.get()) : 0;
    if (root == 0)
        return -1;

    m_budget.start(m_file.length());
    const unsigned long node = get_user_node_handle(hive.get(), key_path, root);
    if (read_key_values) {
        current_key_name = key_name(hive.get(), node);
        read_key(hive.get(), node);
    } else {
        run_only_multiple_paths(hive.get(), node);
    }
    return 0;
}

/// What is known of the hive does not hold for handles of any other.
void registry::end_walk()
{
    m_file.close();
    m_cost_of_last_walk = m_budget.spent();
    m_budget = {};
    m_value_names = {};
    m_large_values.clear();
}

unsigned long registry::get_user_node_handle(hive_h *hive, QString key_path,
                                             unsigned long start_node)
{
    unsigned long node = start_node;
    const QStringList parts = key_path.split(u'\\', Qt::SkipEmptyParts);
    for (const QString &part : parts)
        node = child_named(hive, node, part.toLocal8Bit());
    return node;
}

/// The search of hivex_node_get_child(), which compares without regard to ASCII case and gives up
/// at a name that cannot be read; that one would also read past the hive and without a budget.
unsigned long registry::child_named(hive_h *hive, unsigned long node, const QByteArray &wanted)
{
    const QList<size_t> children = list_of(hive, node, hivex_node_children);
    for (const size_t child : children) {
        const hivex_text name = stored_key_name(hive, child);
        if (!name)
            return 0;
        if (qstricmp(name.get(), wanted.constData()) == 0)
            return child;
    }
    return 0;
}

/// Empty when libhivex refuses the list, when the key leaves the file, and once the budget is
/// spent.
QList<size_t> registry::list_of(hive_h *hive, unsigned long node, list_operation list)
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
    // libhivex reads every list below an index, the empty ones too, which may be thousands.
    if (list == hivex_node_children && begin != end)
        m_budget.spend_on_indexed_lists(m_file.indexed_lists(node, m_budget.most_indexed_lists()));
    return {begin, end};
}

void registry::values_of_the_node(hive_h *hive, unsigned long node)
{
    const QList<size_t> values = list_of(hive, node, hivex_node_values);
    for (qsizetype position = 0; position < values.size(); ++position) {
        const size_t value = values.at(position);
        const hivex_text name = stored_value_name(hive, value);
        if (!name)
            return;
        find_node_value_length(hive, value, m_value_names.text_of(name.get(), position));
    }
}

bool registry::run_only_multiple(hive_h *hive, int node)
{
    const QMap<QString, int> children = prepare_the_node_key_child(hive, handle(node), false);
    set_current_key_timestamp(hive, handle(node));
    if (children.isEmpty())
        return false;

    // One record for all siblings: what one of them sets is kept where the next does not set it.
    struct_data record;
    for (const int child : children) {
        current_data = &record;
        set_current_key_timestamp(hive, handle(child));
        values_of_the_node(hive, handle(child));
        run_only_multiple_recurse(hive, child, {});
        data_records.append(record);
    }
    current_data = nullptr;
    return true;
}

void registry::run_only_multiple_paths(hive_h *hive, unsigned long node)
{
    const QMap<QString, int> children = prepare_the_node_key_child(hive, node, false);
    for (const int child : children) {
        if (run_only_multiple(hive, child))
            continue;
        set_current_key_timestamp(hive, handle(child));
        data_records.append(read_record(hive, handle(child), &registry::current_data));
    }
}

QMap<QString, int> registry::prepare_the_node_key_child(hive_h *hive, unsigned long node,
                                                        bool read_child_values)
{
    QMap<QString, int> children_by_name;
    const QList<size_t> children = list_of(hive, node, hivex_node_children);
    for (const size_t child : children) {
        const QString name = key_name(hive, child);
        if (m_budget.is_spent())
            break;
        current_key_name = name;
        const auto child_node = static_cast<int>(static_cast<quint32>(child));
        if (name.isNull() || !visit_once(child_node))
            continue;
        if (read_child_values)
            values_of_the_node(hive, child);
        // A hive lists its keys in nearly the same order, so that each belongs at the end.
        children_by_name.insert(children_by_name.cend(), name, child_node);
    }
    return children_by_name;
}

quint32 registry::htoi(unsigned char *buffer, int /*length*/)
{
    return qFromLittleEndian<quint32>(buffer);
}

qint64 registry::htoll(unsigned char *buffer, int /*length*/)
{
    return qFromLittleEndian<qint64>(buffer);
}

qint64 registry::epoc_time_conversion(QByteArray bytes)
{
    unsigned char filetime[sizeof(qint64)] = {};
    const auto available = std::min(bytes.size(), static_cast<qsizetype>(sizeof filetime));
    std::copy_n(bytes.cbegin(), available, filetime);
    return unix_seconds(htoll(filetime, 1));
}

qint64 registry::unix_seconds(qint64 filetime)
{
    // Unsigned arithmetic wraps where the signed difference of a hostile time would overflow.
    const auto ticks = static_cast<qint64>(static_cast<quint64>(filetime) -
                                           static_cast<quint64>(filetime_unix_epoch));
    return ticks / filetime_ticks_per_second;
}

QString registry::convert_data(hive_h *hive, unsigned long value)
{
    return value_text(hive, value);
}

void registry::run_only_multiple_recurse(hive_h *hive, int node, QMap<QString, int> children)
{
    QSet<int> visited{node};
    const auto restore = qScopeGuard([this, outer = m_visited_nodes] { m_visited_nodes = outer; });
    m_visited_nodes = &visited;

    if (children.isEmpty())
        children = prepare_the_node_key_child(hive, handle(node), true);
    else
        visited.unite(QSet<int>(children.cbegin(), children.cend()));
    descend(hive, children);
}

// Depth first with a stack of its own: the evidence chooses the depth, which may be 100,000 keys.
void registry::descend(hive_h *hive, const QMap<QString, int> &children)
{
    struct level
    {
        QMap<QString, int> keys;
        QMap<QString, int>::const_iterator next;
    };
    std::vector<level> levels;
    levels.push_back({children, {}});
    levels.back().next = levels.back().keys.cbegin();
    while (!levels.empty()) {
        level &current = levels.back();
        if (current.next == current.keys.cend()) {
            levels.pop_back();
            continue;
        }
        const int child = *current.next++;
        QMap<QString, int> grandchildren = prepare_the_node_key_child(hive, handle(child), true);
        if (grandchildren.isEmpty())
            continue;
        levels.push_back({std::move(grandchildren), {}});
        levels.back().next = levels.back().keys.cbegin();
    }
}

void registry::find_node_value_length(hive_h * /*hive*/, unsigned long /*value*/,
                                      QString /*value_name*/)
{
}

QByteArray registry::convert_data(hive_h * /*hive*/, unsigned long /*value*/, int /*unused*/)
{
    return {};
}

int registry::convert_data(hive_h * /*hive*/, unsigned long /*value*/, QString /*unused*/)
{
    return 0;
}

void registry::set_current_key_timestamp(hive_h *hive, unsigned long node)
{
    // -1 is libhivex's own answer for a key without a readable time.
    const qint64 filetime =
        m_file.holds(node, key_record.length) ? hivex_node_timestamp(hive, node) : -1;
    current_key_timestamp = QString::number(unix_seconds(filetime));
}

QByteArray registry::value_bytes(hive_h *hive, unsigned long value)
{
    const data_cell cell = data_cell_of(hive, value);
    if (cell.declared_length < large_value_length || !m_file.is_open())
        return bytes_of(read_data(hive, value));

    const QPair<size_t, size_t> key(cell.offset, cell.declared_length);
    const auto known = m_large_values.constFind(key);
    if (known != m_large_values.cend())
        return *known;
    return *m_large_values.insert(key, bytes_of(read_data(hive, value)));
}

QString registry::value_text(hive_h *hive, unsigned long value)
{
    const value_data data = read_data(hive, value);
    if (!data.bytes)
        return {};
    QString text = plain_text(data.bytes.get(), data.length);
    return text.isNull() ? without_zero_bytes(data.bytes.get(), data.length) : text;
}

/// Only the length that comes back with the bytes is trusted: the declared one may be larger.
registry::value_data registry::read_data(hive_h *hive, unsigned long value)
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

QByteArray registry::bytes_of(const value_data &data)
{
    return {data.bytes.get(), data.length};
}

int registry::value_type(hive_h *hive, unsigned long value)
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

QString registry::key_name(hive_h *hive, unsigned long node)
{
    const hivex_text name = stored_key_name(hive, node);
    return name ? QString::fromUtf8(name.get()) : QString();
}

/// Null when the key has no readable name, which differs from an empty name.
hivex_text registry::stored_key_name(hive_h *hive, unsigned long node)
{
    if (!m_file.holds(node, key_record.length))
        return nullptr;
    return affordable(hivex_text(hivex_node_name(hive, node)), node, key_record);
}

/// Null when the value has no readable name, which differs from the empty one of a default value.
hivex_text registry::stored_value_name(hive_h *hive, unsigned long value)
{
    if (!m_file.holds(value, value_record.length))
        return nullptr;
    return affordable(hivex_text(hivex_value_key(hive, value)), value, value_record);
}

/// Null when libhivex refused the name, which Windows may well have stored, and once the budget is
/// spent.
hivex_text registry::affordable(hivex_text name, size_t record, const named_record &layout)
{
    if (!name) {
        m_budget.spend_refused_name(layout.length + m_file.name_length(record, layout));
        return nullptr;
    }
    const auto length = static_cast<qint64>(std::strlen(name.get()));
    return m_budget.spend(layout.length + length) ? std::move(name) : nullptr;
}

/// False when the recursion has met the key before: a hostile hive may list a key under itself.
bool registry::visit_once(int node)
{
    if (m_visited_nodes == nullptr)
        return true;
    const auto known = m_visited_nodes->size();
    m_visited_nodes->insert(node);
    return m_visited_nodes->size() > known;
}
