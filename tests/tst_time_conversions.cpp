#include "files.h"
#include "local_zone.h"
#include "log_capture.h"
#include "log_line.h"
#include "run_context_backup.h"
#include "test_main.h"
#include "text_rows.h"

#include "plugin_static_function.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QTemporaryDir>
#include <QTest>

#include <limits>
#include <optional>

using namespace Qt::StringLiterals;
using namespace test_support;

namespace {

using library = plugin_static_function;

} // namespace

// Times that come as numbers, and how they are shown.
class tst_time_conversions : public QObject
{
    Q_OBJECT

private slots:
    void init() { context.emplace(); }
    void cleanup() { context.reset(); }
    void file_times_are_those_of_the_file();
    void file_times_are_zero_data();
    void file_times_are_zero();
    void file_times_take_the_path_trimmed();
    void apple_time_data();
    void apple_time();
    void google_time_data();
    void google_time();
    void epoch_is_shown_at_the_selected_offset_data();
    void epoch_is_shown_at_the_selected_offset();
    void epoch_is_shown_in_the_selected_format_data();
    void epoch_is_shown_in_the_selected_format();
    void epoch_is_not_shown_data();
    void epoch_is_not_shown();
    void epoch_at_the_ends_of_the_number_range_is_not_shown();
    void duration_data();
    void duration();
    void time_in_gmt_data();
    void time_in_gmt();
    void time_with_zone_data();
    void time_with_zone();
    void time_with_zone_logs_its_start();
    void texts_do_not_depend_on_the_locale();

private:
    std::optional<run_context_backup> context;
};

void tst_time_conversions::file_times_are_those_of_the_file()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"app.exe"_s);
    evidence::write_file(path, "x");
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    const auto time = [](qint64 ms) { return QDateTime::fromMSecsSinceEpoch(ms); };
    QVERIFY(file.setFileTime(time(1600000000999), QFileDevice::FileAccessTime));
    QVERIFY(file.setFileTime(time(1500000000999), QFileDevice::FileModificationTime));
    file.close();
    const auto times = library::get_posix_timestamp(u"/app.exe"_s, folder.path());
    QCOMPARE(times.last_access_time, 1600000000);
    QCOMPARE(times.last_modification_time, 1500000000);
    const QDateTime birth = QFileInfo(path).birthTime();
    QCOMPARE(times.creation_time, birth.isValid() ? birth.toMSecsSinceEpoch() / 1000 : 0);
}

void tst_time_conversions::file_times_are_zero_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("prefix");
    const QString existing = QCoreApplication::applicationFilePath();
    QTest::newRow("the prefix is empty") << existing << QString();
    QTest::newRow("the prefix is blank") << existing << u" "_s;
    QTest::newRow("the path is empty") << QString() << u"/"_s;
    QTest::newRow("the file is absent") << u"/absent.exe"_s << QDir::tempPath();
    QTest::newRow("no separator is put between")
        << QFileInfo(existing).fileName() << QCoreApplication::applicationDirPath();
}

void tst_time_conversions::file_times_are_zero()
{
    QFETCH(const QString, path);
    QFETCH(const QString, prefix);
    const auto times = library::get_posix_timestamp(path, prefix);
    QCOMPARE(times.creation_time, 0);
    QCOMPARE(times.last_access_time, 0);
    QCOMPARE(times.last_modification_time, 0);
}

void tst_time_conversions::file_times_take_the_path_trimmed()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"app.exe"_s);
    evidence::write_file(path, "x");
    evidence::set_modification_time(path, 1500000000);
    QCOMPARE(library::get_posix_timestamp(u" app.exe "_s, u' ' + folder.path() + u"/ "_s)
                 .last_modification_time,
             1500000000);
}

void tst_time_conversions::apple_time_data()
{
    add_text_columns();
    add_row("zero is no time", u"0"_s, {});
    add_row("nothing is no time", {}, {});
    add_row("blanks are no time", u"  "_s, {});
    add_row("the fraction is dropped", u"1.5"_s, u"978307201"_s);
    add_row("blanks around it are cut", u" 1 "_s, u"978307201"_s);
    add_row("a time before 2001", u"-978307201"_s, u"-1"_s);
    add_row("the greatest 32-bit number", u"2147483647"_s, u"3125790847"_s);
    add_row("a number beyond 32 bits counts as zero", u"2147483648"_s, u"978307200"_s);
    add_row("a word counts as zero", u"soon"_s, u"978307200"_s);
}

