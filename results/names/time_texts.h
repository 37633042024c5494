#ifndef TIME_TEXTS_H
#define TIME_TEXTS_H

#include <QString>

#include <optional>
#include <string>
#include <string_view>

namespace results {

/// Unix seconds as ISO 8601 in UTC, "2023-12-28T08:30:44Z". Years that have not four digits get a
/// sign, as the standard wants it: "+30828-09-14T02:48:05Z".
std::string utc_text(qint64 unix_seconds);

/// "2023-11-06" of an install date that stands as "06/11/2023"; nothing if the text is no such day.
std::optional<std::string> iso_day(std::string_view shown_install_date);

/// The first second of a day of the form "2023-11-06", in UTC; nothing if the text is no day.
std::optional<qint64> first_second_of(std::string_view day);

/// A span of time that a person has written: both ends in Unix seconds, both within it.
struct time_span
{
    qint64 first;
    qint64 last;
};

/// Reads "2023-12-28", which is all of that day, "2023-12-28T08:30", which is all of that minute,
/// and "2023-12-28T08:30:44". Without a zone ("Z", "+01:00") it is UTC. A blank may stand for the
/// "T". Nothing if the text is no time.
std::optional<time_span> written_time(const QString &text);

} // namespace results

#endif
