#include "registry.h"

#include "typed_text.h"
#include "value_text.h"

#include <QScopeGuard>
#include <QStringTokenizer>
#include <QtEndian>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

/// 100 ns intervals from 1601-01-01 to 1970-01-01.
constexpr qint64 filetime_unix_epoch = 116444736000000000;
constexpr qint64 filetime_ticks_per_second = 10000000;

const auto root_key_name = QStringLiteral("the root key");

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
    if (hive_path.isEmpty() || key_path.isEmpty())
        return -1;
    return walk_opened_hive(hive_path, [&](hive_h *hive, unsigned long root) {
        const unsigned long node = get_user_node_handle(hive, key_path, root);
        if (read_key_values) {
            current_key_name = key_name(hive, node);
            read_key(hive, node);
        } else {
            run_only_multiple_paths(hive, node);
        }
    });
}

int registry::walk_opened_hive(const QString &hive_path,
                               const std::function<void(hive_h *, unsigned long)> &walk)
{
    const auto walk_end = qScopeGuard([this] { end_walk(); });
    m_early_end.clear();
    m_replaced_texts = 0;
    m_unread = {};
    m_walked = opened(hive_path);
    if (m_walked == nullptr)
        return -1;
    walk(m_walked->handle(), m_walked->root());
    if (has_ended_early()) {
        const QString key_path = m_walked->last_key_path();
        m_early_end = key_path.isEmpty() ? root_key_name : key_path;
    }
    return 0;
}

/// Null when the hive cannot be opened.
guarded_hive *registry::opened(const QString &hive_path)
{
    if (m_hive_pool != nullptr)
        return m_hive_pool->open(hive_path);
    return m_hive.open(hive_path) ? &m_hive : nullptr;
}

void registry::end_walk()
{
    m_walked = nullptr;
    m_hive.close();
    m_value_names = {};
    m_subkey_names.reset();
    m_partly_listed.clear();
}

/// The hive that this walker has opened is guarded, any other one cannot be.
unguarded_hive &registry::reader_of(hive_h *hive)
{
    guarded_hive &own_hive = m_walked == nullptr ? m_hive : *m_walked;
    if (hive == own_hive.handle())
        return own_hive;
    m_foreign_hive.set_handle(hive);
    return m_foreign_hive;
}

unsigned long registry::get_user_node_handle(hive_h *hive, QString key_path,
                                             unsigned long start_node)
{
    unsigned long node = start_node;
    for (const QStringView part : QStringView(key_path).tokenize(u'\\', Qt::SkipEmptyParts)) {
        if (node == 0)
            break;
        const unsigned long parent = node;
        const QByteArray name = part.toLocal8Bit();
        node = m_subkey_names ? kept_child_named(hive, node, name) : child_named(hive, node, name);
        if (node == 0 && m_partly_listed.contains(parent))
            m_unread.note_hidden(key_path, path_function_of(parent));
    }
    return node;
}

/// Whether what cannot be read of the hive is unread in the walk: it walks that hive, and goes on.
bool registry::is_walking(hive_h *hive) const
{
    return m_walked != nullptr && hive == m_walked->handle() && !has_ended_early();
}

/// A key that is not there, whose handle is 0, has nothing to list.
void registry::note_unlisted(hive_h *hive, unsigned long node)
{
    if (node != 0 && is_walking(hive))
        m_unread.note_unlisted(node, path_function_of(node));
}

void registry::note_unnamed(hive_h *hive, unsigned long node)
{
    if (is_walking(hive))
        m_unread.note_unnamed(node, path_function_of(node));
}

/// Gives the path of a key that the walk has listed.
unread_places::path_function registry::path_function_of(unsigned long node) const
{
    return [this, node] {
        const QString path = m_walked->key_path(node);
        return path.isEmpty() ? root_key_name : path;
    };
}

