#include "application_keys.h"
#include "parse_hidden_desktop_icons.h"
#include "test_main.h"
#include "walked_hive.h"

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

using icons_hive = walked_hive<parse_hidden_desktop_icons>;

class tst_parse_hidden_desktop_icons : public QObject
{
    Q_OBJECT

private slots:
    void records_each_value_of_each_direct_subkey();
    void orders_subkeys_by_name_and_keeps_values_in_hive_order();
    void ignores_the_keys_own_values_and_deeper_keys();
    void takes_the_key_path_to_the_letter_data();
    void takes_the_key_path_to_the_letter();
    void keeps_data_byte_for_byte_data();
    void keeps_data_byte_for_byte();
    void goes_over_damaged_neighbours();

    void records_each_value_of_a_name_space_key_as_text();
    void alters_letters_beyond_ascii();
    void finds_the_name_space_key_anywhere_in_the_path_data();
    void finds_the_name_space_key_anywhere_in_the_path();
    void visits_nothing_below_a_name_space_key();
    void records_nothing_of_a_missing_key();
    void records_nothing_when_the_key_is_walked_the_other_way();

    void looks_up_the_names_of_icons();
    void forgets_the_keys_of_a_hive_whose_names_were_looked_up();
    void looks_up_no_names_without_a_hive();
    void keeps_the_key_path();
    void accumulates_records_over_walks();
    void keeps_the_records_of_one_walker_while_another_walks();
};

namespace {

const QString class_id = u"{20D04FE0-3AEA-1069-A2D8-08002B30309D}"_s;
const QString icon_key = name_space_key + u'\\' + class_id;

/// Records as "name|value|data in hexadecimal digits".
template<typename record_type>
QStringList texts_of(const QList<record_type> &records)
{
    QStringList texts;
    for (const record_type &record : records)
        texts.append(record.name + u'|' + record.value + u'|' +
                     QString::fromLatin1(record.data.toHex()));
    return texts;
}

} // namespace

void tst_parse_hidden_desktop_icons::records_each_value_of_each_direct_subkey()
{
    icons_hive walked;
    walked.hive.key(hide_desktop_icons_key + u"\\NewStartPanel"_s)
        .dword(class_id, 1)
        .text(u"other"_s, u"A"_s);
    walked.hive.key(hide_desktop_icons_key + u"\\ClassicStartMenu"_s).dword(class_id, 0);
    QCOMPARE(walked.walk(hide_desktop_icons_key, false), 0);
    QCOMPARE(texts_of(walked.walker.data_records),
             (QStringList{class_id + u"||00000000"_s, class_id + u"||01000000"_s,
                          u"other||41000000"_s}));
    QVERIFY(walked.walker.hidden_icons_records.isEmpty());
}

void tst_parse_hidden_desktop_icons::orders_subkeys_by_name_and_keeps_values_in_hive_order()
{
    icons_hive walked;
    for (const QString &name : {u"b"_s, u"A"_s, u"a"_s})
        walked.hive.key(hide_desktop_icons_key)
            .add_key(name)
            .dword(name + u" z"_s, 1)
            .dword(name + u" a"_s, 0)
            .dword(u""_s, 2);
    QCOMPARE(walked.walk(hide_desktop_icons_key, false), 0);
    QCOMPARE(texts_of(walked.walker.data_records),
             (QStringList{u"A z||01000000"_s, u"A a||00000000"_s, u"||02000000"_s,
                          u"a z||01000000"_s, u"a a||00000000"_s, u"||02000000"_s,
                          u"b z||01000000"_s, u"b a||00000000"_s, u"||02000000"_s}));
}

void tst_parse_hidden_desktop_icons::ignores_the_keys_own_values_and_deeper_keys()
{
    icons_hive walked;
    walked.hive.key(hide_desktop_icons_key).dword(u"own"_s, 1);
    walked.hive.key(hide_desktop_icons_key + u"\\sub"_s).dword(u"direct"_s, 1);
    walked.hive.key(hide_desktop_icons_key + u"\\sub\\below"_s).dword(u"below"_s, 1);
    QCOMPARE(walked.walk(hide_desktop_icons_key, false), 0);
    QCOMPARE(texts_of(walked.walker.data_records), QStringList{u"direct||01000000"_s});
}

