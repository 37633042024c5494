#include "comparison.h"

#include <QHash>
#include <QVersionNumber>

#include <utility>

#include "compared_entries.h"

using namespace Qt::StringLiterals;

namespace results {

namespace {

/// The entries that have no counterpart, by account and comparable name; those of a name that
/// several have are left out.
QHash<QString, QString> unique_names(const compared_entries &all, const compared_entries &others)
{
    QHash<QString, QString> names;
    QHash<QString, int> uses;
    for (const auto &[identity, each] : all) {
        const QString name = each.account.toLower() + u'\n' + each.name;
        if (each.name.isEmpty() || others.count(identity) > 0)
            continue;
        names.insert(name, identity);
        ++uses[name];
    }
    names.removeIf([&](const auto &item) { return uses.value(item.key()) > 1; });
    return names;
}

/// The change of a version; nothing if it is the same.
QString version_change(const QString &before, const QString &after)
{
    if (before == after)
        return {};
    const QVersionNumber first = QVersionNumber::fromString(before);
    const QVersionNumber second = QVersionNumber::fromString(after);
    if (first.isNull() || second.isNull() || first == second)
        return u"version changed"_s;
    return first < second ? u"upgraded"_s : u"downgraded"_s;
}

class comparer
{
public:
    comparer(const compared_state &before, const compared_state &after)
        : m_before(before), m_after(after)
    {
    }

    comparison made();

private:
    void compare_table(const compared_table &table);
    void match_renamed_keys(compared_entries &before, const compared_entries &after);
    void compare_entry(const compared_table &table, const compared_entry *before,
                       const compared_entry *after);
    void compare_installation(const compared_entry *before, const compared_entry *after,
                              bool is_versioned);
    void compare_runs(const compared_entry *before, const compared_entry *after);
    void add(const QString &change, const compared_entry *before, const compared_entry *after,
             const QString &value_before = {}, const QString &value_after = {});

    compared_state m_before;
    compared_state m_after;
    QString m_table;
    comparison m_made;
};

void set_text(cell &into, const QString &text)
{
    if (text.isEmpty())
        into.set_null();
    else
        into.set_text(text.toStdString());
}

void set_id(cell &into, const compared_entry *of)
{
    if (of == nullptr)
        into.set_null();
    else
        into.set_number(of->id);
}

void comparer::add(const QString &change, const compared_entry *before, const compared_entry *after,
                   const QString &value_before, const QString &value_after)
{
    const compared_entry &told = after == nullptr ? *before : *after;
    row made;
    made.cells.resize(size_t(m_made.columns.size()));
    cell *next = made.cells.data();
    for (const QString &text :
         {change, told.account, told.subject, value_before, value_after, m_table})
        set_text(*next++, text);
    set_id(*next++, before);
    set_id(*next++, after);
    const bool is_run = after != nullptr && after->last_run != 0;
    set_time(next, is_run ? after->last_run : 0);
    m_made.rows.push_back(std::move(made));
}

comparison comparer::made()
{
    m_made.columns = {
        made_column(u"change"_s, u"what differs"_s),
        made_column(u"system_account"_s, u"account"_s, column_kind::account),
        made_column(u"subject"_s, u"program"_s),
        made_column(u"before"_s, u"version, or counted starts, in the earlier state"_s),
        made_column(u"after"_s, u"the same in the later state"_s),
        made_column(u"row_table"_s, u"table of the rows"_s),
        made_column(u"row_before"_s, u"number of the row in the earlier state"_s,
                    column_kind::number),
        made_column(u"row_after"_s, u"number of the row in the later state"_s, column_kind::number),
    };
    m_made.columns += made_time_columns(u"last_run"_s, u"Last run in the later state"_s);
    for (const compared_table &table : compared_tables())
        compare_table(table);
    return std::move(m_made);
}

/// A key whose name tells its version is another key after an upgrade: it is the same program if it
/// alone has that name, and no key of the old name is left.
void comparer::match_renamed_keys(compared_entries &before, const compared_entries &after)
{
    const QHash<QString, QString> gone = unique_names(before, after);
    const QHash<QString, QString> added = unique_names(after, before);
    for (auto name = gone.cbegin(); name != gone.cend(); ++name) {
        const auto found = added.constFind(name.key());
        if (found == added.cend())
            continue;
        auto moved = before.extract(name.value());
        moved.key() = found.value();
        before.insert(std::move(moved));
    }
}

void comparer::compare_table(const compared_table &table)
{
    m_table = table.name;
    compared_entries before = read_entries(m_before, table, m_made.failure);
    const compared_entries after = read_entries(m_after, table, m_made.failure);
    if (table.kind == table_kind::installations)
        match_renamed_keys(before, after);
    for (const auto &[identity, each] : before) {
        const auto found = after.find(identity);
        compare_entry(table, &each, found == after.end() ? nullptr : &found->second);
    }
    for (const auto &[identity, each] : after) {
        if (before.count(identity) == 0)
            compare_entry(table, nullptr, &each);
    }
}

void comparer::compare_entry(const compared_table &table, const compared_entry *before,
                             const compared_entry *after)
{
    switch (table.kind) {
    case table_kind::installations:
        return compare_installation(before, after, true);
    case table_kind::packages:
        return compare_installation(before, after, false);
    case table_kind::counted_runs:
        return compare_runs(before, after);
    case table_kind::seen_runs:
        if (before == nullptr)
            return add(u"newly run"_s, nullptr, after);
        if (after == nullptr)
            return add(u"entry gone"_s, before, nullptr);
    }
}

void comparer::compare_installation(const compared_entry *before, const compared_entry *after,
                                    bool is_versioned)
{
    if (before == nullptr)
        return add(u"installed"_s, nullptr, after, {}, after->version);
    if (after == nullptr)
        return add(u"removed"_s, before, nullptr, before->version, {});
    const QString change = version_change(before->version, after->version);
    if (is_versioned && !change.isEmpty())
        add(change, before, after, before->version, after->version);
}

/// How often an entry says that a program ran; an entry without a count and a time says nothing.
bool was_run(const compared_entry *of)
{
    return of != nullptr && (of->run_count > 0 || of->last_run != 0);
}

QString count_of(const compared_entry *of)
{
    return of == nullptr ? QString() : QString::number(of->run_count);
}

void comparer::compare_runs(const compared_entry *before, const compared_entry *after)
{
    QString change;
    if (after == nullptr)
        change = u"entry gone"_s;
    else if (was_run(after) && !was_run(before))
        change = u"newly run"_s;
    else if (before == nullptr ||
             (before->run_count == after->run_count && before->last_run == after->last_run))
        return;
    else if (before->run_count > after->run_count || before->last_run > after->last_run)
        change = u"count or time set back"_s;
    else
        change = u"run again"_s;
    add(change, before, after, count_of(before), count_of(after));
}

} // namespace

comparison compare(const compared_state &before, const compared_state &after)
{
    return comparer(before, after).made();
}

} // namespace results