/// Calls `visit` with each subkey and its name, until that returns false. Ends, as
/// hivex_node_get_child() does, at a name that cannot be read; that one would also read past the
/// hive and without a budget.
template<typename function>
void registry::visit_named_subkeys(hive_h *hive, unsigned long node, function visit)
{
    unguarded_hive &reader = reader_of(hive);
    const hivex_handles subkeys = reader.subkeys(node);
    bool is_listed = bool(subkeys);
    for (const size_t child : entries_of(subkeys)) {
        const hivex_text name = reader.key_name(child);
        is_listed = bool(name);
        if (!name || !visit(child, name.get()))
            break;
    }
    if (!is_listed && is_walking(hive))
        m_partly_listed.insert(node);
}

/// The search of hivex_node_get_child(), which compares without regard to ASCII case.
unsigned long registry::child_named(hive_h *hive, unsigned long node, const QByteArray &wanted)
{
    unsigned long found = 0;
    visit_named_subkeys(hive, node, [&](unsigned long child, const char *name) {
        if (qstricmp(name, wanted.constData()) == 0)
            found = child;
        return found == 0;
    });
    return found;
}

/// The same search among names that are kept.
unsigned long registry::kept_child_named(hive_h *hive, unsigned long node, const QByteArray &wanted)
{
    auto known = m_subkey_names->find(node);
    if (known == m_subkey_names->end()) {
        known = m_subkey_names->insert(node, {});
        visit_named_subkeys(hive, node, [&](unsigned long child, const char *name) {
            const QByteArray key = QByteArray(name).toLower();
            if (!known->contains(key))
                known->insert(key, child);
            return true;
        });
    }
    return known->value(QByteArray(wanted.constData()).toLower(), 0);
}

void registry::values_of_the_node(hive_h *hive, unsigned long node)
{
    unguarded_hive &reader = reader_of(hive);
    const hivex_handles handles = reader.values(node);
    if (!handles)
        note_unlisted(hive, node);
    const QList<size_t> values = entries_of(handles);
    for (qsizetype position = 0; position < values.size(); ++position) {
        const size_t value = values.at(position);
        const hivex_text name = reader.value_name(value);
        if (!name)
            return note_unnamed(hive, node);
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
    const hivex_handles subkeys = reader_of(hive).subkeys(node);
    if (!subkeys)
        note_unlisted(hive, node);
    for (const size_t child : entries_of(subkeys)) {
        const QString name = key_name(hive, child);
        if (has_ended_early())
            break;
        current_key_name = name;
        const auto child_node = static_cast<int>(static_cast<quint32>(child));
        if (!is_to_be_listed(hive, node, child_node, name))
            continue;
        if (read_child_values)
            values_of_the_node(hive, child);
        // A hive lists its keys in nearly the same order, so that each belongs at the end.
        children_by_name.insert(children_by_name.cend(), name, child_node);
    }
    return children_by_name;
}

/// False for a subkey whose name cannot be read, and for one that the recursion has met before.
bool registry::is_to_be_listed(hive_h *hive, unsigned long parent, int child, const QString &name)
{
    if (name.isNull()) {
        note_unnamed(hive, parent);
        return false;
    }
    const bool is_new = visit_once(child);
    if (!is_new && is_walking(hive))
        m_unread.note_repeated(path_function_of(handle(child)));
    return is_new;
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
    current_key_timestamp = QString::number(unix_seconds(reader_of(hive).last_write_time(node)));
}

QByteArray registry::value_bytes(hive_h *hive, unsigned long value)
{
    const unguarded_hive::value_data data = reader_of(hive).data(value);
    return {data.bytes.get(), data.length};
}

QString registry::value_text(hive_h *hive, unsigned long value)
{
    const unguarded_hive::value_data data = reader_of(hive).data(value);
    if (!data.bytes)
        return {};
    if (m_decodes_by_type) {
        const auto typed = text_by_type({data.bytes.get(), data.length}, value_type(hive, value));
        if (typed) {
            m_replaced_texts += typed->has_replacements ? 1 : 0;
            return typed->text;
        }
    }
    return text_of_data(data.bytes.get(), data.length);
}

int registry::value_type(hive_h *hive, unsigned long value)
{
    return reader_of(hive).value_type(value);
}

QString registry::key_name(hive_h *hive, unsigned long node)
{
    const hivex_text name = reader_of(hive).key_name(node);
    return name ? QString::fromUtf8(name.get()) : QString();
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
