#include "noting_walker.h"
#include "parse_hidden_desktop_icons.h"
#include "parse_installed_applications.h"
#include "parse_user_assist.h"
#include "test_main.h"

#include <cstring>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

using unique_walker = std::unique_ptr<registry>;
using make_walker = unique_walker (*)();

class tst_registry : public QObject
{
    Q_OBJECT

private slots:
    void keeps_the_slot_of_each_virtual_operation_data();
    void keeps_the_slot_of_each_virtual_operation();
    void reaches_the_overload_that_the_arguments_name();
    void is_destroyed_through_its_base();
    void begins_without_records();
    void finds_nothing_at_node_0();
    void leaves_bytes_and_type_to_subclasses();
    void converts_alike_in_every_subclass_data();
    void converts_alike_in_every_subclass();
    void appends_one_record_for_a_key_that_is_read();
    void appends_one_record_for_each_subkey_without_subkeys();
    void carries_fields_from_one_sibling_to_the_next();
    void carries_fields_from_descendants_to_later_siblings();
    void forgets_the_record_after_a_level();
    void tells_the_time_of_a_key_without_subkeys();
    void tells_the_time_of_a_key_that_is_not_searched_for_subkeys();
    void reads_the_values_of_all_descendants();
    void takes_the_subkeys_that_it_is_given_as_read();
    void goes_over_damaged_neighbours();
    void accumulates_records_over_walks();
};

namespace {

// A virtual member's pointer holds its offset in the table, to which x86 adds 1.
template<typename operation>
int slot_of(operation member)
{
    std::ptrdiff_t word = 0;
    static_assert(sizeof member >= sizeof word);
    std::memcpy(&word, &member, sizeof word);
    return static_cast<int>(word & ~std::ptrdiff_t(1)) / static_cast<int>(sizeof(void *));
}

} // namespace

void tst_registry::keeps_the_slot_of_each_virtual_operation_data()
{
    using text_conversion = QString (registry::*)(hive_h *, unsigned long);
    using bytes_conversion = QByteArray (registry::*)(hive_h *, unsigned long, int);
    using type_conversion = int (registry::*)(hive_h *, unsigned long, QString);

    QTest::addColumn<int>("slot");
    QTest::addColumn<int>("expected"); // the destructor takes the slots 0 and 1
    QTest::addRow("start_registry_parse") << slot_of(&registry::start_registry_parse) << 2;
    QTest::addRow("get_user_node_handle") << slot_of(&registry::get_user_node_handle) << 3;
    QTest::addRow("values_of_the_node") << slot_of(&registry::values_of_the_node) << 4;
    QTest::addRow("run_only_multiple") << slot_of(&registry::run_only_multiple) << 5;
    QTest::addRow("run_only_multiple_paths") << slot_of(&registry::run_only_multiple_paths) << 6;
    QTest::addRow("prepare_the_node_key_child")
        << slot_of(&registry::prepare_the_node_key_child) << 7;
    QTest::addRow("htoi") << slot_of(&registry::htoi) << 8;
    QTest::addRow("htoll") << slot_of(&registry::htoll) << 9;
    QTest::addRow("epoc_time_conversion") << slot_of(&registry::epoc_time_conversion) << 10;
    QTest::addRow("convert_data to text")
        << slot_of(static_cast<text_conversion>(&registry::convert_data)) << 11;
    QTest::addRow("run_only_multiple_recurse")
        << slot_of(&registry::run_only_multiple_recurse) << 12;
    QTest::addRow("find_node_value_length") << slot_of(&registry::find_node_value_length) << 13;
    QTest::addRow("convert_data to bytes")
        << slot_of(static_cast<bytes_conversion>(&registry::convert_data)) << 14;
    QTest::addRow("convert_data to the type")
        << slot_of(static_cast<type_conversion>(&registry::convert_data)) << 15;
}

void tst_registry::keeps_the_slot_of_each_virtual_operation()
{
    QFETCH(const int, slot);
    QTEST(slot, "expected");
}

