#include "time_texts.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QTimeZone>

using namespace Qt::StringLiterals;

namespace results {

namespace {

constexpr qint64 seconds_per_day = 86'400;

struct civil_day
{
    qint64 year;
    int month;
    int day;
};

/// The day of the proleptic Gregorian calendar. QDate knows no years beyond some millions, and
/// forged times may lie there.
civil_day day_of(qint64 days_since_1970)
{
    constexpr qint64 days_per_era = 146'097; // 400 years, from March on
    const qint64 days = days_since_1970 + 719'468;
    const qint64 era = (days >= 0 ? days : days - (days_per_era - 1)) / days_per_era;
    const qint64 day_of_era = days - era * days_per_era;
    const qint64 year_of_era =
        (day_of_era - day_of_era / 1460 + day_of_era / 36'524 - day_of_era / 146'096) / 365;
    const qint64 day_of_year =
        day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
    const qint64 shifted_month = (5 * day_of_year + 2) / 153;
    const qint64 day = day_of_year - (153 * shifted_month + 2) / 5 + 1;
    const qint64 month = shifted_month < 10 ? shifted_month + 3 : shifted_month - 9;
    return {year_of_era + era * 400 + (month <= 2 ? 1 : 0), int(month), int(day)};
}

void append_digits(std::string &text, qint64 number, size_t digits)
{
    const std::string shown = std::to_string(number);
    text.append(digits > shown.size() ? digits - shown.size() : 0, '0');
    text += shown;
}

void append_two_digits(std::string &text, char before, qint64 number)
{
    text += before;
    text += static_cast<char>('0' + number / 10);
    text += static_cast<char>('0' + number % 10);
}

void append_year(std::string &text, qint64 year)
{
    if (year < 0 || year > 9999)
        text += year < 0 ? '-' : '+';
    append_digits(text, year < 0 ? -year : year, 4);
}

std::optional<int> number_in(std::string_view digits)
{
    int number = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9')
            return std::nullopt;
        number = number * 10 + (digit - '0');
    }
    return number;
}

/// The day of three numbers that stand in the text; invalid if they are none.
QDate day_in(std::string_view year, std::string_view month, std::string_view day)
{
    const auto y = number_in(year);
    const auto m = number_in(month);
    const auto d = number_in(day);
    return y && m && d ? QDate(*y, *m, *d) : QDate();
}

qint64 seconds_of(const QDate &day)
{
    return (day.toJulianDay() - QDate(1970, 1, 1).toJulianDay()) * seconds_per_day;
}

/// Seconds east of UTC that "Z", "+01:00" or "" tell.
int offset_of(const QString &zone)
{
    if (zone.size() < 6)
        return 0;
    const int seconds = zone.mid(1, 2).toInt() * 3600 + zone.mid(4, 2).toInt() * 60;
    return zone.startsWith(u'-') ? -seconds : seconds;
}

} // namespace

std::string utc_text(qint64 unix_seconds)
{
    qint64 days = unix_seconds / seconds_per_day;
    qint64 second = unix_seconds % seconds_per_day;
    if (second < 0) {
        second += seconds_per_day;
        --days;
    }
    const civil_day day = day_of(days);
    std::string text;
    append_year(text, day.year);
    append_two_digits(text, '-', day.month);
    append_two_digits(text, '-', day.day);
    append_two_digits(text, 'T', second / 3600);
    append_two_digits(text, ':', second / 60 % 60);
    append_two_digits(text, ':', second % 60);
    return text += 'Z';
}

std::optional<std::string> iso_day(std::string_view shown_install_date)
{
    const std::string_view date = shown_install_date;
    if (date.size() != 10 || date[2] != '/' || date[5] != '/')
        return std::nullopt;
    if (!day_in(date.substr(6), date.substr(3, 2), date.substr(0, 2)).isValid())
        return std::nullopt;
    std::string iso(date.substr(6));
    iso.append("-").append(date.substr(3, 2)).append("-").append(date.substr(0, 2));
    return iso;
}

std::optional<qint64> first_second_of(std::string_view day)
{
    if (day.size() != 10 || day[4] != '-' || day[7] != '-')
        return std::nullopt;
    const QDate date = day_in(day.substr(0, 4), day.substr(5, 2), day.substr(8));
    return date.isValid() ? std::optional(seconds_of(date)) : std::nullopt;
}

std::optional<time_span> written_time(const QString &text)
{
    static const QRegularExpression form(
        u"^(\\d{4}-\\d\\d-\\d\\d)(?:[T ](\\d\\d):(\\d\\d)(?::(\\d\\d))?(Z|[+-]\\d\\d:\\d\\d)?)?$"_s);
    const QRegularExpressionMatch parts = form.match(text);
    const auto day = first_second_of(parts.captured(1).toStdString());
    const QTime time(parts.captured(2).toInt(), parts.captured(3).toInt(),
                     parts.captured(4).toInt());
    if (!day || !time.isValid())
        return std::nullopt;
    const qint64 first = *day + QTime(0, 0).secsTo(time) - offset_of(parts.captured(5));
    if (parts.captured(2).isEmpty())
        return time_span{first, first + seconds_per_day - 1};
    return time_span{first, parts.captured(4).isEmpty() ? first + 59 : first};
}

} // namespace results
