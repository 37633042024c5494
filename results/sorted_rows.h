#ifndef SORTED_ROWS_H
#define SORTED_ROWS_H

#include <memory>
#include <vector>

#include "column.h"

namespace results {

/// How rows are ordered: by one column, numbers before texts, texts without regard to letter case.
/// Empty cells come last. Rows that are alike keep their order.
struct sort_order
{
    QString column;
    bool is_descending = false;
};

/// The ids of the rows in that order. Keeps the sorted column in memory.
std::vector<qint64> sorted_ids(row_source &rows, const sort_order &order);

/// Sorts rows that are in memory.
void sort_rows(std::vector<row> &rows, const QList<column> &columns, const sort_order &order);

} // namespace results

#endif