void tst_registry::reaches_the_overload_that_the_arguments_name()
{
    class answering_walker : public registry
    {
    public:
        QString convert_data(hive_h *, unsigned long) override { return u"text"_s; }
        QByteArray convert_data(hive_h *, unsigned long, int) override { return "bytes"; }
        int convert_data(hive_h *, unsigned long, QString) override { return 7; }
    };
    answering_walker walker;
    registry &base = walker;
    QCOMPARE(base.convert_data(nullptr, 0), u"text"_s);
    QCOMPARE(base.convert_data(nullptr, 0, 1), "bytes"_ba);
    QCOMPARE(base.convert_data(nullptr, 0, QString()), 7);
}

void tst_registry::is_destroyed_through_its_base()
{
    class flagging_walker : public registry
    {
    public:
        explicit flagging_walker(bool &destroyed) : m_destroyed(destroyed) {}
        ~flagging_walker() override { m_destroyed = true; }

    private:
        bool &m_destroyed;
    };
    bool destroyed = false;
    std::unique_ptr<registry> walker = std::make_unique<flagging_walker>(destroyed);
    walker.reset();
    QVERIFY(destroyed);
}

void tst_registry::begins_without_records()
{
    const registry walker;
    QVERIFY(walker.data_records.isEmpty());
    QVERIFY(walker.installed_apps_records.isEmpty());
    QVERIFY(walker.user_assist_records.isEmpty());
    QVERIFY(walker.hidden_icons_records.isEmpty());
    QCOMPARE(walker.current_key_name, QString());
    QCOMPARE(walker.current_key_timestamp, QString());
    QCOMPARE(walker.parsed_key_path, QString());
}

void tst_registry::finds_nothing_at_node_0()
{
    noted_hive noted;
    noted.hive.key(u"a"_s).dword(u"v"_s, 1);
    const unique_hive hive = noted.opened();
    QVERIFY(noted.walker.prepare_the_node_key_child(hive.get(), 0, true).isEmpty());
    noted.walker.values_of_the_node(hive.get(), 0);
    noted.walker.run_only_multiple_paths(hive.get(), 0);
    noted.walker.run_only_multiple_recurse(hive.get(), 0, {});
    QCOMPARE(noted.walker.run_only_multiple(hive.get(), 0), false);
    QCOMPARE(noted.walker.current_key_timestamp, u"-11644473600"_s);
    QVERIFY(noted.walker.values.isEmpty());
    QVERIFY(noted.walker.data_records.isEmpty());
}

void tst_registry::leaves_bytes_and_type_to_subclasses()
{
    noted_hive noted;
    noted.hive.key(u"a"_s).dword(u"v"_s, 0x41);
    const unique_hive hive = noted.opened();
    const auto value = static_cast<unsigned long>(noted.hive.key(u"a"_s).cells_of_value(0).value);
    registry walker;
    QCOMPARE(walker.convert_data(hive.get(), value), u"A"_s);
    QVERIFY(walker.convert_data(hive.get(), value, 1).isEmpty());
    QCOMPARE(walker.convert_data(hive.get(), value, QString()), 0);
    walker.find_node_value_length(hive.get(), value, u"v"_s);
    QVERIFY(walker.data_records.isEmpty());
}

void tst_registry::converts_alike_in_every_subclass_data()
{
    QTest::addColumn<make_walker>("make");
    const auto row = [](const char *name, make_walker make) { QTest::addRow("%s", name) << make; };
    row("installed applications", [] { return unique_walker(new parse_installed_applications); });
    row("UserAssist", [] { return unique_walker(new parse_user_assist); });
    row("hidden desktop icons", [] { return unique_walker(new parse_hidden_desktop_icons); });
}

void tst_registry::converts_alike_in_every_subclass()
{
    QFETCH(const make_walker, make);
    const unique_walker walker = make();
    noted_hive noted;
    hive_key &key = noted.hive.key(u"a"_s);
    key.text(u"text"_s, u"AB"_s, reg_expand_sz)
        .value(u"odd"_s, 4242, "a\0b"_ba)
        .binary(u"none"_s, {});
    const unique_hive hive = noted.opened();
    const auto value = [&](const QString &name) {
        return static_cast<unsigned long>(key.cells_of_value(name).value);
    };
    QCOMPARE(walker->convert_data(hive.get(), value(u"text"_s)), u"AB"_s);
    QCOMPARE(walker->convert_data(hive.get(), value(u"text"_s), 1), "A\0B\0\0\0"_ba);
    QCOMPARE(walker->convert_data(hive.get(), value(u"text"_s), u"ignored"_s), 2);
    QCOMPARE(walker->convert_data(hive.get(), value(u"odd"_s)), u"ab"_s);
    QCOMPARE(walker->convert_data(hive.get(), value(u"odd"_s), -1), "a\0b"_ba);
    QCOMPARE(walker->convert_data(hive.get(), value(u"odd"_s), QString()), 4242);
    QVERIFY(walker->convert_data(hive.get(), value(u"none"_s), 0).isEmpty());
    QVERIFY(walker->convert_data(hive.get(), 0).isEmpty());
    QVERIFY(walker->convert_data(hive.get(), 0, 1).isEmpty());
    QCOMPARE(walker->convert_data(hive.get(), 0, QString()), 0);
}

