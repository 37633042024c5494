#ifndef TABLE_LAYOUT_H
#define TABLE_LAYOUT_H

#include <QList>
#include <QString>
#include <QStringList>

#include "column.h"
#include "derivations.h"

namespace results {

/// The columns of one table of a result: those of the database, each followed by what is derived of
/// it.
class table_layout
{
public:
    /// The layout of a table with these columns. Derived columns are left out where the database
    /// has a column of their name, and where they are not wanted.
    table_layout(const QString &table, const QStringList &stored_columns, bool with_derived = true);

    const QString &name() const { return m_name; }
    QString title() const;
    const QList<column> &columns() const { return m_columns; }
    /// The places of the columns of the database, in the database's order.
    const QList<int> &stored() const { return m_stored; }
    /// The places of the columns that name what a row is about, the best first.
    const QList<int> &subjects() const { return m_subjects; }
    /// Fills the derived cells of a row whose stored cells are filled.
    void derive(row &of) const;
    /// What the row is about: the first of the columns that name it that is not empty, a derived
    /// one before the stored one that it comes from.
    const cell &subject_of(const row &of) const;

private:
    void append_derived(const QStringList &stored_columns);

    QString m_name;
    QList<column> m_columns;
    QList<int> m_stored;
    QList<int> m_subjects;
    std::vector<derivation> m_derivations;
};

} // namespace results

#endif
