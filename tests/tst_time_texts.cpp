#include "local_zone.h"
#include "log_capture.h"
#include "run_context_backup.h"
#include "test_main.h"
#include "text_rows.h"

#include "plugin_static_function.h"

#include <QDateTime>
#include <QLocale>
#include <QTest>
#include <QTimeZone>

#include <optional>

using namespace Qt::StringLiterals;
using namespace test_support;

namespace {

using library = plugin_static_function;

} // namespace

// Times that come as texts.
class tst_time_texts : public QObject
{
    Q_OBJECT

private slots:
    void init() { context.emplace(); }
    void cleanup() { context.reset(); }
    void zone_in_seconds_data();
    void zone_in_seconds();
    void mail_date_data();
    void mail_date();
    void twelve_hour_date_data();
    void twelve_hour_date();
    void date_with_numeric_zone_data();
    void date_with_numeric_zone();
    void iso_date_data();
    void iso_date();
    void skipped_local_hour_exists_in_utc_data();
    void skipped_local_hour_exists_in_utc();
    void shown_times_read_back_data();
    void shown_times_read_back();
    void used_dates_are_read_from_a_listing();
    void used_dates_are_empty_data();
    void used_dates_are_empty();

private:
    std::optional<run_context_backup> context;
};

void tst_time_texts::zone_in_seconds_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("seconds");
    QTest::newRow("half an hour") << u"0530"_s << 19800;
    QTest::newRow("three quarters") << u"1245"_s << 45900;
    QTest::newRow("hours alone") << u"05"_s << 18000;
    QTest::newRow("nothing") << QString() << 0;
    QTest::newRow("unreadable hours") << u"xx30"_s << 1800;
    QTest::newRow("unreadable minutes") << u"05:30"_s << 18000;
}

void tst_time_texts::zone_in_seconds()
{
    QFETCH(const QString, text);
    QTEST(library::convert_timezone_to_seconds_1(text), "seconds");
}

void tst_time_texts::mail_date_data()
{
    add_text_columns();
    add_row("with the day of the week", u"Tue, 05 Mar 2024 10:00:00 GMT"_s, u"1709632800"_s);
    add_row("without the day of the week", u"05 Mar 2024 10:00:00 GMT"_s, u"1709632800"_s);
    add_row("the zone's name is not looked at", u"Tue, 05 Mar 2024 10:00:00 PST"_s,
            u"1709632800"_s);
    add_row("blanks around it are cut", u" Tue, 05 Mar 2024 10:00:00 GMT "_s, u"1709632800"_s);
    add_row("before 1970", u"Wed, 31 Dec 1969 23:59:55 GMT"_s, u"-5"_s);
    add_row("after 2038", u"Fri, 01 Jan 2100 00:00:00 GMT"_s, u"4102444800"_s);
    add_row("nothing", {}, {});
    add_row("zero", u"0"_s, {});
    add_row("without a zone the time goes for it", u"Tue, 05 Mar 2024 10:00:00"_s, {});
    add_row("a day of one digit", u"Tue, 5 Mar 2024 10:00:00 GMT"_s, {});
    add_row("a day that does not exist", u"Fri, 30 Feb 2024 10:00:00 GMT"_s, {});
    add_row("a word", u"soon"_s, {});
}

void tst_time_texts::mail_date()
{
    QFETCH(const QString, text);
    QTEST(library::convert_human_readable_to_epoch(text), "result");
}

void tst_time_texts::twelve_hour_date_data()
{
    add_text_columns();
    add_row("before noon", u"Mar 5, 2024, 10:00:00 AM UTC"_s, u"1709632800"_s);
    add_row("after noon", u"Mar 5, 2024, 10:00:00 PM UTC"_s, u"1709676000"_s);
    add_row("midnight", u"Mar 5, 2024, 12:00:00 AM UTC"_s, u"1709596800"_s);
    add_row("noon", u"Mar 15, 2024, 12:00:00 PM UTC"_s, u"1710504000"_s);
    add_row("a narrow no-break space before the marker", u"Mar 5, 2024, 10:00:00\u202FAM UTC"_s,
            u"1709632800"_s);
    add_row("without a zone", u"Mar 5, 2024, 10:00:00 AM"_s, u"1709632800"_s);
    add_row("Greenwich", u"Mar 5, 2024, 10:00:00 AM GMT"_s, u"1709632800"_s);
    add_row("before 1970", u"Dec 31, 1969, 11:59:55 PM UTC"_s, u"-5"_s);
    add_row("after 2038", u"Jan 1, 2100, 12:00:00 AM UTC"_s, u"4102444800"_s);
    add_row("another zone would be hours off", u"Mar 5, 2024, 10:00:00 AM PST"_s, {});
    add_row("without a marker", u"Mar 5, 2024, 10:00:00 UTC"_s, {});
    add_row("an hour beyond twelve", u"Mar 5, 2024, 13:00:00 PM UTC"_s, {});
    add_row("nothing", {}, {});
    add_row("the marker alone", u" AM "_s, {});
}

