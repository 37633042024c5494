#include "hive_test_data.h"
#include "noting_walker.h"
#include "regf_format.h"
#include "test_main.h"

#include <limits>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

class tst_registry_values : public QObject
{
    Q_OBJECT

private slots:
    void hands_over_values_in_hive_order();
    void tells_names_from_those_of_the_key_before();
    void reads_value_names_data();
    void reads_value_names();
    void stops_at_a_value_without_a_readable_name_data();
    void stops_at_a_value_without_a_readable_name();
    void hands_over_no_value_of_a_refused_list_data();
    void hands_over_no_value_of_a_refused_list();
    void tells_last_write_times_data();
    void tells_last_write_times();
    void converts_filetimes_data();
    void converts_filetimes();
    void reads_little_endian_numbers();
    void converts_data_to_text_data();
    void converts_data_to_text();
    void converts_data_of_any_length_data();
    void converts_data_of_any_length();
    void converts_only_the_data_that_are_there_data();
    void converts_only_the_data_that_are_there();
};

void tst_registry_values::hands_over_values_in_hive_order()
{
    noted_hive noted;
    noted.hive.key(u"a"_s)
        .text(u"z"_s, u"1"_s)
        .text(u""_s, u"2"_s)
        .dword(u"a"_s, 0x33)
        .text(u"Z"_s, u"4"_s)
        .text(u"z"_s, u"5"_s);
    QCOMPARE(noted.walk(u"a"_s, true), 0);
    QCOMPARE(noted.walker.values, (QStringList{u"a:z"_s, u"a:"_s, u"a:a"_s, u"a:Z"_s, u"a:z"_s}));
    QCOMPARE(noted.walker.texts, (QStringList{u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s}));
}

void tst_registry_values::tells_names_from_those_of_the_key_before()
{
    noted_hive noted;
    QStringList names;
    for (const QString &key : {u"one"_s, u"three"_s, u"two"_s}) {
        hive_key &named = noted.hive.key(u"a\\"_s + key);
        for (int value = 0; value < 20; ++value) {
            names << u"value %1 of %2"_s.arg(value).arg(value % 2 == 0 ? u"all"_s : key);
            named.text(names.last(), u"text"_s);
        }
    }
    QCOMPARE(noted.walk(u"a"_s, false), 0);
    for (qsizetype i = 0; i < names.size(); ++i)
        QCOMPARE(noted.walker.values.value(i).section(u':', 1), names.at(i));
}

void tst_registry_values::reads_value_names_data()
{
    add_stored_name_rows();
}

void tst_registry_values::reads_value_names()
{
    QFETCH(const hive_name, stored);
    QFETCH(const QString, name);
    noted_hive noted;
    noted.hive.key(u"a"_s).dword(stored, 1).dword(u"next"_s, 1);
    QCOMPARE(noted.walk(u"a"_s, true), 0);
    QCOMPARE(noted.walker.values, (QStringList{u"a:"_s + name, u"a:next"_s}));
}

void tst_registry_values::stops_at_a_value_without_a_readable_name_data()
{
    QTest::addColumn<damage_operation>("operation");
    add_damage_row("a lone surrogate", [](hive_builder &hive, hive_damage &damage) {
        const qint64 value = hive.key(u"a"_s).cells_of_value(u"bad"_s).value;
        damage.set_16(value + regf::vk::flags, 0).set_16(value + regf::vk::name, 0xd800);
        damage.value_name_size(value, 2);
    });
    add_damage_row("a name longer than its cell", [](hive_builder &hive, hive_damage &damage) {
        damage.value_name_size(hive.key(u"a"_s).cells_of_value(u"bad"_s).value, 60000);
    });
    add_damage_row("a cell too small for a value", [](hive_builder &hive, hive_damage &damage) {
        damage.shrink_cell(hive.key(u"a"_s).cells_of_value(u"bad"_s).value, 16);
    });
    add_damage_row(
        "a value in the last 8 bytes of the file", [](hive_builder &hive, hive_damage &damage) {
            damage.add_last_cell("vk\0\0"_ba);
            damage.offset_entry(hive.key(u"a"_s).cells().value_list, 1, damage.last_cell());
        });
    add_damage_row("a cell that is no value", [](hive_builder &hive, hive_damage &damage) {
        damage.signature(hive.key(u"a"_s).cells_of_value(u"bad"_s).value, "nk");
    });
}

