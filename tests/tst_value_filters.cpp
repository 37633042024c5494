#include "log_capture.h"
#include "log_line.h"
#include "test_main.h"
#include "text_rows.h"

#include "plugin_static_function.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace test_support;

namespace {

using library = plugin_static_function;

QString conversion_line(const QString &message)
{
    return library_line(u"convert_string_to_unicode"_s, message);
}

} // namespace

class tst_value_filters : public QObject
{
    Q_OBJECT

private slots:
    void number_data();
    void number();
    void boolean_data();
    void boolean();
    void cfstring_data();
    void cfstring();
    void string_list_data();
    void string_list();
    void download_origins_data();
    void download_origins();
    void date_data();
    void date();
    void unicode_escapes_data();
    void unicode_escapes();
    void unicode_conversion_logs_that_it_runs();
    void unicode_conversion_stops_at_its_bound();
};

void tst_value_filters::number_data()
{
    add_text_columns();
    add_row("a printed number", u"<CFNumber 0x1 [0x2]>{value = +123, type = kCFNumberSInt64Type}"_s,
            u"123"_s);
    add_row("a printed fraction",
            u" <CFNumber 0x1 [0x2]>{value = +1.50000, type = kCFNumberFloat64Type}\n"_s,
            u"1.50000"_s);
    add_row("a number without a plus sign",
            u"<CFNumber 0x1 [0x2]>{value = -5, type = kCFNumberSInt64Type}"_s, {});
    add_row("a number without a type", u"<CFNumber 0x1 [0x2]>{value = +123}"_s, {});
    add_row("a plus sign behind the separator", u"a, +5"_s, {});
    add_row("nothing", {}, {});
    add_row("blanks", u"  "_s, {});
}

void tst_value_filters::number()
{
    QFETCH(const QString, text);
    QTEST(library::get_filtered_number_value(text), "result");
}

void tst_value_filters::boolean_data()
{
    add_text_columns();
    add_row("true", u"<CFBoolean 0x1 [0x2]>{value = true}"_s, u"true"_s);
    add_row("false with blanks around it", u"  <CFBoolean 0x1 [0x2]>{value = false}\n"_s,
            u"false"_s);
    add_row("without the brace", u"<CFBoolean 0x1 [0x2]> value = true}"_s, {});
    add_row("without the equals sign", u"<CFBoolean 0x1 [0x2]>{true}"_s, {});
    add_row("the brace alone", u"]>{="_s, {});
    add_row("nothing", {}, {});
    add_row("blanks", u"  "_s, {});
}

void tst_value_filters::boolean()
{
    QFETCH(const QString, text);
    QTEST(library::get_filtered_boolean_value(text), "result");
}

void tst_value_filters::cfstring_data()
{
    add_text_columns();
    add_row("a printed string", u"<CFString 0x1 [0x2]>{contents = \"Some Name\"}"_s,
            u"Some Name"_s);
    add_row("every double quote goes", u"<CFString 0x1 [0x2]>{contents = \"a \"b\" c\"}"_s,
            u"a b c"_s);
    add_row("blanks inside the quotes are cut", u"<CFString 0x1 [0x2]>{contents = \" a \"}"_s,
            u"a"_s);
    add_row("an equals sign ends the value with the character before it",
            u"<CFString 0x1 [0x2]>{contents = \"a=b\"}"_s, {});
    add_row("without the brace", u"\"a\""_s, {});
    add_row("nothing", {}, {});
}

void tst_value_filters::cfstring()
{
    QFETCH(const QString, text);
    QTEST(library::get_filtered_cfstring_value(text), "result");
}

void tst_value_filters::string_list_data()
{
    add_text_columns();
    add_row("a printed list", u"(\n    \"Ann Example\",\n    \"Bob Example\"\n)"_s,
            u"Ann Example;Bob Example"_s);
    add_row("a list without brackets", u"a, \"b\" ,c"_s, u"a;b;c"_s);
    add_row("a list of one entry has no separator", u"(\n    \"Ann Example\"\n)"_s, {});
    add_row("a separator at the end", u"(\"a\", \"b\",)"_s, u"a;b"_s);
    add_row("brackets inside an entry go too", u"(\"a (1)\", \"b\")"_s, u"a 1;b"_s);
    add_row("an empty entry between others is kept", u"a,,b"_s, u"a;;b"_s);
    add_row("no list", u"abc"_s, {});
    add_row("an empty list", u"()"_s, {});
    add_row("nothing", {}, {});
    add_row("blanks", u"  "_s, {});
}

void tst_value_filters::string_list()
{
    QFETCH(const QString, text);
    QTEST(library::get_filtered_string_value(text), "result");
}

