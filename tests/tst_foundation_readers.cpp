#include "foundation_objects.h"
#include "log_capture.h"
#include "log_line.h"
#include "run_context_backup.h"
#include "test_main.h"

#include "foundation_values.h"
#include "plugin_static_function.h"

#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;
using namespace test_support;

namespace {

using library = plugin_static_function;

QString failure_line(const QString &member, const QString &key)
{
    return library_line(member, u'[' + member + u"]-----FAILED----- to get value: "_s + key);
}

// A reader of a value under a key. The tests call all of them in this form.
struct reader
{
    const char *name;
    QString (*read)(const void *dictionary, const void *key);
    QString logs_as;
};

const QList<reader> &readers()
{
    static const QList<reader> all = {
        {"get_nsstring_values",
         [](const void *d, const void *k) { return library::get_nsstring_values(d, k); },
         u"get_nsstring_values"_s},
        {"get_nsnumber_values",
         [](const void *d, const void *k) { return library::get_nsnumber_values(d, k); },
         u"get_nsnumber_values"_s},
        {"get_nsnumber_values_yes_no",
         [](const void *d, const void *k) { return library::get_nsnumber_values_yes_no(d, k); },
         u"get_nsnumber_values_yes_no"_s},
        {"get_nsstring_key_and_values",
         [](const void *d, const void *k) {
             return library::get_nsstring_key_and_values(d, k, u"label"_s);
         },
         u"get_nsstring_values"_s},
        {"get_nsnumber_key_and_values",
         [](const void *d, const void *k) {
             return library::get_nsnumber_key_and_values(d, k, u"label"_s);
         },
         u"get_nsnumber_values"_s},
        {"get_nsnumber_key_and_value_yes_no",
         [](const void *d, const void *k) {
             return library::get_nsnumber_key_and_value_yes_no(d, k, u"label"_s);
         },
         u"get_nsnumber_values_yes_no"_s},
        {"get_nsarray_key_and_values",
         [](const void *d, const void *k) {
             return library::get_nsarray_key_and_values(d, k, u"label"_s);
         },
         u"get_nsarray_key_and_values"_s},
    };
    return all;
}

} // namespace

class tst_foundation_readers : public QObject
{
    Q_OBJECT

private slots:
    void value_is_read_data();
    void value_is_read();
    void failure_is_logged_data();
    void failure_is_logged();
    void wrong_dictionary_is_logged_data() { failure_is_logged_data(); }
    void wrong_dictionary_is_logged();
    void exception_stays_inside_data() { failure_is_logged_data(); }
    void exception_stays_inside();
    void key_of_another_class_is_described();
    void numbers_keep_their_text_data();
    void numbers_keep_their_text();
    void array_elements_are_joined_data();
    void array_elements_are_joined();
    void cfstring_becomes_a_qstring_data();
    void cfstring_becomes_a_qstring();
    void cfstring_of_another_class_is_empty();
    void date_becomes_epoch_seconds_data();
    void date_becomes_epoch_seconds();
    void date_of_another_class_is_empty();
    void date_that_is_no_number_is_empty();
    void readers_leave_no_object_behind();

private:
    void read_everything() const;
    foundation_objects objects;
};

void tst_foundation_readers::value_is_read_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("result");
    const QStringList results = {
        u"Größe \U0001F600"_s, u"42"_s,          u"YES"_s,        u"label:+:Größe \U0001F600"_s,
        u"label:+:42"_s,       u"label:+:YES"_s, u"label:+:a;b"_s};
    for (int index = 0; index < readers().size(); ++index)
        QTest::newRow(readers().at(index).name) << index << results.at(index);
}

void tst_foundation_readers::value_is_read()
{
    QFETCH(const int, index);
    const log_capture log;
    const QList<const void *> values = {
        objects.string(u"Größe \U0001F600"_s),
        objects.integer(42),
        objects.boolean(true),
        objects.string(u"Größe \U0001F600"_s),
        objects.integer(42),
        objects.boolean(true),
        objects.array({objects.string(u"a"_s), objects.string(u"b"_s)})};
    const void *const dictionary =
        objects.dictionary({{objects.string(u"key"_s), values.at(index)}});
    QTEST(readers().at(index).read(dictionary, objects.string(u"key"_s)), "result");
    QCOMPARE(log.lines(), QStringList());
}