void tst_registry_values::stops_at_a_value_without_a_readable_name()
{
    QFETCH(const damage_operation, operation);
    noted_hive noted;
    noted.hive.key(u"a"_s).dword(u"1"_s, 1).dword(u"bad"_s, 1).dword(u"3"_s, 1);
    noted.hive.key(u"b"_s).dword(u"4"_s, 1);
    hive_damage damage = noted.damage();
    operation(noted.hive, damage);
    QCOMPARE(noted.walk(damage, u"\\"_s, false), 0);
    QCOMPARE(noted.walker.values, (QStringList{u"b:1"_s, u"b:4"_s}));
    QCOMPARE(noted.walker.data_records.size(), 2);
}

void tst_registry_values::hands_over_no_value_of_a_refused_list_data()
{
    QTest::addColumn<damage_operation>("operation");
    add_damage_row("more values than the list holds", [](hive_builder &hive, hive_damage &damage) {
        damage.value_count(hive.key(u"a"_s).cells().key, 100);
    });
    add_damage_row("a list outside of the file", [](hive_builder &hive, hive_damage &damage) {
        damage.value_list(hive.key(u"a"_s).cells().key, 0x7ffff000);
    });
    add_damage_row("a value outside of the file", [](hive_builder &hive, hive_damage &damage) {
        damage.offset_entry(hive.key(u"a"_s).cells().value_list, 1, 0x7ffff000);
    });
    add_damage_row("110,001 values", [](hive_builder &hive, hive_damage &damage) {
        for (int i = 3; i < 110001; ++i)
            hive.key(u"a"_s).dword(u""_s, 1);
        damage = hive_damage(hive.bytes());
    });
    add_damage_row("a list shorter than its values", [](hive_builder &hive, hive_damage &damage) {
        damage.shrink_cell(hive.key(u"a"_s).cells().value_list, 8);
    });
}

void tst_registry_values::hands_over_no_value_of_a_refused_list()
{
    QFETCH(const damage_operation, operation);
    noted_hive noted;
    noted.hive.key(u"a"_s).dword(u"1"_s, 1).dword(u"2"_s, 1).dword(u"3"_s, 1);
    hive_damage damage = noted.damage();
    QCOMPARE(noted.walk(damage, u"a"_s, true), 0);
    QCOMPARE(noted.walker.values.size(), 3);
    operation(noted.hive, damage);
    QCOMPARE(noted.walk(damage, u"a"_s, true), 0);
    QCOMPARE(noted.walker.values.size(), 3);
}

void tst_registry_values::tells_last_write_times_data()
{
    QTest::addColumn<qint64>("filetime");
    QTest::addColumn<QString>("seconds");
    const auto row = [](const char *name, qint64 filetime, const QString &seconds) {
        QTest::addRow("%s", name) << filetime << seconds;
    };
    row("the Unix epoch", 116444736000000000, u"0"_s);
    row("less than a second after it", 116444736009999999, u"0"_s);
    row("a second after it", 116444736010000000, u"1"_s);
    row("less than a second before it", 116444735990000001, u"0"_s);
    row("a second before it", 116444735990000000, u"-1"_s);
    row("a time of today", 133445383230123456, u"1700064723"_s);
    row("no time", 0, u"-11644473600"_s);
    row("a time that libhivex refuses", -5, u"-11644473600"_s);
    row("the least time", std::numeric_limits<qint64>::min(), u"-11644473600"_s);
    row("the greatest time", std::numeric_limits<qint64>::max(), u"910692730085"_s);
}

void tst_registry_values::tells_last_write_times()
{
    QFETCH(const qint64, filetime);
    QFETCH(const QString, seconds);
    noted_hive noted;
    noted.hive.key(u"start\\leaf"_s).last_write(filetime).dword(u"v"_s, 1);
    noted.hive.key(u"start\\parent\\below"_s).last_write(filetime).dword(u"v"_s, 1);
    QCOMPARE(noted.walk(u"start"_s, false), 0);
    QCOMPARE(noted.walker.times, (QStringList{seconds, seconds}));
    QCOMPARE(noted.walker.current_key_timestamp, seconds);
}

