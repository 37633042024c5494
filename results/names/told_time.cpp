#include "told_time.h"

#include "time_texts.h"

namespace results {

std::optional<qint64> told_time(const cell &value, column_kind kind)
{
    if (kind == column_kind::unix_time && value.integer() != 0)
        return value.number;
    if (kind == column_kind::install_date) {
        if (const auto day = iso_day(value.text()))
            return first_second_of(*day);
    }
    return std::nullopt;
}

} // namespace results