void tst_parse_hidden_desktop_icons::takes_the_key_path_to_the_letter_data()
{
    QTest::addColumn<QString>("key_path");
    QTest::addRow("lower case") << hide_desktop_icons_key.toLower();
    QTest::addRow("upper case") << hide_desktop_icons_key.toUpper();
    QTest::addRow("one letter in other case") << u's' + hide_desktop_icons_key.mid(1);
    QTest::addRow("a leading backslash") << u'\\' + hide_desktop_icons_key;
    QTest::addRow("a trailing backslash") << hide_desktop_icons_key + u'\\';
    QTest::addRow("another key") << name_space_key;
    QTest::addRow("the root key") << u"\\"_s;
}

void tst_parse_hidden_desktop_icons::takes_the_key_path_to_the_letter()
{
    QFETCH(const QString, key_path);
    icons_hive walked;
    walked.hive.key(key_path).dword(u"own"_s, 1);
    walked.hive.key(key_path).key(u"sub"_s).dword(class_id, 1);
    QCOMPARE(walked.walk(key_path, false), 0);
    QCOMPARE(walked.walk(key_path, true), 0);
    QVERIFY(walked.walker.data_records.isEmpty());
    QVERIFY(walked.walker.hidden_icons_records.isEmpty());
}

void tst_parse_hidden_desktop_icons::keeps_data_byte_for_byte_data()
{
    QTest::addColumn<quint32>("type");
    QTest::addColumn<QByteArray>("data");
    QTest::addRow("a number") << quint32(reg_dword) << registry_dword(1);
    QTest::addRow("a number of 2 bytes") << quint32(reg_dword) << "\x01\0"_ba;
    QTest::addRow("no bytes") << quint32(reg_dword) << QByteArray();
    QTest::addRow("a text") << quint32(reg_sz) << registry_text(u"1"_s);
    QTest::addRow("big data") << quint32(reg_binary) << "1\0\0\0"_ba.repeated(9000);
}

void tst_parse_hidden_desktop_icons::keeps_data_byte_for_byte()
{
    QFETCH(const quint32, type);
    QFETCH(const QByteArray, data);
    icons_hive walked;
    walked.hive.key(hide_desktop_icons_key + u"\\sub"_s).value(class_id, type, data);
    QCOMPARE(walked.walk(hide_desktop_icons_key, false), 0);
    QCOMPARE(walked.walker.data_records.size(), 1);
    QVERIFY(walked.walker.data_records.first().data == data);
}

void tst_parse_hidden_desktop_icons::goes_over_damaged_neighbours()
{
    icons_hive walked;
    for (const QString &name : {u"1"_s, u"2"_s, u"3"_s, u"4"_s})
        walked.hive.key(hide_desktop_icons_key + u'\\' + name)
            .binary(name + u" first"_s, "12345")
            .dword(name + u" second"_s, 1);
    hive_damage damage = walked.damage();
    const auto sub = [&](const QString &name) -> hive_key & {
        return walked.hive.key(hide_desktop_icons_key + u'\\' + name);
    };
    damage.value_list(sub(u"1"_s).cells().key, 0x7ffff000)
        .key_name_size(sub(u"2"_s).cells().key, 60000)
        .value_name_size(sub(u"3"_s).cells_of_value(1).value, 60000)
        .data_cell(sub(u"4"_s).cells_of_value(0).value, 0x7ffff000);
    QCOMPARE(walked.walk(damage, hide_desktop_icons_key, false), 0);
    QCOMPARE(texts_of(walked.walker.data_records),
             (QStringList{u"3 first||3132333435"_s, u"4 first||"_s, u"4 second||01000000"_s}));
}

void tst_parse_hidden_desktop_icons::records_each_value_of_a_name_space_key_as_text()
{
    icons_hive walked;
    walked.hive.key(icon_key)
        .text(u"named"_s, u"named text"_s)
        .text(u""_s, u"OneDrive"_s)
        .dword(u"number"_s, 0x41);
    QCOMPARE(walked.walk(icon_key, true), 0);
    QCOMPARE(texts_of(walked.walker.hidden_icons_records),
             (QStringList{u"|named text|"_s, u"|OneDrive|"_s, u"|A|"_s}));
    QCOMPARE(walked.walker.current_key_name, class_id);
    QVERIFY(walked.walker.data_records.isEmpty());
}

