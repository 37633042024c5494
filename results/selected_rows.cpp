#include "selected_rows.h"

#include "row_cursor.h"

namespace results {

std::unique_ptr<row_source> filtered(std::unique_ptr<row_source> all, const row_filter &filter)
{
    if (!filter.is_set())
        return all;
    return std::make_unique<filtered_rows>(std::move(all), filter);
}

std::unique_ptr<row_source> selected_rows(const opened_result &result, const table_layout &layout,
                                          const row_filter &filter)
{
    return filtered(std::make_unique<row_cursor>(result, layout), filter);
}

} // namespace results