void tst_registry_values::converts_filetimes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<qint64>("seconds");
    const auto row = [](const char *name, qint64 filetime, qint64 seconds) {
        QTest::addRow("%s", name) << registry_qword(static_cast<quint64>(filetime)) << seconds;
    };
    row("the Unix epoch", 116444736000000000, 0);
    row("9,999,999 intervals after it", 116444736009999999, 0);
    row("10,000,000 intervals after it", 116444736010000000, 1);
    row("9,999,999 intervals before it", 116444735990000001, 0);
    row("10,000,000 intervals before it", 116444735990000000, -1);
    row("no time", 0, -11644473600);
    row("a negative time", -10000000, -11644473601);
    row("the greatest time", std::numeric_limits<qint64>::max(), 910692730085);
    row("a time that wraps round", std::numeric_limits<qint64>::min(), 910692730085);
    QTest::addRow("more than 8 bytes")
        << registry_qword(116444736010000000) + QByteArray(8, '\xff') << qint64(1);
    QTest::addRow("bytes that are missing count as zero")
        << registry_qword(116444736010000000).first(3) << qint64(-11644473598);
    QTest::addRow("no bytes") << QByteArray() << qint64(-11644473600);
}

void tst_registry_values::converts_filetimes()
{
    QFETCH(const QByteArray, bytes);
    QTEST(registry().epoc_time_conversion(bytes), "seconds");
}

