#include "application_keys.h"
#include "parse_user_assist.h"
#include "test_main.h"
#include "walked_hive.h"

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

using user_assist_hive = walked_hive<parse_user_assist>;

class tst_parse_user_assist : public QObject
{
    Q_OBJECT

private slots:
    void records_each_value_below_a_class_id();
    void keeps_names_as_stored();
    void orders_class_ids_and_their_subkeys_by_name();
    void keeps_values_in_hive_order_and_deeper_keys_last();
    void ignores_values_outside_of_a_class_ids_subkeys();
    void repeats_a_class_id_of_any_length();
    void records_nothing_of_class_ids_without_subkeys();
    void records_deeper_values_under_the_class_id();
    void keeps_data_byte_for_byte_data();
    void keeps_data_byte_for_byte();
    void accumulates_records_over_hives();
    void records_nothing_when_there_is_nothing_data();
    void records_nothing_when_there_is_nothing();
    void does_not_fill_generic_records();
    void goes_over_damaged_neighbours();
    void tells_whether_a_class_id_has_subkeys();
    void holds_the_last_class_id();

private:
    static hive_key &count_of(user_assist_hive &walked, const QString &class_id);
};

namespace {

const QString first_id = u"{0D6D4F41-2994-4BA0-8FEF-620E43CD2812}"_s;
const QString second_id = u"{CEBFF5CD-ACE2-4F4F-9178-9926F41749EA}"_s;

/// Records as "class id|value name|data in hexadecimal digits".
QStringList texts_of(const QList<registry::struct_user_asist> &records)
{
    QStringList texts;
    for (const registry::struct_user_asist &record : records)
        texts.append(record.class_id + u'|' + record.value_name + u'|' +
                     QString::fromLatin1(record.value_data.toHex()));
    return texts;
}

QStringList value_names_of(const parse_user_assist &walker)
{
    QStringList names;
    for (const registry::struct_user_asist &record : walker.user_assist_records)
        names.append(record.value_name);
    return names;
}

} // namespace

hive_key &tst_parse_user_assist::count_of(user_assist_hive &walked, const QString &class_id)
{
    return walked.hive.key(user_assist_key).key(class_id + u"\\Count"_s);
}

void tst_parse_user_assist::records_each_value_below_a_class_id()
{
    user_assist_hive walked;
    count_of(walked, first_id).binary(u"one"_s, "\x01\x02"_ba).dword(u"two"_s, 0x11223344);
    count_of(walked, second_id).text(u""_s, u"A"_s);
    QCOMPARE(walked.walk(user_assist_key, false), 0);
    QCOMPARE(texts_of(walked.walker.user_assist_records),
             (QStringList{first_id + u"|one|0102"_s, first_id + u"|two|44332211"_s,
                          second_id + u"||41000000"_s}));
}

void tst_parse_user_assist::keeps_names_as_stored()
{
    const QStringList names{u"HRZR_PGYFRFFVBA"_s, u"P:\\Hfref\\Wöet\\n.rkr"_s, u"Программа"_s,
                            u"\r\n\x1b[0m"_s, u"\U0001F600"_s};
    user_assist_hive walked;
    for (const QString &name : names)
        count_of(walked, first_id).dword(name, 1);
    QCOMPARE(walked.walk(user_assist_key, false), 0);
    QCOMPARE(value_names_of(walked.walker), names);
}

void tst_parse_user_assist::orders_class_ids_and_their_subkeys_by_name()
{
    user_assist_hive walked;
    hive_key &start = walked.hive.key(user_assist_key);
    for (const QString &class_id : {u"b"_s, u"A"_s, u"a"_s}) {
        hive_key &key = start.add_key(class_id);
        key.add_key(u"z"_s).dword(u"2"_s, 2);
        key.add_key(u"Y"_s).dword(u"1"_s, 1);
    }
    QCOMPARE(walked.walk(user_assist_key, false), 0);
    QCOMPARE(texts_of(walked.walker.user_assist_records),
             (QStringList{u"A|1|01000000"_s, u"A|2|02000000"_s, u"a|1|01000000"_s,
                          u"a|2|02000000"_s, u"b|1|01000000"_s, u"b|2|02000000"_s}));
}

