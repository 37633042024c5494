#ifndef TOLD_TIME_H
#define TOLD_TIME_H

#include <optional>

#include "column.h"

namespace results {

/// The time in Unix seconds that a cell of a column of that kind tells: an install date is the
/// first second of its day. Nothing where it tells none.
std::optional<qint64> told_time(const cell &value, column_kind kind);

} // namespace results

#endif