void tst_foundation_readers::failure_is_logged_data()
{
    QTest::addColumn<int>("index");
    for (int index = 0; index < readers().size(); ++index)
        QTest::newRow(readers().at(index).name) << index;
}

void tst_foundation_readers::failure_is_logged()
{
    QFETCH(const int, index);
    const reader &tested = readers().at(index);
    const void *const dictionary =
        objects.dictionary({{objects.string(u"date"_s), objects.date(0)}});
    const log_capture log;
    QCOMPARE(tested.read(dictionary, objects.string(u"absent"_s)), QString());
    QCOMPARE(tested.read(dictionary, objects.string(u"date"_s)), QString());
    QCOMPARE(tested.read(dictionary, nullptr), QString());
    QCOMPARE(log.lines(), (QStringList{failure_line(tested.logs_as, u"absent"_s),
                                       failure_line(tested.logs_as, u"date"_s),
                                       failure_line(tested.logs_as, QString())}));
}

void tst_foundation_readers::wrong_dictionary_is_logged()
{
    QFETCH(const int, index);
    const reader &tested = readers().at(index);
    const void *const key = objects.string(u"key"_s);
    const log_capture log;
    QCOMPARE(tested.read(nullptr, key), QString());
    QCOMPARE(tested.read(objects.array({}), key), QString());
    QCOMPARE(tested.read(objects.string(u"text"_s), key), QString());
    QCOMPARE(log.lines(), QStringList(3, failure_line(tested.logs_as, u"key"_s)));
}

void tst_foundation_readers::exception_stays_inside()
{
    QFETCH(const int, index);
    const reader &tested = readers().at(index);
    const log_capture log;
    QCOMPARE(tested.read(objects.throwing_dictionary(), objects.string(u"key"_s)), QString());
    QCOMPARE(tested.read(objects.dictionary({}), objects.throwing_key()), QString());
    QCOMPARE(log.lines(), (QStringList{failure_line(tested.logs_as, u"key"_s),
                                       failure_line(tested.logs_as, QString())}));
}

void tst_foundation_readers::key_of_another_class_is_described()
{
    const log_capture log;
    const void *const key = objects.integer(7);
    QCOMPARE(library::get_nsstring_values(objects.dictionary({}), key), QString());
    QCOMPARE(
        library::get_nsstring_values(objects.dictionary({{key, objects.string(u"seven"_s)}}), key),
        u"seven"_s);
    QCOMPARE(log.lines(), QStringList{failure_line(u"get_nsstring_values"_s, u"7"_s)});
}

void tst_foundation_readers::numbers_keep_their_text_data()
{
    QTest::addColumn<const void *>("number");
    QTest::addColumn<QString>("plain");
    QTest::addColumn<QString>("yes_no");
    QTest::newRow("true") << objects.boolean(true) << u"1"_s << u"YES"_s;
    QTest::newRow("false") << objects.boolean(false) << u"0"_s << u"NO"_s;
    QTest::newRow("one is no boolean") << objects.integer(1) << u"1"_s << u"1"_s;
    QTest::newRow("zero is no boolean") << objects.integer(0) << u"0"_s << u"0"_s;
    QTest::newRow("another number") << objects.integer(42) << u"42"_s << u"42"_s;
    QTest::newRow("a fraction") << objects.real(1.5) << u"1.5"_s << u"1.5"_s;
    QTest::newRow("the least number") << objects.integer(std::numeric_limits<qint64>::min())
                                      << u"-9223372036854775808"_s << u"-9223372036854775808"_s;
}

void tst_foundation_readers::numbers_keep_their_text()
{
    QFETCH(const void *, number);
    const void *const key = objects.string(u"key"_s);
    const void *const dictionary = objects.dictionary({{key, number}});
    QTEST(library::get_nsnumber_values(dictionary, key), "plain");
    QTEST(library::get_nsnumber_values_yes_no(dictionary, key), "yes_no");
}

void tst_foundation_readers::array_elements_are_joined_data()
{
    QTest::addColumn<const void *>("array");
    QTest::addColumn<QString>("result");
    QTest::newRow("texts and numbers")
        << objects.array({objects.string(u"a"_s), objects.integer(2), objects.real(1.5)})
        << u"label:+:a;2;1.5"_s;
    QTest::newRow("one element") << objects.array({objects.string(u"a"_s)}) << u"label:+:a"_s;
    QTest::newRow("an empty element")
        << objects.array({objects.string(QString()), objects.string(u"b"_s)}) << u"label:+:;b"_s;
    QTest::newRow("no element") << objects.array({}) << u"label:+:"_s;
}