void tst_time_conversions::apple_time()
{
    QFETCH(const QString, text);
    QTEST(library::convert_apple_time_to_epoch(text), "result");
}

void tst_time_conversions::google_time_data()
{
    add_text_columns();
    add_row("zero is no time", u"0"_s, {});
    add_row("nothing is no time", {}, {});
    add_row("ten characters are epoch seconds already", u"1700000000"_s, u"1700000000"_s);
    add_row("ten characters come back whatever they are", u"0123456789"_s, u"0123456789"_s);
    add_row("microseconds since 1601", u"13350000000000000"_s, u"1705526400"_s);
    add_row("a microsecond less is the second before", u"13350000000999999"_s, u"1705526400"_s);
    add_row("the start of 1601", u"1"_s, u"-11644473600"_s);
    add_row("a number beyond 63 bits counts as negative", u"18446744073709551615"_s,
            u"-11644473600"_s);
    add_row("the sign comes before the division", u"18446744073708551616"_s, u"-11644473601"_s);
    add_row("a word counts as the start of 1601", u"soon"_s, u"-11644473600"_s);
}

void tst_time_conversions::google_time()
{
    QFETCH(const QString, text);
    QTEST(library::convert_google_time_to_epoch(text), "result");
}

void tst_time_conversions::epoch_is_shown_at_the_selected_offset_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<qint64>("machine_offset");
    QTest::addColumn<qint64>("selected_offset");
    QTest::addColumn<QString>("epoch");
    QTest::addColumn<QString>("shown");
    const QByteArray berlin = "Europe/Berlin";
    QTest::newRow("UTC on a machine in UTC") << QByteArray("UTC") << qint64(0) << qint64(0)
                                             << u"1709632800"_s << u"2024-Mar-05 10:00:00"_s;
    QTest::newRow("UTC on a machine with half an hour")
        << QByteArray("Asia/Kolkata") << qint64(19800) << qint64(0) << u"1709632800"_s
        << u"2024-Mar-05 10:00:00"_s;
    QTest::newRow("half an hour on a machine in UTC")
        << QByteArray("UTC") << qint64(0) << qint64(19800) << u"1709632800"_s
        << u"2024-Mar-05 15:30:00"_s;
    QTest::newRow("west of UTC") << QByteArray("UTC") << qint64(0) << qint64(-12600)
                                 << u"1709632800"_s << u"2024-Mar-05 06:30:00"_s;
    QTest::newRow("the second before the clock goes forward")
        << berlin << qint64(3600) << qint64(3600) << u"1711846799"_s << u"2024-Mar-31 01:59:59"_s;
    QTest::newRow("the second in which the clock goes forward")
        << berlin << qint64(3600) << qint64(3600) << u"1711846800"_s << u"2024-Mar-31 03:00:00"_s;
    QTest::newRow("the second before the clock goes back")
        << berlin << qint64(3600) << qint64(3600) << u"1729990799"_s << u"2024-Oct-27 02:59:59"_s;
    QTest::newRow("the second in which the clock goes back")
        << berlin << qint64(3600) << qint64(3600) << u"1729990800"_s << u"2024-Oct-27 02:00:00"_s;
    QTest::newRow("after 2038") << QByteArray("UTC") << qint64(0) << qint64(0) << u"4102444800"_s
                                << u"2100-Jan-01 00:00:00"_s;
    QTest::newRow("before 1970") << QByteArray("UTC") << qint64(0) << qint64(0) << u"-5"_s
                                 << u"1969/12/31 23:59:55"_s;
    QTest::newRow("before 1970 in a zone behind the machine's")
        << berlin << qint64(3600) << qint64(-7200) << u"-5"_s << u"1969/12/31 21:59:55"_s;
    QTest::newRow("before 1970, after it at the offset")
        << QByteArray("UTC") << qint64(0) << qint64(3600) << u"-5"_s << u"1970-Jan-01 00:59:55"_s;
    QTest::newRow("after 1970, before it at the offset")
        << QByteArray("UTC") << qint64(0) << qint64(-3600) << u"5"_s << u"1969/12/31 23:00:05"_s;
    QTest::newRow("in 1601") << QByteArray("UTC") << qint64(0) << qint64(0) << u"-11644473600"_s
                             << u"1601/01/01 00:00:00"_s;
    QTest::newRow("a fraction is dropped") << QByteArray("UTC") << qint64(0) << qint64(0)
                                           << u" 1709632800.9 "_s << u"2024-Mar-05 10:00:00"_s;
}

