#include "rebuilt_generations.h"

#include <algorithm>

#include "deleted_texts.h"
#include "recovered_paths.h"
#include "row_lookups.h"

using namespace Qt::StringLiterals;

namespace {

/// libhivex reads no list that is longer.
constexpr qsizetype most_rows_of_a_generation = 50'000;

/// The name as libhivex gives it.
QString shown_name(const QString &name)
{
    const qsizetype end = name.indexOf(QChar::Null);
    return end < 0 ? name : name.left(end);
}

QString rotated(QString name)
{
    constexpr int places = 13;
    constexpr int letters = 26;
    for (QChar &c : name) {
        for (const char16_t first : {u'A', u'a'}) {
            const int letter = c.unicode() - first;
            if (letter >= 0 && letter < letters) {
                c = QChar(char16_t(first + (letter + places) % letters));
                break;
            }
        }
    }
    return name;
}

class generation_builder
{
public:
    generation_builder(const deleted_records &records, const QList<recovered_key> &keys)
        : m_records(records), m_keys(keys)
    {
    }

    void add(const deleted_key &key);
    void add_lookups();
    rebuilt_generations take() && { return {std::move(m_generations), m_without_place}; }

private:
    void add_key(const recovered_key &wanted, const deleted_key &key, const QStringList &path);
    void add_values(const recovered_key &wanted, const deleted_key &key, const QStringList &path);
    rebuilt_generation *generation_for(const recovered_key &wanted, const QString &group,
                                       const QString &name, const placed_record &placed);

    const deleted_records &m_records;
    const QList<recovered_key> &m_keys;
    std::vector<rebuilt_generation> m_generations;
    QHash<QString, size_t> m_next; ///< the generation of the next record that gives a row
    qint64 m_without_place = 0;
};

void generation_builder::add(const deleted_key &key)
{
    if (key.path != path_state::whole && key.path != path_state::doubtful)
        return;
    const QStringList path = m_records.path_of(key);
    if (!is_readable(path))
        return;
    for (const recovered_key &wanted : m_keys) {
        const QStringList names = names_of(wanted.key);
        const qsizetype level = path.size() - names.size();
        if (!starts_with(path, names) || level < wanted.key.first_value_level ||
            level > wanted.key.last_level)
            continue;
        if (!wanted.rule.is_of_keys)
            add_values(wanted, key, path);
        else if (!key.is_alive)
            add_key(wanted, key, path);
    }
}

/// The hive that has no record yet that gives the same row; null if every one has.
rebuilt_generation *generation_builder::generation_for(const recovered_key &wanted,
                                                       const QString &group, const QString &name,
                                                       const placed_record &placed)
{
    size_t &next = m_next[row_id(wanted.tabs.first(), group, name).toCaseFolded()];
    while (next < m_generations.size() &&
           m_generations[next].by_row.size() >= most_rows_of_a_generation)
        ++next;
    if (next >= most_generations) {
        ++m_without_place;
        return nullptr;
    }
    if (next == m_generations.size())
        m_generations.emplace_back();
    rebuilt_generation &generation = m_generations[next++];
    for (const QString &tab : wanted.tabs)
        generation.by_row.insert(row_id(tab, group, name), placed);
    return &generation;
}

/// A key that has lost all of its values is no row: the row would say that it had none.
void generation_builder::add_key(const recovered_key &wanted, const deleted_key &key,
                                 const QStringList &path)
{
    const auto is_there = [this](const deleted_value &value) {
        return value.data == record_flaw::none && m_records.name_of(value).isValidUtf16();
    };
    const bool has_any = std::any_of(key.values.begin(), key.values.end(), is_there);
    if (key.values_told > 0 && !has_any)
        return;
    const placed_record placed{key.offset, state_of(key), text_of(key.path)};
    rebuilt_generation *generation = generation_for(wanted, {}, shown_name(path.last()), placed);
    if (generation == nullptr)
        return;
    generation->hive.add_key(path, key.last_write);
    for (const deleted_value &value : key.values) {
        if (is_there(value))
            generation->hive.add_value(path, m_records.name_of(value), value.type,
                                       m_records.data_of(value));
    }
}

void generation_builder::add_values(const recovered_key &wanted, const deleted_key &key,
                                    const QStringList &path)
{
    const QString group = wanted.rule.group_column.isEmpty()
                              ? QString()
                              : shown_name(path.value(names_of(wanted.key).size()));
    for (const deleted_value &value : key.values) {
        const QString name = m_records.name_of(value);
        if (value.data != record_flaw::none || !name.isValidUtf16())
            continue;
        QString shown = wanted.rule.name_column.isEmpty() ? QString() : shown_name(name);
        if (wanted.rule.is_rotated)
            shown = rotated(shown);
        const placed_record placed{value.offset, state_of(value, key), text_of(key.path)};
        rebuilt_generation *generation = generation_for(wanted, group, shown, placed);
        if (generation == nullptr)
            continue;
        generation->needs_lookups = generation->needs_lookups || !wanted.lookups.isEmpty();
        generation->hive.add_key(path, key.last_write);
        generation->hive.add_value(path, name, value.type, m_records.data_of(value));
    }
}

void generation_builder::add_lookups()
{
    const auto needs_lookups = [](const rebuilt_generation &each) { return each.needs_lookups; };
    if (std::none_of(m_generations.begin(), m_generations.end(), needs_lookups))
        return;
    const QList<lookup_value> lookups = row_lookups(m_records, m_keys).values();
    for (rebuilt_generation &generation : m_generations) {
        if (!generation.needs_lookups)
            continue;
        for (const lookup_value &value : lookups)
            generation.hive.add_value(value.path, value.name, value.type, value.data);
    }
}

} // namespace

QString row_id(const QString &tab, const QString &group, const QString &name)
{
    return tab + QChar::Null + group + QChar::Null + name;
}

rebuilt_generations rebuild(const deleted_records &records, const QList<recovered_key> &keys,
                            bool is_of_users, const cancel_test &cancelled)
{
    QList<recovered_key> of_hive = keys;
    of_hive.removeIf([&](const recovered_key &key) { return key.is_of_users != is_of_users; });
    generation_builder builder(records, of_hive);
    for (const deleted_key &key : records.keys()) {
        if (is_cancelled(cancelled))
            break;
        builder.add(key);
    }
    builder.add_lookups();
    return std::move(builder).take();
}
