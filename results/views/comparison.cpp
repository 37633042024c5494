#include "comparison.h"

#include <QHash>
#include <QVersionNumber>

#include <map>
#include <optional>
#include <utility>

#include "plain_text.h"
#include "program_paths.h"
#include "row_cursor.h"

using namespace Qt::StringLiterals;

namespace results {

namespace {

/// What a table says of one thing that both states may have.
struct entry
{
    QString account;
    QString subject;
    QString name; ///< by which a key of another name is found; empty if that is no thing to do
    QString version;
    qint64 run_count = 0;
    qint64 last_run = 0;
    qint64 id = 0;
};

enum class table_kind
{
    installations,
    packages,
    counted_runs,
    seen_runs
};

/// A table, and the columns that tell its things apart.
struct compared_table
{
    QString name;
    table_kind kind;
    QStringList identity;
};

const QList<compared_table> &compared_tables()
{
    static const QList<compared_table> tables{
        {u"install_apps_64"_s, table_kind::installations, {u"parent_name"_s}},
        {u"install_apps_32"_s, table_kind::installations, {u"parent_name"_s}},
        {u"metro_apps"_s, table_kind::packages, {u"filename"_s}},
        {u"previously_executed_apps"_s, table_kind::counted_runs, {u"class_id"_s, u"exename"_s}},
        {u"third_party_applications"_s, table_kind::seen_runs, {u"windows_path"_s}},
    };
    return tables;
}

using entries = std::map<QString, entry>;

QString text_in(const row &of, const table_layout &layout, const QString &name)
{
    return shown_text(cell_at(of, place_of(layout.columns(), name)));
}

qint64 number_in(const row &of, const table_layout &layout, const QString &name)
{
    return cell_at(of, place_of(layout.columns(), name)).integer();
}

entry entry_of(const row &of, const table_layout &layout)
{
    entry made;
    made.account = text_in(of, layout, u"system_account"_s);
    made.subject = shown_text(layout.subject_of(of));
    made.name = comparable_name(text_in(of, layout, u"display_name"_s));
    made.version = text_in(of, layout, u"display_version"_s);
    made.run_count = number_in(of, layout, u"runcount"_s);
    made.last_run = number_in(of, layout, u"lastruntime"_s);
    made.id = of.id;
    return made;
}

QString identity_of(const row &of, const table_layout &layout, const QStringList &columns)
{
    QString identity = text_in(of, layout, u"system_account"_s).toLower();
    for (const QString &name : columns)
        identity += u'\n' + text_in(of, layout, name).toLower();
    return identity;
}

/// The things that the table has in the state; of several rows of one thing, the last.
entries read_entries(const compared_state &state, const compared_table &table, QString &failure)
{
    entries read;
    if (!state.result->tables().contains(table.name))
        return read;
    row_cursor rows(*state.result, state.result->layout_of(table.name));
    while (const row *each = rows.next()) {
        const QString source = text_in(*each, rows.layout(), u"source_count_name"_s);
        if (state.source.isEmpty() || state.source == source)
            read[identity_of(*each, rows.layout(), table.identity)] =
                entry_of(*each, rows.layout());
    }
    if (!rows.failure().isEmpty())
        failure = rows.failure();
    return read;
}

/// The entries that have no counterpart, by account and comparable name; those of a name that
/// several have are left out.
QHash<QString, QString> unique_names(const entries &all, const entries &others)
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
    void match_renamed_keys(entries &before, const entries &after);
    void compare_entry(const compared_table &table, const entry *before, const entry *after);
    void compare_installation(const entry *before, const entry *after, bool is_versioned);
    void compare_runs(const entry *before, const entry *after);
    void add(const QString &change, const entry *before, const entry *after,
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

void set_id(cell &into, const entry *of)
{
    if (of == nullptr)
        into.set_null();
    else
        into.set_number(of->id);
}

void comparer::add(const QString &change, const entry *before, const entry *after,
                   const QString &value_before, const QString &value_after)
{
    const entry &told = after == nullptr ? *before : *after;
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
void comparer::match_renamed_keys(entries &before, const entries &after)
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
    entries before = read_entries(m_before, table, m_made.failure);
    const entries after = read_entries(m_after, table, m_made.failure);
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

void comparer::compare_entry(const compared_table &table, const entry *before, const entry *after)
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

void comparer::compare_installation(const entry *before, const entry *after, bool is_versioned)
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
bool was_run(const entry *of)
{
    return of != nullptr && (of->run_count > 0 || of->last_run != 0);
}

QString count_of(const entry *of)
{
    return of == nullptr ? QString() : QString::number(of->run_count);
}

void comparer::compare_runs(const entry *before, const entry *after)
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