void tst_registry::appends_one_record_for_a_key_that_is_read()
{
    noted_hive noted;
    noted.hive.key(u"a"_s).text(u"name"_s, u"N"_s).text(u"value"_s, u"V"_s).binary(u"data"_s, "D");
    noted.hive.key(u"a\\below"_s).text(u"name"_s, u"below"_s);
    QCOMPARE(noted.walk(u"a"_s, true), 0);
    QCOMPARE(noted.walker.records(), QStringList{u"N|V|D"_s});
    QCOMPARE(noted.walker.current_key_name, u"a"_s);
}

void tst_registry::appends_one_record_for_each_subkey_without_subkeys()
{
    noted_hive noted;
    noted.hive.key(u"start"_s).text(u"name"_s, u"not read"_s);
    noted.hive.key(u"start\\1"_s).text(u"name"_s, u"first"_s);
    noted.hive.key(u"start\\2"_s).text(u"value"_s, u"second"_s);
    noted.hive.key(u"start\\3"_s);
    noted.hive.key(u"start\\4"_s).text(u"name"_s, u"not read"_s);
    noted.hive.key(u"start\\4\\below"_s).text(u"name"_s, u"below"_s);
    QCOMPARE(noted.walk(u"start"_s, false), 0);
    QCOMPARE(noted.walker.records(),
             (QStringList{u"first||"_s, u"|second|"_s, u"||"_s, u"below||"_s}));
    QCOMPARE(noted.walker.values.size(), 3);
}

void tst_registry::carries_fields_from_one_sibling_to_the_next()
{
    noted_hive noted;
    noted.hive.key(u"start\\p\\2"_s).text(u"name"_s, u"second"_s);
    noted.hive.key(u"start\\p\\1"_s).text(u"name"_s, u"first"_s).text(u"value"_s, u"kept"_s);
    noted.hive.key(u"start\\p\\3"_s).binary(u"data"_s, "third");
    QCOMPARE(noted.walk(u"start"_s, false), 0);
    QCOMPARE(noted.walker.records(),
             (QStringList{u"first|kept|"_s, u"second|kept|"_s, u"second|kept|third"_s}));
}

void tst_registry::carries_fields_from_descendants_to_later_siblings()
{
    noted_hive noted;
    noted.hive.key(u"start\\p\\1"_s).text(u"name"_s, u"first"_s);
    noted.hive.key(u"start\\p\\1\\x\\y"_s).text(u"value"_s, u"deep"_s);
    noted.hive.key(u"start\\p\\2"_s).text(u"name"_s, u"second"_s);
    noted.hive.key(u"start\\q\\1"_s).text(u"name"_s, u"other parent"_s);
    QCOMPARE(noted.walk(u"start"_s, false), 0);
    QCOMPARE(noted.walker.records(),
             (QStringList{u"first|deep|"_s, u"second|deep|"_s, u"other parent||"_s}));
}

void tst_registry::forgets_the_record_after_a_level()
{
    noted_hive noted;
    noted.hive.key(u"p\\1"_s).text(u"name"_s, u"N"_s);
    const unique_hive hive = noted.opened();
    registry::struct_data record;
    noted.walker.current_data = &record;
    QVERIFY(noted.walker.run_only_multiple(hive.get(), handle_of(noted.hive.key(u"p"_s))));
    QCOMPARE(noted.walker.current_data, nullptr);
    QCOMPARE(noted.walker.records(), QStringList{u"N||"_s});
    QCOMPARE(record.name, QString());
}