void tst_registry_values::reads_little_endian_numbers()
{
    unsigned char bytes[] = {0x01, 0x02, 0x03, 0xf4, 0x05, 0x06, 0x07, 0x88, 0x99};
    registry walker;
    for (const int ignored_length : {0, 1, 4, 8, -1}) {
        QCOMPARE(walker.htoi(bytes, ignored_length), 0xf4030201U);
        QCOMPARE(walker.htoll(bytes, ignored_length), qint64(0x8807060'5f4030201));
    }
}

void tst_registry_values::converts_data_to_text_data()
{
    QTest::addColumn<quint32>("type");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, quint32 type, const QByteArray &data,
                        const QString &text) { QTest::addRow("%s", name) << type << data << text; };
    row("a text of ASCII", reg_sz, registry_text(u"ABC"_s), u"ABC"_s);
    row("a text to be expanded", reg_expand_sz, registry_text(u"%A%"_s), u"%A%"_s);
    row("a number whose byte is a letter", reg_dword, registry_dword(0x41), u"A"_s);
    row("a number of zeros", reg_dword, registry_dword(0), u""_s);
    row("a long number", reg_qword, registry_qword(0x4200000041), u"AB"_s);
    row("several texts run together", reg_multi_sz, registry_multi_text({u"a"_s, u"b"_s}), u"ab"_s);
    row("binary data", reg_binary, "x\0y\0\0z"_ba, u"xyz"_s);
    row("no type", reg_none, "none"_ba, u"none"_s);
    row("an unknown type", 0xfffffff0, "type"_ba, u"type"_s);
    row("a text without terminator", reg_sz, utf16le(u"ABC"_s), u"ABC"_s);
    row("a text of odd length", reg_sz, utf16le(u"ABC"_s) + 'D', u"ABCD"_s);
    row("a text of three bytes", reg_sz, "A\0B"_ba, u"AB"_s);
    row("what follows the terminator", reg_sz, registry_text(u"AB"_s) + "j\0k\0"_ba, u"ABjk"_s);
    row("a zero in front", reg_sz, "\0\0A\0"_ba, u"A"_s);
    row("a text in the other byte order", reg_sz, "\0A\0B"_ba, u"AB"_s);
    row("the last ASCII character", reg_sz, "\x7f\0"_ba, u"\x7f"_s);
    row("the first character beyond is altered", reg_sz, "\x80\0"_ba, u"\ufffd"_s);
    row("one byte", reg_sz, "A"_ba, u"A"_s);
    row("no bytes", reg_sz, {}, u""_s);
    row("UTF-8 in bytes", reg_binary, "h\xc3\xa9!"_ba, u"hé!"_s);
    row("a Latin letter in UTF-16 is altered", reg_sz, registry_text(u"é!"_s), u"\ufffd!"_s);
    row("a Greek letter in UTF-16 is altered", reg_sz, registry_text(u"Ω"_s), u"\ufffd\x03"_s);
    row("a lone surrogate is altered", reg_sz, "\x41\xd8"_ba, u"A\ufffd"_s);
    row("bytes that begin like big data", reg_sz, "dbForge Studio"_ba, u"dbForge Studio"_s);
    row("lines and terminal escapes", reg_sz, registry_text(u"a\r\n\x1b[1m"_s), u"a\r\n\x1b[1m"_s);
}

void tst_registry_values::converts_data_to_text()
{
    QFETCH(const quint32, type);
    QFETCH(const QByteArray, data);
    noted_hive noted;
    noted.hive.key(u"a"_s).value(u"v"_s, type, data);
    QCOMPARE(noted.walk(u"a"_s, true), 0);
    QCOMPARE(noted.walker.texts.size(), 1);
    QTEST(noted.walker.texts.first(), "text");
}

void tst_registry_values::converts_data_of_any_length_data()
{
    QTest::addColumn<quint32>("minor_version");
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("read");
    QTest::addRow("the longest data inside a value") << 5U << 4 << 4;
    QTest::addRow("the shortest data in a cell") << 5U << 5 << 5;
    QTest::addRow("the longest data in one block") << 5U << 16344 << 16344;
    QTest::addRow("big data of two blocks") << 5U << 16345 << 16345;
    QTest::addRow("big data of 8,000,000 bytes") << 5U << 8000000 << 8000000;
    QTest::addRow("big data of more bytes") << 5U << 8000001 << 0;
    QTest::addRow("a cell of 8,000,000 bytes") << 3U << 8000000 << 8000000;
    QTest::addRow("a cell of more bytes") << 3U << 8000001 << 0;
}

void tst_registry_values::converts_data_of_any_length()
{
    QFETCH(const quint32, minor_version);
    QFETCH(const int, length);
    QFETCH(const int, read);
    noted_hive noted;
    noted.hive.minor_version(minor_version);
    noted.hive.key(u"a"_s).binary(u"data"_s, QByteArray(length, 'x')).text(u"name"_s, u"next"_s);
    QCOMPARE(noted.walk(u"a"_s, true), 0);
    QCOMPARE(noted.walker.texts, (QStringList{QString(read, u'x'), u"next"_s}));
    QVERIFY(noted.walker.data_records.first().data == QByteArray(read, 'x'));
}

void tst_registry_values::converts_only_the_data_that_are_there_data()
{
    QTest::addColumn<damage_operation>("operation");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const QString &text, damage_operation operation) {
        QTest::addRow("%s", name) << operation << text;
    };
    row("a cell outside of the file", {}, [](hive_builder &hive, hive_damage &damage) {
        damage.data_cell(hive.key(u"a"_s).cells_of_value(0).value, 0x7ffff000);
    });
    row("too many bytes inside a value", {}, [](hive_builder &hive, hive_damage &damage) {
        damage.data_size(hive.key(u"a"_s).cells_of_value(0).value, 0x80000005);
    });
    row("more bytes than are ever read", {}, [](hive_builder &hive, hive_damage &damage) {
        damage.data_size(hive.key(u"a"_s).cells_of_value(0).value, 0x7fffffff);
    });
    row("more bytes than the cell has room for", {}, [](hive_builder &hive, hive_damage &damage) {
        damage.data_size(hive.key(u"a"_s).cells_of_value(0).value, 21);
    });
    row("as many bytes as the cell has room for", u"long data...."_s,
        [](hive_builder &hive, hive_damage &damage) {
            damage.data_size(hive.key(u"a"_s).cells_of_value(0).value, 20);
        });
    row("fewer bytes declared than there are", u"long"_s,
        [](hive_builder &hive, hive_damage &damage) {
            damage.data_size(hive.key(u"a"_s).cells_of_value(0).value, 4);
        });
    row("big data whose record ends the file", {}, [](hive_builder &hive, hive_damage &damage) {
        damage.add_last_cell("db\x03\0"_ba);
        damage.data_size(hive.key(u"a"_s).cells_of_value(0).value, 5000);
        damage.data_cell(hive.key(u"a"_s).cells_of_value(0).value, damage.last_cell());
    });
}

void tst_registry_values::converts_only_the_data_that_are_there()
{
    QFETCH(const damage_operation, operation);
    QFETCH(const QString, text);
    noted_hive noted;
    noted.hive.key(u"a"_s).binary(u"v"_s, "long data...."_ba).text(u"w"_s, u"next"_s);
    hive_damage damage = noted.damage();
    operation(noted.hive, damage);
    QCOMPARE(noted.walk(damage, u"a"_s, true), 0);
    QCOMPARE(noted.walker.texts, (QStringList{text, u"next"_s}));
}

TEST_MAIN(tst_registry_values)
#include "tst_registry_values.moc"