void tst_value_filters::download_origins_data()
{
    add_text_columns();
    add_row("one origin", u"(\n    \"https://example.org/a.zip\"\n)"_s,
            u"https://example.org/a.zip"_s);
    add_row("two origins", u"(\n    \"https://a/x\",\n    \"https://b/\"\n)"_s,
            u"https://a/x\nhttps://b/"_s);
    add_row("a lone comma breaks the line", u"(\"https://a/x,y\")"_s, u"https://a/x\ny"_s);
    add_row("brackets inside an origin", u"(\"Ann (home)\",\"b\")"_s, u"Ann <home>\nb"_s);
    add_row("an escaped apostrophe", u"(\"Ann\\U2019s Mac\")"_s, u"Ann's Mac"_s);
    add_row("another escape stays", u"(\"a\\U00e9\")"_s, u"a\\U00e9"_s);
    add_row("the end of a property-list print", u"(\n    \"https://a/\"\n);"_s, u"https://a/"_s);
    add_row("a separator at the end of an origin", u"(\"https://a/x;\")"_s, u"https://a/x;"_s);
    add_row("a separator at the end of an origin without brackets", u"https://a/x;"_s,
            u"https://a/x;"_s);
    add_row("a separator at the end of an origin and of the print",
            u"(\n    \"https://a/x;\"\n);\n"_s, u"https://a/x;"_s);
    add_row("carriage returns", u"(\r\n    \"https://a/\"\r\n)"_s, u"https://a/"_s);
    add_row("nothing", {}, {});
    add_row("blanks", u"  "_s, {});
}

void tst_value_filters::download_origins()
{
    QFETCH(const QString, text);
    QTEST(library::get_filtered_wherefrom_value(text), "result");
}

void tst_value_filters::date_data()
{
    add_text_columns();
    add_row("with Z", u"2024-03-05T10:00:00Z"_s, u"1709632800"_s);
    add_row("without a zone it is UTC", u"2024-03-05T10:00:00"_s, u"1709632800"_s);
    add_row("a printed date", u" 2024-03-05 10:00:00 +0000 "_s, u"1709632800"_s);
    add_row("an offset of half an hour", u"2024-03-05T15:30:00+05:30"_s, u"1709632800"_s);
    add_row("a printed date half an hour to the west", u"2024-03-05 06:30:00 -0330"_s,
            u"1709632800"_s);
    add_row("a date alone", u"2024-03-05"_s, {});
    add_row("what follows the first dot is dropped", u"2024-03-05T10:00:00.987654Z"_s,
            u"1709632800"_s);
    add_row("before 1970", u"1969-12-31T23:59:55Z"_s, u"-5"_s);
    add_row("after 2038", u"2100-01-01T00:00:00Z"_s, u"4102444800"_s);
    add_row("a day that does not exist", u"2023-02-29T10:00:00Z"_s, {});
    add_row("a word", u"soon"_s, {});
    add_row("a dot alone", u"."_s, {});
    add_row("nothing", {}, {});
}

void tst_value_filters::date()
{
    QFETCH(const QString, text);
    QTEST(library::get_filtered_date_value(text), "result");
}

void tst_value_filters::unicode_escapes_data()
{
    add_text_columns();
    add_row("an apostrophe", u"Ann\\U2019s Mac"_s, u"Ann\u2019s Mac"_s);
    add_row("digits in both letter cases", u"\\U00e9\\U00E9"_s, u"éé"_s);
    add_row("a surrogate pair", u"\\Ud83d\\Ude00!"_s, u"\U0001F600!"_s);
    add_row("a lone high surrogate stays", u"\\Ud83dx"_s, u"\\Ud83dx"_s);
    add_row("a lone low surrogate stays", u"\\Ude00"_s, u"\\Ude00"_s);
    add_row("a high surrogate before another character", u"\\Ud83d\\U2019"_s, u"\\Ud83d\u2019"_s);
    add_row("too few digits stay", u"\\U201"_s, u"\\U201"_s);
    add_row("no digits stay", u"C:\\Users"_s, u"C:\\Users"_s);
    add_row("a digit behind the four is text", u"\\U20190"_s, u"\u20190"_s);
    add_row("a text without escapes stays", u"plain"_s, u"plain"_s);
    add_row("nothing", {}, {});
}

void tst_value_filters::unicode_escapes()
{
    QFETCH(const QString, text);
    QTEST(library::convert_string_to_unicode(text), "result");
}

void tst_value_filters::unicode_conversion_logs_that_it_runs()
{
    const log_capture log;
    library::convert_string_to_unicode(u"\\U2019"_s);
    QCOMPARE(log.lines(), QStringList{conversion_line(u" : running"_s)});
}

void tst_value_filters::unicode_conversion_stops_at_its_bound()
{
    const QString bound = u"\\U0041"_s.repeated(100000);
    const log_capture log;
    QCOMPARE(library::convert_string_to_unicode(bound), u"A"_s.repeated(100000));
    QCOMPARE(log.lines().size(), 1);
    log.clear();
    QCOMPARE(library::convert_string_to_unicode(bound + u"\\U0042"_s),
             u"A"_s.repeated(100000) + u"\\U0042"_s);
    QCOMPARE(log.lines(), (QStringList{conversion_line(u" : running"_s),
                                       conversion_line(u" : infinite loop cross"_s)}));
}

TEST_MAIN(tst_value_filters)
#include "tst_value_filters.moc"