void tst_parse_user_assist::keeps_values_in_hive_order_and_deeper_keys_last()
{
    user_assist_hive walked;
    hive_key &count = count_of(walked, first_id);
    count.key(u"deep"_s).dword(u"4 deep"_s, 1);
    count.key(u"deep\\deeper"_s).dword(u"6 deeper"_s, 1);
    count.key(u"alone"_s).dword(u"5 alone"_s, 1);
    count.dword(u"1 z"_s, 1).dword(u"2 a"_s, 1).dword(u"3 m"_s, 1);
    QCOMPARE(walked.walk(user_assist_key, false), 0);
    QCOMPARE(value_names_of(walked.walker),
             (QStringList{u"1 z"_s, u"2 a"_s, u"3 m"_s, u"4 deep"_s, u"5 alone"_s, u"6 deeper"_s}));
}

void tst_parse_user_assist::ignores_values_outside_of_a_class_ids_subkeys()
{
    user_assist_hive walked;
    walked.hive.key(user_assist_key).dword(u"on UserAssist"_s, 1);
    walked.hive.key(user_assist_key).key(first_id).dword(u"Version"_s, 5);
    count_of(walked, first_id).dword(u"counted"_s, 1);
    QCOMPARE(walked.walk(user_assist_key, false), 0);
    QCOMPARE(value_names_of(walked.walker), QStringList{u"counted"_s});
}

void tst_parse_user_assist::repeats_a_class_id_of_any_length()
{
    constexpr int values = 5000;
    const QString class_id(32000, u'x');
    user_assist_hive walked;
    for (int i = 0; i < values; ++i)
        count_of(walked, class_id).dword(u""_s, 1);
    QCOMPARE(walked.walk(user_assist_key, false), 0);
    const auto &records = walked.walker.user_assist_records;
    QCOMPARE(records.size(), values);
    QCOMPARE(records.last().class_id, class_id);
    QCOMPARE(walked.walker.early_end(), QString());
}

void tst_parse_user_assist::records_nothing_of_class_ids_without_subkeys()
{
    user_assist_hive walked;
    walked.hive.key(user_assist_key).key(first_id).dword(u"Version"_s, 5);
    walked.hive.key(user_assist_key).key(second_id);
    QCOMPARE(walked.walk(user_assist_key, false), 0);
    QVERIFY(walked.walker.user_assist_records.isEmpty());
}

void tst_parse_user_assist::records_deeper_values_under_the_class_id()
{
    user_assist_hive walked;
    count_of(walked, first_id).key(u"a\\b\\c\\d"_s).dword(u"deep"_s, 7);
    QCOMPARE(walked.walk(user_assist_key, false), 0);
    QCOMPARE(texts_of(walked.walker.user_assist_records),
             QStringList{first_id + u"|deep|07000000"_s});
}

void tst_parse_user_assist::keeps_data_byte_for_byte_data()
{
    QTest::addColumn<quint32>("type");
    QTest::addColumn<QByteArray>("data");
    QTest::addRow("no bytes") << quint32(reg_binary) << QByteArray();
    QTest::addRow("one zero byte") << quint32(reg_binary) << "\0"_ba;
    QTest::addRow("16 bytes") << quint32(reg_binary) << QByteArray(16, '\x80');
    QTest::addRow("72 bytes") << quint32(reg_binary) << "\0\xff"_ba.repeated(36);
    QTest::addRow("bytes that begin like big data") << quint32(reg_binary) << "dbase\xff\xff"_ba;
    QTest::addRow("a text of odd length") << quint32(reg_sz) << "a\0b\0c"_ba;
    QTest::addRow("a number") << quint32(reg_dword) << registry_dword(0xff00ff00);
    QTest::addRow("a number of 3 bytes") << quint32(reg_dword) << "\x01\x02\x03"_ba;
    QTest::addRow("no type") << quint32(reg_none) << "none"_ba;
    QTest::addRow("an unknown type") << 0xfffffff0U << "unknown"_ba;
    QTest::addRow("big data") << quint32(reg_binary) << "0123456\0"_ba.repeated(5000);
    QTest::addRow("8,000,000 bytes") << quint32(reg_binary) << "0123456\0"_ba.repeated(1000000);
}

void tst_parse_user_assist::keeps_data_byte_for_byte()
{
    QFETCH(const quint32, type);
    QFETCH(const QByteArray, data);
    user_assist_hive walked;
    count_of(walked, first_id).value(u"v"_s, type, data);
    QCOMPARE(walked.walk(user_assist_key, false), 0);
    QCOMPARE(walked.walker.user_assist_records.size(), 1);
    QVERIFY(walked.walker.user_assist_records.first().value_data == data);
}