void tst_time_texts::twelve_hour_date()
{
    QFETCH(const QString, text);
    QTEST(library::convert_human_readable_to_epoch_1(text), "result");
}

void tst_time_texts::date_with_numeric_zone_data()
{
    add_text_columns();
    add_row("UTC", u"2024-03-05 10:00:00 +0000"_s, u"1709632800"_s);
    add_row("without a zone", u"2024-03-05 10:00:00"_s, u"1709632800"_s);
    add_row("half an hour to the east", u"2024-03-05 15:30:00 +0530"_s, u"1709632800"_s);
    add_row("half an hour to the west", u"2024-03-05 06:30:00 -0330"_s, u"1709632800"_s);
    add_row("a colon in the zone", u"2024-03-05 15:45:00+05:45"_s, u"1709632800"_s);
    add_row("hours alone in the zone", u"2024-03-05 05:00:00-05"_s, u"1709632800"_s);
    add_row("a fraction before the zone", u"2024-03-05 15:30:00.987654+0530"_s, u"1709632800"_s);
    add_row("a fraction without a zone", u"2024-03-05 10:00:00.9"_s, u"1709632800"_s);
    add_row("before 1970", u"1969-12-31 23:59:55.5 +0000"_s, u"-5"_s);
    add_row("after 2038", u"2100-01-01 01:00:00 +0100"_s, u"4102444800"_s);
    add_row("the epoch itself", u"1970-01-01 00:00:00 +0000"_s, u"0"_s);
    add_row("the hours farthest to the east", u"2024-03-06 00:00:00 +1400"_s, u"1709632800"_s);
    add_row("ten hours to the west", u"2024-03-05 00:00:00 -1000"_s, u"1709632800"_s);
    add_row("hours that no zone has", u"2024-03-06 01:00:00 +1500"_s, {});
    add_row("tens of hours that no zone has", u"2024-03-06 10:00:00 -2400"_s, {});
    add_row("a sign without digits", u"2024-03-05 10:00:00 +"_s, {});
    add_row("a zone's name", u"2024-03-05 10:00:00 CET"_s, {});
    add_row("sixty minutes in the zone", u"2024-03-05 10:00:00 +0060"_s, {});
    add_row("a day that does not exist", u"2023-02-29 10:00:00 +0000"_s, {});
    add_row("a date alone", u"2024-03-05"_s, {});
    add_row("nothing", {}, {});
}

void tst_time_texts::date_with_numeric_zone()
{
    QFETCH(const QString, text);
    QTEST(library::convert_human_readable_to_epoch_2(text), "result");
}

void tst_time_texts::iso_date_data()
{
    add_text_columns();
    add_row("compact", u"20240305T100000Z"_s, u"1709632800"_s);
    add_row("compact without Z", u"20240305T100000"_s, u"1709632800"_s);
    add_row("a compact date alone", u"20240305"_s, u"1709596800"_s);
    add_row("long", u"2024-03-05T10:00:00Z"_s, u"1709632800"_s);
    add_row("long with milliseconds", u"2024-03-05T10:00:00.999Z"_s, u"1709632800"_s);
    add_row("long with microseconds", u"2024-03-05T10:00:00.999999Z"_s, u"1709632800"_s);
    add_row("long with a blank", u"2024-03-05 10:00:00"_s, u"1709632800"_s);
    add_row("blanks around it are cut", u" 20240305T100000Z "_s, u"1709632800"_s);
    add_row("before 1970", u"1969-12-31T23:59:55.500Z"_s, u"-5"_s);
    add_row("after 2038", u"21000101T000000Z"_s, u"4102444800"_s);
    add_row("a long date alone", u"2024-03-05"_s, {});
    add_row("another zone", u"2024-03-05T10:00:00+0100"_s, {});
    add_row("a mix of the forms", u"2024-03-05T100000Z"_s, {});
    add_row("a day that does not exist", u"20230229T100000Z"_s, {});
    add_row("an hour that does not exist", u"20240305T240000Z"_s, {});
    add_row("the markers alone", u"TZ"_s, {});
    add_row("nothing", {}, {});
}

void tst_time_texts::iso_date()
{
    QFETCH(const QString, text);
    QTEST(library::convert_T_Z_time_to_epoch(text), "result");
}

void tst_time_texts::skipped_local_hour_exists_in_utc_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::newRow("the clock goes forward in this hour") << QByteArray("Europe/Berlin");
    QTest::newRow("a machine in UTC") << QByteArray("UTC");
}

