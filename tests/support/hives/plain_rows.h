#ifndef PLAIN_ROWS_H
#define PLAIN_ROWS_H

#include <QString>
#include <QStringList>

namespace test_support {

/// What a table has to get from a hive by libhivex alone: its rows in their order, each with the
/// columns that come from the hive, separated by '|'. Nothing of the plug-in is used, and nothing
/// is limited. Throws std::runtime_error for a hive that does not open, std::out_of_range for a
/// table that is not filled from a hive.
QStringList plain_rows(const QString &table, const QString &hive_path);

/// The expression that gives the same of a table's row.
QString plain_row_expression(const QString &table);

} // namespace test_support

#endif