void tst_registry::tells_the_time_of_a_key_without_subkeys()
{
    noted_hive noted;
    hive_key &leaf = noted.hive.key(u"leaf"_s).last_write_unix(77).text(u"name"_s, u"N"_s);
    const unique_hive hive = noted.opened();
    QCOMPARE(noted.walker.run_only_multiple(hive.get(), handle_of(leaf)), false);
    QCOMPARE(noted.walker.current_key_timestamp, u"77"_s);
    QVERIFY(noted.walker.values.isEmpty());
    QVERIFY(noted.walker.data_records.isEmpty());
}

// A walker that does not look for subkeys gets the time all the same.
void tst_registry::tells_the_time_of_a_key_that_is_not_searched_for_subkeys()
{
    struct walker_of_lone_keys : registry
    {
        bool run_only_multiple(hive_h * /*hive*/, int /*node*/) override { return false; }
    };
    walked_hive<walker_of_lone_keys> walked;
    walked.hive.key(u"a\\b"_s).last_write_unix(78);
    QCOMPARE(walked.walk(u"a"_s, false), 0);
    QCOMPARE(walked.walker.current_key_timestamp, u"78"_s);
}

void tst_registry::reads_the_values_of_all_descendants()
{
    noted_hive noted;
    for (const QString &path : {u"top"_s, u"top\\z"_s, u"top\\z\\1"_s, u"top\\z\\1\\x"_s,
                                u"top\\a"_s, u"top\\a\\2"_s, u"top\\a\\0"_s})
        noted.hive.key(path).dword(u"v"_s, 1);
    const unique_hive hive = noted.opened();
    noted.walker.run_only_multiple_recurse(hive.get(), handle_of(noted.hive.key(u"top"_s)), {});
    QCOMPARE(noted.walker.values,
             (QStringList{u"z:v"_s, u"a:v"_s, u"2:v"_s, u"0:v"_s, u"1:v"_s, u"x:v"_s}));
}

void tst_registry::takes_the_subkeys_that_it_is_given_as_read()
{
    noted_hive noted;
    for (const QString &path : {u"top\\a"_s, u"top\\a\\1"_s, u"top\\b"_s, u"top\\b\\2"_s})
        noted.hive.key(path).dword(u"v"_s, 1);
    const unique_hive hive = noted.opened();
    const QMap<QString, int> given{{u"a"_s, handle_of(noted.hive.key(u"top\\a"_s))}};
    noted.walker.run_only_multiple_recurse(hive.get(), handle_of(noted.hive.key(u"top"_s)), given);
    QCOMPARE(noted.walker.values, QStringList{u"1:v"_s});
}

void tst_registry::goes_over_damaged_neighbours()
{
    noted_hive noted;
    for (const QString &name : {u"1"_s, u"2"_s, u"3"_s, u"4"_s})
        noted.hive.key(u"start"_s).add_key(name).text(u"name"_s, u"key "_s + name);
    hive_damage damage = noted.damage();
    damage.value_count(noted.hive.key(u"start\\2"_s).cells().key, 1000)
        .subkey_count(noted.hive.key(u"start\\3"_s).cells().key, 1000)
        .data_cell(noted.hive.key(u"start\\4"_s).cells_of_value(0).value, 0x7ffff000);
    QCOMPARE(noted.walk(damage, u"start"_s, false), 0);
    QCOMPARE(noted.walker.records(), (QStringList{u"key 1||"_s, u"||"_s, u"key 3||"_s, u"||"_s}));
}

void tst_registry::accumulates_records_over_walks()
{
    noted_hive noted;
    noted.hive.key(u"a"_s).text(u"name"_s, u"A"_s);
    noted.hive.key(u"b"_s).text(u"value"_s, u"B"_s);
    QCOMPARE(noted.walk(u"a"_s, true), 0);
    QCOMPARE(noted.walk(u"b"_s, true), 0);
    QCOMPARE(noted.walker.start_registry_parse(noted.path() + u"none"_s, u"a"_s, true), -1);
    QCOMPARE(noted.walk(u"\\"_s, false), 0);
    QCOMPARE(noted.walker.records(), (QStringList{u"A||"_s, u"|B|"_s, u"A||"_s, u"|B|"_s}));
    QCOMPARE(noted.walker.parsed_key_path, QString());
}

TEST_MAIN(tst_registry)
#include "tst_registry.moc"
