#include "made_columns.h"

#include "time_texts.h"

using namespace Qt::StringLiterals;

namespace results {

column made_column(const QString &name, const QString &meaning, column_kind kind, bool is_shown)
{
    return {name, meaning, kind, true, is_shown, false, file_time::none};
}

QList<column> made_time_columns(const QString &name, const QString &meaning)
{
    return {made_column(name, meaning, column_kind::unix_time, false),
            made_column(name + "_utc"_L1, meaning + ", in UTC"_L1, column_kind::utc_time)};
}

void set_time(cell *seconds_and_text, qint64 unix_seconds)
{
    if (unix_seconds == 0) {
        seconds_and_text[0].set_null();
        seconds_and_text[1].set_null();
    } else {
        seconds_and_text[0].set_number(unix_seconds);
        seconds_and_text[1].set_text(utc_text(unix_seconds));
    }
}

} // namespace results