void tst_time_texts::skipped_local_hour_exists_in_utc()
{
    QFETCH(const QByteArray, zone);
    const local_zone machine_zone(zone);
    const QString epoch = u"1711852200"_s;
    QCOMPARE(library::convert_human_readable_to_epoch(u"Sun, 31 Mar 2024 02:30:00 GMT"_s), epoch);
    QCOMPARE(library::convert_human_readable_to_epoch_1(u"Mar 31, 2024, 2:30:00 AM UTC"_s), epoch);
    QCOMPARE(library::convert_human_readable_to_epoch_2(u"2024-03-31 02:30:00 +0000"_s), epoch);
    QCOMPARE(library::convert_T_Z_time_to_epoch(u"20240331T023000Z"_s), epoch);
    QCOMPARE(library::get_filtered_date_value(u"2024-03-31T02:30:00"_s), epoch);
}

void tst_time_texts::shown_times_read_back_data()
{
    QTest::addColumn<qint64>("epoch");
    QTest::newRow("before 1970") << qint64(-86399);
    QTest::newRow("1970") << qint64(1);
    QTest::newRow("a leap day") << qint64(1709251199);
    QTest::newRow("the last second of 31 bits") << qint64(2147483647);
    QTest::newRow("after 2038") << qint64(2147483648);
    QTest::newRow("the last second of the year 9999") << qint64(253402300799);
}

void tst_time_texts::shown_times_read_back()
{
    QFETCH(const qint64, epoch);
    const QString text = QString::number(epoch);
    library::examiner_selected_date_format_int = 2;
    const QString shown = library::convert_timestamp_to_human_readable_in_GMT(text);
    QCOMPARE(
        library::convert_human_readable_to_epoch(QString(shown).replace(u'-', u' ') + u" GMT"_s),
        text);
    const QDateTime time = QDateTime::fromSecsSinceEpoch(epoch, QTimeZone::utc());
    QCOMPARE(library::convert_T_Z_time_to_epoch(time.toString(u"yyyy-MM-dd'T'hh:mm:ss'Z'"_s)),
             text);
    QCOMPARE(library::convert_T_Z_time_to_epoch(time.toString(u"yyyyMMdd'T'hhmmss'Z'"_s)), text);
    QCOMPARE(library::convert_human_readable_to_epoch_2(time.toString(u"yyyy-MM-dd hh:mm:ss"_s)),
             text);
    QCOMPARE(library::convert_human_readable_to_epoch_1(
                 QLocale::c().toString(time, u"MMM d, yyyy, h:mm:ss AP"_s) + u" UTC"_s),
             text);
}

void tst_time_texts::used_dates_are_read_from_a_listing()
{
    const auto dates = library::extract_used_date(
        u"kMDItemContentCreationDate = 2020-01-01 00:00:00 +0000\n"
        "kMDItemLastUsedDate        = 2024-03-05 10:00:00 +0000\n"
        "kMDItemUseCount            = 2\n"
        "kMDItemUsedDates           = (\n"
        "    \"2024-03-04 23:00:00 +0000\",\n"
        "    \"2024-03-05 05:30:00 +0530\"\n"
        ")\n"
        "kMDItemVersion             = \"2019-01-01 00:00:00 +0000\"\n"_s);
    QCOMPARE(dates.last_used_date, u"1709632800"_s);
    QCOMPARE(dates.used_dates, (QStringList{u"1709593200"_s, u"1709596800"_s}));
}

void tst_time_texts::used_dates_are_empty_data()
{
    QTest::addColumn<QString>("listing");
    QTest::newRow("nothing") << QString();
    QTest::newRow("null values") << u"kMDItemLastUsedDate = (null)\nkMDItemUsedDates = (null)\n"_s;
    QTest::newRow("another attribute of a like name")
        << u"kMDItemLastUsedDate_Ranking = 2024-03-05 10:00:00 +0000\n"
           "kMDItemUsedDatesCount = (\"2024-03-05 10:00:00 +0000\")"_s;
    QTest::newRow("days that do not exist")
        << u"kMDItemLastUsedDate = 2023-02-29 10:00:00 +0000\n"
           "kMDItemUsedDates = (\"2023-02-29 10:00:00 +0000\")"_s;
    QTest::newRow("a name without a value") << u"kMDItemLastUsedDate\nkMDItemUsedDates ="_s;
    QTest::newRow("a name without a value before a dated line")
        << u"kMDItemLastUsedDate =\nkMDItemContentCreationDate = 2020-01-01 00:00:00 +0000\n"
           "kMDItemUsedDates = \n2020-01-01 00:00:00 +0000"_s;
    QTest::newRow("an equals sign on the next line")
        << u"kMDItemLastUsedDate\n= 2020-01-01 00:00:00 +0000\n"
           "kMDItemUsedDates\n= (\"2020-01-01 00:00:00 +0000\")"_s;
}

void tst_time_texts::used_dates_are_empty()
{
    QFETCH(const QString, listing);
    const auto dates = library::extract_used_date(listing);
    QCOMPARE(dates.last_used_date, QString());
    QCOMPARE(dates.used_dates, QStringList());
}

TEST_MAIN(tst_time_texts)
#include "tst_time_texts.moc"