void tst_parse_user_assist::accumulates_records_over_hives()
{
    user_assist_hive walked;
    count_of(walked, first_id).dword(u"one"_s, 1);
    QCOMPARE(walked.walk(user_assist_key, false), 0);
    user_assist_hive other;
    count_of(other, second_id).dword(u"two"_s, 2);
    other.hive.write_to(other.path());
    QCOMPARE(walked.walker.start_registry_parse(other.path(), user_assist_key, false), 0);
    QCOMPARE(walked.walker.start_registry_parse(other.path() + u"none"_s, user_assist_key, false),
             -1);
    QCOMPARE(texts_of(walked.walker.user_assist_records),
             (QStringList{first_id + u"|one|01000000"_s, second_id + u"|two|02000000"_s}));
}

void tst_parse_user_assist::records_nothing_when_there_is_nothing_data()
{
    QTest::addColumn<QString>("present_key");
    QTest::addRow("an empty hive") << u"\\"_s;
    QTest::addRow("a key path that breaks off") << user_assist_key.section(u'\\', 0, 3);
    QTest::addRow("a UserAssist key without class ids") << user_assist_key;
    QTest::addRow("a Count key without values") << user_assist_key + u"\\{id}\\Count"_s;
}

void tst_parse_user_assist::records_nothing_when_there_is_nothing()
{
    QFETCH(const QString, present_key);
    user_assist_hive walked;
    walked.hive.key(present_key);
    QCOMPARE(walked.walk(user_assist_key, false), 0);
    QVERIFY(walked.walker.user_assist_records.isEmpty());
}

// The key's own values are nothing that this walker records.
void tst_parse_user_assist::does_not_fill_generic_records()
{
    user_assist_hive walked;
    walked.hive.key(user_assist_key).dword(u"v"_s, 1);
    QCOMPARE(walked.walk(user_assist_key, true), 0);
    QVERIFY(walked.walker.user_assist_records.isEmpty());
    QCOMPARE(walked.walker.data_records.size(), 1);
    QVERIFY(walked.walker.data_records.first().name.isEmpty());
}

void tst_parse_user_assist::goes_over_damaged_neighbours()
{
    user_assist_hive walked;
    for (const QString &class_id : {u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s})
        count_of(walked, class_id).binary(u"first "_s + class_id, "12345").dword(u"second"_s, 1);
    hive_damage damage = walked.damage();
    const auto cells_of = [&](const QString &class_id) {
        return count_of(walked, class_id).cells();
    };
    damage.value_count(cells_of(u"2"_s).key, 500)
        .key_name_size(cells_of(u"3"_s).key, 60000)
        .value_name_size(count_of(walked, u"4"_s).cells_of_value(1).value, 60000)
        .data_cell(count_of(walked, u"5"_s).cells_of_value(0).value, 0x7ffff000);
    QCOMPARE(walked.walk(damage, user_assist_key, false), 0);
    QCOMPARE(texts_of(walked.walker.user_assist_records),
             (QStringList{u"1|first 1|3132333435"_s, u"1|second|01000000"_s,
                          u"4|first 4|3132333435"_s, u"5|first 5|"_s, u"5|second|01000000"_s}));
}

void tst_parse_user_assist::tells_whether_a_class_id_has_subkeys()
{
    user_assist_hive walked;
    const hive_key &count = count_of(walked, first_id).dword(u"v"_s, 1);
    const unique_hive hive = walked.opened();
    parse_user_assist &walker = walked.walker;
    registry::struct_data open_record;
    walker.current_data = &open_record;
    QVERIFY(!walker.run_only_multiple(hive.get(), handle_of(count)));
    QCOMPARE(walker.current_data, &open_record);

    walker.current_class_id = u"given"_s;
    const hive_key &class_id = walked.hive.key(user_assist_key).key(first_id);
    QVERIFY(walker.run_only_multiple(hive.get(), handle_of(class_id)));
    QCOMPARE(walker.current_data, nullptr);
    QCOMPARE(texts_of(walker.user_assist_records), QStringList{u"given|v|01000000"_s});
}

void tst_parse_user_assist::holds_the_last_class_id()
{
    user_assist_hive walked;
    QCOMPARE(walked.walker.current_class_id, QString());
    count_of(walked, second_id);
    walked.hive.key(user_assist_key).key(first_id);
    QCOMPARE(walked.walk(user_assist_key, false), 0);
    QCOMPARE(walked.walker.current_class_id, second_id);
    QCOMPARE(walked.walk(u"none"_s, false), 0);
    QCOMPARE(walked.walker.current_class_id, second_id);
}

TEST_MAIN(tst_parse_user_assist)
#include "tst_parse_user_assist.moc"