void tst_parse_hidden_desktop_icons::alters_letters_beyond_ascii()
{
    icons_hive walked;
    walked.hive.key(icon_key).text(u""_s, u"Höhle"_s).text(u"2"_s, u"aЖ"_s);
    QCOMPARE(walked.walk(icon_key, true), 0);
    QCOMPARE(texts_of(walked.walker.hidden_icons_records),
             (QStringList{u"|H\ufffdhle|"_s, u"|a\x16\x04|"_s}));
}

void tst_parse_hidden_desktop_icons::finds_the_name_space_key_anywhere_in_the_path_data()
{
    QTest::addColumn<QString>("key_path");
    QTest::addColumn<int>("records");
    QTest::addRow("the key of a class id") << icon_key << 1;
    QTest::addRow("a leading backslash") << u'\\' + icon_key << 1;
    QTest::addRow("a key above it") << u"S-1-5-21\\"_s + icon_key << 1;
    QTest::addRow("a deeper key") << icon_key + u"\\below"_s << 1;
    QTest::addRow("no class id but the backslash") << name_space_key + u'\\' << 1;
    QTest::addRow("no backslash behind it") << name_space_key << 0;
    QTest::addRow("other letter case") << icon_key.toLower() << 0;
}

void tst_parse_hidden_desktop_icons::finds_the_name_space_key_anywhere_in_the_path()
{
    QFETCH(const QString, key_path);
    icons_hive walked;
    walked.hive.key(key_path).text(u""_s, u"icon"_s);
    QCOMPARE(walked.walk(key_path, true), 0);
    QTEST(static_cast<int>(walked.walker.hidden_icons_records.size()), "records");
}

void tst_parse_hidden_desktop_icons::visits_nothing_below_a_name_space_key()
{
    icons_hive walked;
    walked.hive.key(icon_key).text(u""_s, u"icon"_s).key(u"below"_s).text(u""_s, u"below"_s);
    QCOMPARE(walked.walk(icon_key, true), 0);
    QCOMPARE(texts_of(walked.walker.hidden_icons_records), QStringList{u"|icon|"_s});
}

void tst_parse_hidden_desktop_icons::records_nothing_of_a_missing_key()
{
    icons_hive walked;
    walked.hive.key(u"SOFTWARE\\Microsoft"_s).dword(u"v"_s, 1);
    walked.walker.current_key_name = u"before"_s;
    QCOMPARE(walked.walk(hide_desktop_icons_key, false), 0);
    QCOMPARE(walked.walk(icon_key, true), 0);
    QCOMPARE(walked.walker.current_key_name, QString());
    QVERIFY(walked.walker.data_records.isEmpty());
    QVERIFY(walked.walker.hidden_icons_records.isEmpty());
}

void tst_parse_hidden_desktop_icons::records_nothing_when_the_key_is_walked_the_other_way()
{
    icons_hive walked;
    for (const QString &path : {hide_desktop_icons_key, icon_key})
        walked.hive.key(path).dword(u"own"_s, 1).key(u"sub"_s).dword(u"v"_s, 1);
    QCOMPARE(walked.walk(hide_desktop_icons_key, true), 0);
    QCOMPARE(walked.walk(icon_key, false), 0);
    QVERIFY(walked.walker.data_records.isEmpty());
    QVERIFY(walked.walker.hidden_icons_records.isEmpty());
}

void tst_parse_hidden_desktop_icons::looks_up_the_names_of_icons()
{
    walked_hive<parse_hidden_desktop_icons> icons;
    const hive_key &bin = icons.hive.key(name_space_key + u"\\{bin}"_s)
                              .text(u""_s, u"Bin"_s)
                              .text(u"more"_s, u"Can"_s);
    icons.hive.write_to(icons.path());
    QStringList visits;
    const auto visit = [&](qsizetype position, unsigned long key) {
        QStringList names;
        for (const auto &record : std::as_const(icons.walker.hidden_icons_records))
            names.append(record.value);
        const QString found = key == node_of(bin) ? u"bin"_s : QString::number(key);
        visits.append(QString::number(position) + u' ' + found + u' ' + names.join(u','));
        return position < 2;
    };
    const QList<registry::struct_data> class_ids{
        {u"{bin}"_s, {}, {}}, {u"{none}"_s, {}, {}}, {u"{BIN}"_s, {}, {}}, {u"{bin}"_s, {}, {}}};
    QCOMPARE(icons.walker.look_up_icon_names(icons.path(), class_ids, visit), 0);
    QCOMPARE(visits, (QStringList{u"0 bin Bin,Can"_s, u"1 0 "_s, u"2 bin Bin,Can"_s}));
}