void tst_time_conversions::epoch_is_shown_at_the_selected_offset()
{
    QFETCH(const QByteArray, zone);
    QFETCH(const QString, epoch);
    QFETCH(const qint64, machine_offset);
    QFETCH(const qint64, selected_offset);
    const local_zone machine_zone(zone);
    library::examiner_machine_timezone_offset_qint64 = machine_offset;
    library::examiner_selected_timezone_offset_qint64 = selected_offset;
    library::examiner_selected_date_format_int = 0;
    QTEST(library::convert_epoch_to_custom(epoch), "shown");
}

void tst_time_conversions::epoch_is_shown_in_the_selected_format_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QString>("after_1970");
    QTest::addColumn<QString>("before_1970");
    QTest::newRow("year first") << 0 << u"2024-Mar-05 10:00:00"_s << u"1969/12/31 23:59:55"_s;
    QTest::newRow("month first") << 1 << u"Mar-05-2024 10:00:00"_s << u"12/31/1969 23:59:55"_s;
    QTest::newRow("day first") << 2 << u"05-Mar-2024 10:00:00"_s << u"31/12/1969 23:59:55"_s;
    QTest::newRow("an unknown format") << 3 << u"05-Mar-2024 10:00:00"_s << QString();
    QTest::newRow("a negative format") << -1 << u"05-Mar-2024 10:00:00"_s << QString();
}

void tst_time_conversions::epoch_is_shown_in_the_selected_format()
{
    QFETCH(const int, format);
    const local_zone machine_zone("UTC");
    library::examiner_selected_date_format_int = format;
    QTEST(library::convert_epoch_to_custom(u"1709632800"_s), "after_1970");
    QTEST(library::convert_epoch_to_custom(u"-5"_s), "before_1970");
}

void tst_time_conversions::epoch_is_not_shown_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << QString();
    QTest::newRow("blanks") << u" "_s;
    QTest::newRow("zero") << u"0"_s;
    QTest::newRow("a fraction of the first second") << u"0.9"_s;
    QTest::newRow("a word") << u"soon"_s;
    QTest::newRow("a number beyond 64 bits") << u"9223372036854775808"_s;
    QTest::newRow("a year beyond the calendar") << u"9223372036854775807"_s;
    QTest::newRow("a year before the calendar") << u"-9223372036854775808"_s;
}

void tst_time_conversions::epoch_is_not_shown()
{
    QFETCH(const QString, text);
    QCOMPARE(library::convert_epoch_to_custom(text), QString());
    QCOMPARE(library::convert_timestamp_to_human_readable_in_GMT(text), QString());
    QCOMPARE(library::convert_timestamp_to_human_readable_with_timezone(text), QString());
}

void tst_time_conversions::epoch_at_the_ends_of_the_number_range_is_not_shown()
{
    library::examiner_selected_timezone_offset_qint64 = 1;
    QCOMPARE(library::convert_epoch_to_custom(u"9223372036854775807"_s), QString());
    library::examiner_selected_timezone_offset_qint64 = -1;
    QCOMPARE(library::convert_epoch_to_custom(u"-9223372036854775808"_s), QString());
    library::examiner_selected_timezone_offset_qint64 = 0;
    library::examiner_machine_timezone_offset_qint64 = std::numeric_limits<qint64>::min();
    QCOMPARE(library::convert_epoch_to_custom(u"1"_s), QString());
}

void tst_time_conversions::duration_data()
{
    add_text_columns();
    add_row("nothing", {}, {});
    add_row("the fraction is dropped", u"59.9"_s, u"00:59 Min"_s);
    add_row("minutes", u"75"_s, u"01:15 Min"_s);
    add_row("the last second below an hour", u"3599"_s, u"59:59 Min"_s);
    add_row("an hour", u"3600"_s, u"01:00:00 Hrs"_s);
    add_row("hours", u"3725"_s, u"01:02:05 Hrs"_s);
    add_row("more than two digits of hours", u"360000"_s, u"100:00:00 Hrs"_s);
    add_row("a negative one", u"-1"_s, {});
    add_row("a word counts as zero", u"soon"_s, u"00:00 Min"_s);
    add_row("blanks around it are cut", u" 75 "_s, u"01:15 Min"_s);
}

