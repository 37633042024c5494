#ifndef TAB_ROWS_H
#define TAB_ROWS_H

#include "host_double.h"
#include "worker_fixture.h"

#include <QTest>

namespace test_support {

/// Adds a data row for each result table, named after it, with its name in the column "tab".
inline void add_tab_rows()
{
    QTest::addColumn<QString>("tab");
    const QStringList names = all_tabs();
    for (const QString &name : names)
        QTest::newRow(qUtf8Printable(name)) << name;
}

/// All result tables, in the order in which they are created and filled.
inline QList<const result_tab *> result_tabs()
{
    QList<const result_tab *> tabs;
    for (const artifact *extracted : artifact_list())
        tabs.append(&extracted->table);
    return tabs;
}

/// The names of the tables that are filled from the input.
inline QStringList tabs_read_from(artifact_input input)
{
    QStringList names;
    for (const artifact *extracted : artifact_list()) {
        if (extracted->input == input)
            names.append(extracted->table.name);
    }
    return names;
}

/// The result table of the name; throws std::out_of_range when there is none.
inline const result_tab &tab_named(const QString &name)
{
    return artifact_named(name).table;
}

/// The result table that the current data row is named after.
inline const result_tab &current_tab()
{
    return tab_named(QString::fromLatin1(QTest::currentDataTag()));
}

} // namespace test_support

#endif
