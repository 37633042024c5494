#include "table_layout.h"

#include <algorithm>

#include "table_descriptions.h"

namespace results {

namespace {

const cell empty_cell;

} // namespace

int place_of(const QList<column> &columns, const QString &name)
{
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [&](const column &each) { return each.name == name; });
    return found == columns.end() ? -1 : int(found - columns.begin());
}

int place_of(const QList<column> &columns, column_kind kind)
{
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [&](const column &each) { return each.kind == kind; });
    return found == columns.end() ? -1 : int(found - columns.begin());
}

const cell &cell_at(const row &of, int place)
{
    return place < 0 ? empty_cell : of.cells[size_t(place)];
}

table_layout::table_layout(const QString &table, const QStringList &stored_columns,
                           bool with_derived)
    : m_name(table)
{
    for (const QString &name : stored_columns) {
        m_stored.append(int(m_columns.size()));
        m_columns.append(described_column(table, name));
        if (with_derived)
            append_derived(stored_columns);
    }
    const int last_run = place_of(m_columns, column_kind::unix_time);
    for (derivation &each : m_derivations)
        each.companion = last_run;
    // From the last to the first: a derived column before its stored one, and the display name
    // before the name of the key.
    for (int place = int(m_columns.size()) - 1; place >= 0; --place) {
        if (m_columns[place].is_subject)
            m_subjects.append(place);
    }
}

void table_layout::append_derived(const QStringList &stored_columns)
{
    QList<column> derived = columns_derived_of(m_columns.last());
    const bool is_any_taken = std::any_of(derived.begin(), derived.end(), [&](const column &each) {
        return stored_columns.contains(each.name);
    });
    if (derived.isEmpty() || is_any_taken)
        return;
    derivation made = derivation_of(m_columns.last().kind);
    column &stored = m_columns.last();
    for (column &each : derived)
        each.is_shown = each.is_shown && stored.is_shown;
    stored.is_shown = stored.is_shown && stored.kind == column_kind::run_count;
    made.stored = int(m_columns.size()) - 1;
    made.first_made = int(m_columns.size());
    m_derivations.push_back(made);
    m_columns += derived;
}

QString table_layout::title() const
{
    return title_of(m_name);
}

void table_layout::derive(row &of) const
{
    for (const derivation &each : m_derivations)
        each.fill(of.cells[size_t(each.stored)], cell_at(of, each.companion),
                  &of.cells[size_t(each.first_made)]);
}

const cell &table_layout::subject_of(const row &of) const
{
    for (const int place : m_subjects) {
        if (!cell_at(of, place).is_empty())
            return cell_at(of, place);
    }
    return empty_cell;
}

} // namespace results