void tst_time_conversions::duration()
{
    QFETCH(const QString, text);
    QTEST(library::get_human_readable_time(text), "result");
}

void tst_time_conversions::time_in_gmt_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QString>("epoch");
    QTest::addColumn<QString>("shown");
    QTest::newRow("year first") << 0 << u"1709632800"_s << u"2024-Mar-05 10:00:00"_s;
    QTest::newRow("month first") << 1 << u"1709632800"_s << u"Mar-05-2024 10:00:00"_s;
    QTest::newRow("day first") << 2 << u"1709632800"_s << u"05-Mar-2024 10:00:00"_s;
    QTest::newRow("an unknown format") << 7 << u"1709632800"_s << u"05-Mar-2024 10:00:00"_s;
    QTest::newRow("before 1970") << 0 << u"-5"_s << u"1969-Dec-31 23:59:55"_s;
    QTest::newRow("after 2038") << 0 << u"4102444800"_s << u"2100-Jan-01 00:00:00"_s;
    QTest::newRow("a fraction is dropped") << 0 << u"1709632800.9"_s << u"2024-Mar-05 10:00:00"_s;
}

void tst_time_conversions::time_in_gmt()
{
    QFETCH(const int, format);
    QFETCH(const QString, epoch);
    const local_zone machine_zone("Asia/Kolkata");
    library::examiner_selected_timezone_offset_qint64 = 3600;
    library::examiner_selected_date_format_int = format;
    QTEST(library::convert_timestamp_to_human_readable_in_GMT(epoch), "shown");
}

void tst_time_conversions::time_with_zone_data()
{
    QTest::addColumn<qint64>("offset");
    QTest::addColumn<QString>("epoch");
    QTest::addColumn<QString>("shown");
    QTest::newRow("UTC") << qint64(0) << u"1709632800"_s << u"2024-Mar-05 10:00:00 +0000"_s;
    QTest::newRow("half an hour to the east")
        << qint64(19800) << u"1709632800"_s << u"2024-Mar-05 15:30:00 +0530"_s;
    QTest::newRow("half an hour to the west")
        << qint64(-12600) << u"1709632800"_s << u"2024-Mar-05 06:30:00 -0330"_s;
    QTest::newRow("less than a minute to the west has no sign of its own")
        << qint64(-30) << u"1709632800"_s << u"2024-Mar-05 09:59:30 +0000"_s;
    QTest::newRow("before 1970") << qint64(0) << u"-5"_s << u"1969/12/31 23:59:55 +0000"_s;
}

void tst_time_conversions::time_with_zone()
{
    QFETCH(const qint64, offset);
    QFETCH(const QString, epoch);
    const local_zone machine_zone("UTC");
    library::examiner_selected_timezone_offset_qint64 = offset;
    library::examiner_selected_date_format_int = 0;
    QTEST(library::convert_timestamp_to_human_readable_with_timezone(epoch), "shown");
}

void tst_time_conversions::time_with_zone_logs_its_start()
{
    const log_capture log;
    library::convert_timestamp_to_human_readable_with_timezone(QString());
    QCOMPARE(log.lines(), QStringList{library_line(
                              u"convert_timestamp_to_human_readable_with_timezone"_s,
                              u"[convert_timestamp_to_human_readable_with_timezone] Start"_s)});
}

void tst_time_conversions::texts_do_not_depend_on_the_locale()
{
    const local_zone machine_zone("UTC");
    const QLocale previous;
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
    library::examiner_selected_date_format_int = 0;
    const QString shown = library::convert_epoch_to_custom(u"1709632800"_s);
    const QString read = library::convert_human_readable_to_epoch_1(u"Mar 5, 2024, 10:00:00 PM "_s);
    QLocale::setDefault(previous);
    QCOMPARE(shown, u"2024-Mar-05 10:00:00"_s);
    QCOMPARE(read, u"1709676000"_s);
}

TEST_MAIN(tst_time_conversions)
#include "tst_time_conversions.moc"
