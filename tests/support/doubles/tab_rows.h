#ifndef TAB_ROWS_H
#define TAB_ROWS_H

#include "host_double.h"
#include "windows_installed_applications_winos.h"

#include <QTest>
#include <stdexcept>

namespace test_support {

/// Adds a data row for each result table, named after it, with its name in the column "tab".
inline void add_tab_rows()
{
    QTest::addColumn<QString>("tab");
    const QStringList names = all_tabs();
    for (const QString &name : names)
        QTest::newRow(qUtf8Printable(name)) << name;
}

/// The result table of the name; throws std::out_of_range when there is none.
inline const result_tab &tab_named(const QString &name)
{
    for (const result_tab *tab : windows_installed_applications_winos::result_tabs()) {
        if (tab->name == name)
            return *tab;
    }
    throw std::out_of_range("no such table");
}

/// The result table that the current data row is named after.
inline const result_tab &current_tab()
{
    return tab_named(QString::fromLatin1(QTest::currentDataTag()));
}

} // namespace test_support

#endif