void tst_parse_hidden_desktop_icons::forgets_the_keys_of_a_hive_whose_names_were_looked_up()
{
    parse_hidden_desktop_icons walker;
    const auto look_no_further = [](qsizetype, unsigned long) { return false; };
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"hive"_s);
    hive_builder first;
    first.key(name_space_key + u"\\{bin}"_s);
    first.write_to(path);
    QCOMPARE(walker.look_up_icon_names(path, {{u"{bin}"_s, {}, {}}}, look_no_further), 0);
    hive_builder second;
    second.key(name_space_key + u"\\{can}"_s).text(u""_s, u"Can"_s);
    second.write_to(path);
    QCOMPARE(walker.start_registry_parse(path, name_space_key + u"\\{can}"_s, true), 0);
    QCOMPARE(walker.hidden_icons_records.size(), 1);
}

void tst_parse_hidden_desktop_icons::looks_up_no_names_without_a_hive()
{
    parse_hidden_desktop_icons walker;
    const QTemporaryDir folder;
    for (const QString &path : {QString(), folder.filePath(u"missing"_s)}) {
        bool is_visited = false;
        const auto visit = [&is_visited](qsizetype, unsigned long) { return is_visited = true; };
        QCOMPARE(walker.look_up_icon_names(path, {{u"{bin}"_s, {}, {}}}, visit), -1);
        QVERIFY(!is_visited);
    }
}

void tst_parse_hidden_desktop_icons::keeps_the_key_path()
{
    icons_hive walked;
    QCOMPARE(walked.walker.start_registry_parse(u"/no/such/hive"_s, u"a"_s, false), -1);
    QCOMPARE(walked.walker.parsed_key_path, u"a"_s);
    QCOMPARE(walked.walker.start_registry_parse(u""_s, u"b"_s, false), -1);
    QCOMPARE(walked.walker.start_registry_parse(u"/no/such/hive"_s, u""_s, false), -1);
    QCOMPARE(walked.walker.parsed_key_path, u"a"_s);
    QCOMPARE(walked.walk(icon_key, true), 0);
    QCOMPARE(walked.walker.parsed_key_path, icon_key);
}

void tst_parse_hidden_desktop_icons::accumulates_records_over_walks()
{
    icons_hive walked;
    walked.hive.key(hide_desktop_icons_key + u"\\sub"_s).dword(class_id, 1);
    walked.hive.key(icon_key).text(u""_s, u"icon"_s);
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(walked.walk(hide_desktop_icons_key, false), 0);
        QCOMPARE(walked.walk(icon_key, true), 0);
        QCOMPARE(walked.walker.start_registry_parse(u"/no/such/hive"_s, icon_key, true), -1);
    }
    QCOMPARE(texts_of(walked.walker.data_records),
             (QStringList{class_id + u"||01000000"_s, class_id + u"||01000000"_s}));
    QCOMPARE(texts_of(walked.walker.hidden_icons_records), (QStringList{u"|icon|"_s, u"|icon|"_s}));
}

void tst_parse_hidden_desktop_icons::keeps_the_records_of_one_walker_while_another_walks()
{
    icons_hive walked;
    walked.hive.key(hide_desktop_icons_key + u"\\sub"_s).dword(class_id, 1).dword(u"{none}"_s, 0);
    walked.hive.key(icon_key).text(u""_s, u"icon"_s);
    QCOMPARE(walked.walk(hide_desktop_icons_key, false), 0);
    parse_hidden_desktop_icons names;
    QStringList found;
    for (const registry::struct_data &record : std::as_const(walked.walker.data_records)) {
        names.hidden_icons_records.clear();
        QCOMPARE(
            names.start_registry_parse(walked.path(), name_space_key + u'\\' + record.name, true),
            0);
        found.append(texts_of(names.hidden_icons_records).join(u','));
    }
    QCOMPARE(found, (QStringList{u"|icon|"_s, u""_s}));
    QCOMPARE(walked.walker.data_records.size(), 2);
}

TEST_MAIN(tst_parse_hidden_desktop_icons)
#include "tst_parse_hidden_desktop_icons.moc"