void tst_foundation_readers::array_elements_are_joined()
{
    QFETCH(const void *, array);
    const void *const key = objects.string(u"key"_s);
    QTEST(library::get_nsarray_key_and_values(objects.dictionary({{key, array}}), key, u"label"_s),
          "result");
}

void tst_foundation_readers::cfstring_becomes_a_qstring_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("Latin letters") << u"plain"_s;
    QTest::newRow("characters beyond 16 bits") << u"大小 \U0001F600"_s;
    QTest::newRow("a NUL inside") << QString(u"a\0b"_s);
    QTest::newRow("the empty text") << u""_s;
}

void tst_foundation_readers::cfstring_becomes_a_qstring()
{
    QFETCH(const QString, text);
    QCOMPARE(library::convert_cfstring_to_qstring(objects.string(text)), text);
}

void tst_foundation_readers::cfstring_of_another_class_is_empty()
{
    const log_capture log;
    QCOMPARE(library::convert_cfstring_to_qstring(nullptr), QString());
    QCOMPARE(library::convert_cfstring_to_qstring(objects.integer(1)), QString());
    QCOMPARE(log.lines(), QStringList());
}

void tst_foundation_readers::date_becomes_epoch_seconds_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("epoch");
    QTest::newRow("morning") << 1709632800.0 << u"1709632800"_s;
    QTest::newRow("evening") << 1709676000.0 << u"1709676000"_s;
    QTest::newRow("a fraction is dropped") << 1709632800.75 << u"1709632800"_s;
    QTest::newRow("the epoch itself") << 0.0 << u"0"_s;
    QTest::newRow("a fraction before 1970 is dropped downwards") << -0.5 << u"-1"_s;
    QTest::newRow("the hour that a daylight-saving change skips")
        << 1711852200.0 << u"1711852200"_s;
    QTest::newRow("after 2038") << 4102444800.0 << u"4102444800"_s;
    QTest::newRow("the far future of Foundation") << 64092211200.0 << u"64092211200"_s;
    QTest::newRow("the first day of the calendar") << -12219292800.0 << u"-12219292800"_s;
    QTest::newRow("the day before it") << -12219292801.0 << QString();
    QTest::newRow("the year 10000") << 253402300800.0 << QString();
}

void tst_foundation_readers::date_becomes_epoch_seconds()
{
    QFETCH(const double, seconds);
    QTEST(library::convert_nsdate_to_epoch(objects.date(seconds)), "epoch");
}

void tst_foundation_readers::date_of_another_class_is_empty()
{
    const log_capture log;
    QCOMPARE(library::convert_nsdate_to_epoch(nullptr), QString());
    QCOMPARE(library::convert_nsdate_to_epoch(objects.string(u"2024"_s)), QString());
    QCOMPARE(log.lines(), QStringList());
}

void tst_foundation_readers::date_that_is_no_number_is_empty()
{
    const log_capture log;
    const void *const date = objects.date_without_number();
    QVERIFY(!foundation_values::date_text(date));
    QCOMPARE(library::convert_nsdate_to_epoch(date), QString());
    QCOMPARE(log.lines(), QStringList());
}

// Every reader once with a value, once without, and once with an exception on the way.
void tst_foundation_readers::read_everything() const
{
    const foundation_objects made;
    const void *const key = made.string(u"key"_s);
    const void *const text = made.string(u"text"_s);
    for (const void *const value :
         {text, made.boolean(true), made.real(1.5), made.array({text, made.date(0)})}) {
        for (const reader &each : readers())
            each.read(made.dictionary({{key, value}}), key);
    }
    for (const reader &each : readers())
        each.read(made.throwing_dictionary(), key);
    library::convert_cfstring_to_qstring(text);
    library::convert_nsdate_to_epoch(made.date(1709632800));
}

void tst_foundation_readers::readers_leave_no_object_behind()
{
    if (!foundation_objects::living_objects())
        QSKIP("this platform keeps no list of the objects that are alive");
    // The first rounds fill the caches of Foundation.
    for (int round = 0; round < 3; ++round)
        read_everything();
    const auto before = foundation_objects::living_objects();
    for (int round = 0; round < 10; ++round)
        read_everything();
    QCOMPARE(foundation_objects::living_objects(), before);
}

TEST_MAIN(tst_foundation_readers)
#include "tst_foundation_readers.moc"
