#include "plugin_static_function.h"

#include <QDateTime>
#include <QFileInfo>
#include <QLocale>
#include <QRegularExpression>
#include <QTimeZone>
#include <QtNumeric>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <optional>

#ifdef Q_OS_LINUX
#include <QFile>
#include <fcntl.h>
#include <sys/stat.h>
#endif

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 seconds_1970_to_2001 = 978307200;
constexpr qint64 seconds_1601_to_1970 = 11644473600;

// The date formats that the examiner can choose. Any other choice gives the last one.
QString selected_qt_pattern()
{
    switch (plugin_static_function::examiner_selected_date_format_int) {
    case 0:
        return u"yyyy-MMM-dd hh:mm:ss"_s;
    case 1:
        return u"MMM-dd-yyyy hh:mm:ss"_s;
    default:
        return u"dd-MMM-yyyy hh:mm:ss"_s;
    }
}

// The same for times before 1970. An unknown choice gives an empty text: the length is 0.
size_t format_broken_down(const std::tm &time, std::array<char, 80> &buffer)
{
    switch (plugin_static_function::examiner_selected_date_format_int) {
    case 0:
        return std::strftime(buffer.data(), buffer.size(), "%Y/%m/%d %H:%M:%S", &time);
    case 1:
        return std::strftime(buffer.data(), buffer.size(), "%m/%d/%Y %H:%M:%S", &time);
    case 2:
        return std::strftime(buffer.data(), buffer.size(), "%d/%m/%Y %H:%M:%S", &time);
    default:
        return 0;
    }
}

QString before_first(const QString &text, QChar separator)
{
    return text.section(separator, 0, 0);
}

// Whole seconds of a decimal text with an optional fraction; nothing for 0 and for what is no
// number.
std::optional<qint64> whole_seconds(const QString &text)
{
    const qint64 seconds = before_first(text.trimmed(), u'.').toLongLong();
    return seconds == 0 ? std::nullopt : std::optional<qint64>(seconds);
}

QString with_qt_pattern(const QDateTime &time)
{
    return QLocale::c().toString(time, selected_qt_pattern());
}

QString with_strftime_pattern(qint64 seconds)
{
    const std::time_t time = static_cast<std::time_t>(seconds);
    std::tm broken_down = {};
    if (gmtime_r(&time, &broken_down) == nullptr)
        return {};
    std::array<char, 80> buffer = {};
    const size_t length = format_broken_down(broken_down, buffer);
    return QString::fromLatin1(buffer.data(), static_cast<qsizetype>(length));
}

// Empty for a time that no signed 64-bit number of seconds holds.
QString display_at_selected_offset(const QString &epoch_seconds)
{
    const std::optional<qint64> seconds = whole_seconds(epoch_seconds);
    qint64 shifted = 0;
    if (!seconds ||
        qAddOverflow(*seconds, plugin_static_function::examiner_selected_timezone_offset_qint64,
                     &shifted))
        return {};
    if (shifted < 0)
        return with_strftime_pattern(shifted);
    // Local time adds the machine's own offset again.
    qint64 local = 0;
    if (qSubOverflow(shifted, plugin_static_function::examiner_machine_timezone_offset_qint64,
                     &local))
        return {};
    return with_qt_pattern(QDateTime::fromSecsSinceEpoch(local));
}

QString padded(qint64 number)
{
    return QString::number(number).rightJustified(2, u'0');
}

// For example "+0530". An offset of less than a minute has no sign of its own.
QString offset_text(qint64 offset_seconds)
{
    const qint64 signed_minutes = offset_seconds / 60;
    const qint64 minutes = std::abs(signed_minutes);
    return (signed_minutes < 0 ? u'-' : u'+') + padded(minutes / 60) + padded(minutes % 60);
}

// Date and time are parsed apart. Parsed together they would first be taken as local time, in which
// the hour that a daylight-saving change skips does not exist.
std::optional<qint64> utc_seconds(const QString &date_text, QLatin1StringView date_pattern,
                                  const QString &time_text, QLatin1StringView time_pattern)
{
    const QDate date = QLocale::c().toDate(date_text, QString(date_pattern));
    const QTime time = QLocale::c().toTime(time_text, QString(time_pattern));
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    const QTime whole_second(time.hour(), time.minute(), time.second());
    return QDateTime(date, whole_second, QTimeZone::utc()).toSecsSinceEpoch();
}

