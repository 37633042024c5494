#ifndef SELECTED_ROWS_H
#define SELECTED_ROWS_H

#include <memory>

#include "opened_result.h"
#include "row_filter.h"

namespace results {

/// `all`, or what the filter lets pass of it where one is set.
std::unique_ptr<row_source> filtered(std::unique_ptr<row_source> all, const row_filter &filter);

/// The rows of a table that the filter lets pass, in the order of their ids. The result must
/// outlive them.
std::unique_ptr<row_source> selected_rows(const opened_result &result, const table_layout &layout,
                                          const row_filter &filter);

} // namespace results

#endif