QString as_text(const std::optional<qint64> &seconds)
{
    return seconds ? QString::number(*seconds) : QString();
}

#ifdef Q_OS_LINUX

qint64 file_seconds(const statx_timestamp &time)
{
    return (time.tv_sec * 1000 + time.tv_nsec / 1000000) / 1000;
}

// QFileInfo would ask the system twice and convert each time through the local time zone.
struct_GLOBAL_ARTIFACT_file_times file_times(const QString &path)
{
    struct statx file = {};
    if (path.contains(QChar::Null) || statx(AT_FDCWD, QFile::encodeName(path).constData(), 0,
                                            STATX_BTIME | STATX_ATIME | STATX_MTIME, &file) != 0)
        return {};
    return {file_seconds(file.stx_btime), file_seconds(file.stx_atime),
            file_seconds(file.stx_mtime)};
}

#else

qint64 file_seconds(const QDateTime &time)
{
    return time.isValid() ? time.toMSecsSinceEpoch() / 1000 : 0;
}

struct_GLOBAL_ARTIFACT_file_times file_times(const QString &path)
{
    const QFileInfo file(path);
    if (!file.exists())
        return {};
    return {file_seconds(file.birthTime()), file_seconds(file.lastRead()),
            file_seconds(file.lastModified())};
}

#endif

// The dates of "NAME = DATE" or "NAME = ( "DATE", "DATE" )" in a metadata listing.
QStringList listed_dates(const QString &attribute_listing, const QString &attribute)
{
    const QRegularExpression entry(u"\\b"_s + attribute +
                                   u"[ \\t]*=[ \\t]*(\\([^)]*\\)|[^\\n]*)"_s);
    static const QRegularExpression date(
        u"[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}[^\",\\n)]*"_s);
    QStringList seconds;
    for (const QRegularExpressionMatch &match :
         date.globalMatch(entry.match(attribute_listing).captured(1)))
        seconds.append(plugin_static_function::convert_human_readable_to_epoch_2(match.captured()));
    seconds.removeAll(QString());
    return seconds;
}

} // namespace

struct_GLOBAL_ARTIFACT_file_times
plugin_static_function::get_posix_timestamp(const QString &file_path, const QString &path_prefix)
{
    const QString path = file_path.trimmed();
    const QString prefix = path_prefix.trimmed();
    if (path.isEmpty() || prefix.isEmpty())
        return {};
    return file_times(prefix + path);
}

QString plugin_static_function::convert_apple_time_to_epoch(const QString &apple_seconds)
{
    const QString text = apple_seconds.trimmed();
    if (text.isEmpty() || text == "0"_L1)
        return {};
    return QString::number(before_first(text, u'.').toInt() + seconds_1970_to_2001);
}

QString plugin_static_function::convert_google_time_to_epoch(const QString &google_microseconds)
{
    if (google_microseconds.isEmpty() || google_microseconds == "0"_L1)
        return {};
    if (google_microseconds.size() == 10)
        return google_microseconds;
    const auto microseconds = static_cast<qint64>(google_microseconds.toULongLong());
    return QString::number(microseconds / 1000000 - seconds_1601_to_1970);
}

QString plugin_static_function::convert_epoch_to_custom(const QString &epoch_seconds)
{
    return display_at_selected_offset(epoch_seconds);
}

QString plugin_static_function::get_human_readable_time(const QString &duration_seconds)
{
    const QString text = duration_seconds.trimmed();
    const int duration = before_first(text, u'.').toInt();
    if (text.isEmpty() || duration < 0)
        return {};
    const QString minutes_and_seconds = padded(duration / 60 % 60) + u':' + padded(duration % 60);
    if (duration < 3600)
        return minutes_and_seconds + " Min"_L1;
    return padded(duration / 3600) + u':' + minutes_and_seconds + " Hrs"_L1;
}

int plugin_static_function::convert_timezone_to_seconds_1(const QString &hours_and_minutes)
{
    const qint64 hours = hours_and_minutes.left(2).toInt();
    const qint64 minutes = hours_and_minutes.mid(2).toInt();
    return static_cast<int>((hours * 60 + minutes) * 60);
}

QString plugin_static_function::convert_human_readable_to_epoch(const QString &date_text)
{
    const QString text = date_text.trimmed();
    if (text.isEmpty() || text == "0"_L1)
        return {};
    const QString without_day = text.mid(text.indexOf(u',') + 1);
    const QString moment = without_day.left(without_day.lastIndexOf(u' ')).trimmed();
    return as_text(utc_seconds(moment.section(u' ', 0, -2), "dd MMM yyyy"_L1,
                               moment.section(u' ', -1), "hh:mm:ss"_L1));
}

QString plugin_static_function::convert_human_readable_to_epoch_1(const QString &date_text)
{
    // Exports put a narrow no-break space before the marker; simplified() makes it a plain blank.
    const QString text = date_text.simplified() + u' ';
    static const QStringList utc_names = {u""_s, u"UTC"_s, u"GMT"_s, u"Z"_s};
    for (const QString &marker : {u" AM "_s, u" PM "_s}) {
        const QStringList parts = text.split(marker);
        if (parts.size() != 2 || !utc_names.contains(parts.last().trimmed()))
            continue;
        const QString &moment = parts.first();
        return as_text(utc_seconds(moment.section(u", "_s, 0, -2), "MMM d, yyyy"_L1,
                                   moment.section(u", "_s, -1) + marker.trimmed().prepend(u' '),
                                   "h:mm:ss AP"_L1));
    }
    return {};
}

QString plugin_static_function::convert_human_readable_to_epoch_2(const QString &date_text)
{
    static const QRegularExpression pattern(
        u"^(\\S+) ([0-9:]+)(?:\\.[0-9]*)?(?: ?([+-])(0[0-9]|1[0-4]):?([0-5][0-9])?)?$"_s);
    const QRegularExpressionMatch parts = pattern.match(date_text.trimmed());
    const std::optional<qint64> seconds =
        utc_seconds(parts.captured(1), "yyyy-MM-dd"_L1, parts.captured(2), "hh:mm:ss"_L1);
    if (!seconds)
        return {};
    const int offset = convert_timezone_to_seconds_1(parts.captured(4) + parts.captured(5));
    return QString::number(parts.captured(3) == "-"_L1 ? *seconds + offset : *seconds - offset);
}

QString
plugin_static_function::convert_timestamp_to_human_readable_in_GMT(const QString &epoch_seconds)
{
    const std::optional<qint64> seconds = whole_seconds(epoch_seconds);
    return seconds ? with_qt_pattern(QDateTime::fromSecsSinceEpoch(*seconds, QTimeZone::utc()))
                   : QString();
}

QString plugin_static_function::convert_timestamp_to_human_readable_with_timezone(
    const QString &epoch_seconds)
{
    app_debug(
        u"[convert_timestamp_to_human_readable_with_timezone] Start"_s,
        u"static QString plugin_static_function::convert_timestamp_to_human_readable_with_timezone(QString)"_s);
    const QString time = display_at_selected_offset(epoch_seconds);
    return time.isEmpty() ? time
                          : time + u' ' + offset_text(examiner_selected_timezone_offset_qint64);
}

QString plugin_static_function::convert_T_Z_time_to_epoch(const QString &date_text)
{
    static const QRegularExpression pattern(u"^([0-9-]+)(?:[T ]([0-9:]+(?:\\.[0-9]+)?)Z?)?$"_s);
    const QRegularExpressionMatch parts = pattern.match(date_text.trimmed());
    const QString date = parts.captured(1);
    const QString time = before_first(parts.captured(2), u'.');
    if (!parts.hasCaptured(2))
        return as_text(utc_seconds(date, "yyyyMMdd"_L1, u"000000"_s, "hhmmss"_L1));
    if (date.contains(u'-'))
        return as_text(utc_seconds(date, "yyyy-MM-dd"_L1, time, "hh:mm:ss"_L1));
    return as_text(utc_seconds(date, "yyyyMMdd"_L1, time, "hhmmss"_L1));
}

struct_GLOBAL_ARTIFACT_used_dates
plugin_static_function::extract_used_date(const QString &attribute_listing)
{
    return {listed_dates(attribute_listing, u"kMDItemLastUsedDate"_s).value(0),
            listed_dates(attribute_listing, u"kMDItemUsedDates"_s)};
}
