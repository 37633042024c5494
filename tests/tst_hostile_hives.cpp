#include "application_keys.h"
#include "hive_bins.h"
#include "parse_hidden_desktop_icons.h"
#include "parse_installed_applications.h"
#include "parse_user_assist.h"
#include "regf_format.h"
#include "test_main.h"
#include "walked_hive.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// Hives that nothing but malice writes: loops, shared cells, counts without measure. Each test
// would run for hours, overflow the stack or exhaust the memory if the walks followed them.
class tst_hostile_hives : public QObject
{
    Q_OBJECT

private slots:
    void ends_at_a_key_that_lists_its_ancestor();
    void ends_at_a_key_that_lists_itself();
    void ends_where_class_ids_list_each_other();
    void reads_keys_that_two_parents_share_once();
    void reads_a_key_that_is_listed_many_times_once();
    void descends_100000_levels();
    void reads_an_intact_hive_to_its_end();
    void ends_where_many_keys_share_one_value_list();
    void ends_where_many_keys_share_one_list_of_duplicates();
    void ends_where_refused_lists_have_no_end_data();
    void ends_where_refused_lists_have_no_end();
    void ends_where_undecodable_names_have_no_end();
    void ends_a_search_among_endless_names();
    void ends_where_values_share_large_data();
    void ends_where_fields_share_one_large_value();
    void ends_where_values_share_a_long_list_of_blocks();
    void reads_nothing_past_the_end_of_the_file();
    void knows_no_bounds_outside_of_a_walk();
};

namespace {

/// Counts what the hook is given, by key and value name.
class counting_walker : public registry
{
public:
    void find_node_value_length(hive_h * /*hive*/, unsigned long /*value*/,
                                QString value_name) override
    {
        values.append(value_name);
    }

    QStringList values;
};

using counted_hive = walked_hive<counting_walker>;
using user_assist_hive = walked_hive<parse_user_assist>;

/// What a walk may read of the hive, the first time and again.
qint64 most_bytes_read(const hive_damage &damage)
{
    const qint64 length = damage.bytes().size();
    return length + std::max(walk_budget::hive_lengths * length, walk_budget::least_allowance);
}

/// How many values of 4 bytes of data with short names that may be at most: each is read with its
/// list entry and its record.
qint64 most_values(const hive_damage &damage)
{
    return most_bytes_read(damage) / 28;
}

/// Lets every list of `key`'s subkeys hold nothing but the first of them, again and again.
void list_the_first_only(hive_damage &damage, const hive_key &key, const hive_key &first)
{
    const QList<qint64> leaves = key.cells().subkey_leaves.isEmpty()
                                     ? QList<qint64>{key.cells().subkey_list}
                                     : key.cells().subkey_leaves;
    for (const qint64 leaf : leaves)
        damage.list_only(leaf, first.cells().key);
}

/// Adds `count` subkeys to `parent`, in the order of their names.
QList<hive_key *> add_numbered_keys(hive_key &parent, int count)
{
    QList<hive_key *> keys;
    for (int i = 0; i < count; ++i)
        keys.append(&parent.add_key(QString::number(100000 + i)));
    return keys;
}

} // namespace

void tst_hostile_hives::ends_at_a_key_that_lists_its_ancestor()
{
    counted_hive walked;
    const hive_key &a = walked.hive.key(u"start\\a"_s).dword(u"a"_s, 1);
    walked.hive.key(u"start\\a\\b"_s).dword(u"b"_s, 1);
    const hive_key &c = walked.hive.key(u"start\\a\\b\\c"_s).dword(u"c"_s, 1);
    walked.hive.key(u"start\\a\\b\\c\\d"_s).dword(u"d"_s, 1);
    hive_damage damage = walked.damage();
    damage.list_entry(c.cells().subkey_list, 0, a.cells().key);
    QCOMPARE(walked.walk(damage, u"start"_s, false), 0);
    QCOMPARE(walked.walker.values, (QStringList{u"b"_s, u"c"_s, u"a"_s}));
    QCOMPARE(walked.walker.data_records.size(), 1);
}

void tst_hostile_hives::ends_at_a_key_that_lists_itself()
{
    user_assist_hive walked;
    const hive_key &count = walked.hive.key(user_assist_key).key(u"id\\Count"_s).dword(u"v"_s, 1);
    walked.hive.key(user_assist_key).key(u"id\\Count\\below"_s);
    hive_damage damage = walked.damage();
    damage.list_entry(count.cells().subkey_list, 0, count.cells().key);
    QCOMPARE(walked.walk(damage, user_assist_key, false), 0);
    QCOMPARE(walked.walker.user_assist_records.size(), 1);
}

void tst_hostile_hives::ends_where_class_ids_list_each_other()
{
    user_assist_hive walked;
    hive_key &start = walked.hive.key(user_assist_key);
    const hive_key &first = start.key(u"1"_s).dword(u"on 1"_s, 1);
    const hive_key &second = start.key(u"2"_s).dword(u"on 2"_s, 1);
    start.key(u"1\\x"_s);
    start.key(u"2\\x"_s);
    hive_damage damage = walked.damage();
    damage.list_entry(first.cells().subkey_list, 0, second.cells().key);
    damage.list_entry(second.cells().subkey_list, 0, first.cells().key);
    QCOMPARE(walked.walk(damage, user_assist_key, false), 0);
    QStringList found;
    for (const registry::struct_user_asist &record : walked.walker.user_assist_records)
        found.append(record.class_id + u' ' + record.value_name);
    QCOMPARE(found, (QStringList{u"1 on 2"_s, u"1 on 1"_s, u"2 on 1"_s, u"2 on 2"_s}));
}

// Two keys at each of 40 levels, and both have the same subkeys: 2^40 ways to the last level.
void tst_hostile_hives::reads_keys_that_two_parents_share_once()
{
    counted_hive walked;
    hive_key *parent = &walked.hive.key(u"start\\top\\one"_s);
    QList<std::pair<const hive_key *, const hive_key *>> pairs;
    QStringList expected;
    for (int level = 0; level < 40; ++level) {
        hive_key &left = parent->add_key(u"l%1"_s.arg(level)).dword(u"l%1"_s.arg(level), 1);
        hive_key &right = parent->add_key(u"r%1"_s.arg(level)).dword(u"r%1"_s.arg(level), 1);
        expected << u"l%1"_s.arg(level) << u"r%1"_s.arg(level);
        pairs.emplaceBack(&left, &right);
        parent = &left;
    }
    hive_damage damage = walked.damage();
    for (const auto &[left, right] : std::as_const(pairs).first(39))
        damage.share_subkeys(right->cells().key, left->cells().key);
    QCOMPARE(walked.walk(damage, u"start"_s, false), 0);
    QCOMPARE(walked.walker.values.size(), 80);
    walked.walker.values.sort();
    expected.sort();
    QCOMPARE(walked.walker.values, expected);
}

void tst_hostile_hives::reads_a_key_that_is_listed_many_times_once()
{
    counted_hive walked;
    const QList<hive_key *> keys = add_numbered_keys(walked.hive.key(u"start\\top\\many"_s), 8000);
    keys.first()->dword(u"v"_s, 1);
    hive_damage damage = walked.damage();
    list_the_first_only(damage, walked.hive.key(u"start\\top\\many"_s), *keys.first());
    QCOMPARE(walked.walk(damage, u"start"_s, false), 0);
    QCOMPARE(walked.walker.values, QStringList{u"v"_s});
    QCOMPARE(walked.walk(damage, u"start\\top\\many"_s, false), 0);
    QCOMPARE(walked.walker.values, (QStringList{u"v"_s, u"v"_s}));
}

void tst_hostile_hives::descends_100000_levels()
{
    user_assist_hive walked;
    hive_key *key = &walked.hive.key(user_assist_key).key(u"id\\Count"_s);
    for (int level = 0; level < 100000; ++level)
        key = &key->add_key(u"d"_s);
    key->dword(u"deepest"_s, 1);
    QCOMPARE(walked.walk(user_assist_key, false), 0);
    QCOMPARE(walked.walker.user_assist_records.size(), 1);
    QCOMPARE(walked.walker.user_assist_records.first().value_name, u"deepest"_s);
}

// Names that double in UTF-8 take the most of what an intact hive may hold.
void tst_hostile_hives::reads_an_intact_hive_to_its_end()
{
    counted_hive walked;
    const QString name(200, u'ü');
    for (const QString &parent : {u"start\\p"_s, u"start\\q"_s}) {
        for (int i = 0; i < 300; ++i) {
            hive_key &key = walked.hive.key(parent).add_key(name + QString::number(i));
            for (int j = 0; j < 20; ++j)
                key.dword(name + QString::number(j), 1);
        }
    }
    QCOMPARE(walked.walk(u"start"_s, false), 0);
    QCOMPARE(walked.walker.values.size(), 12000);
    QCOMPARE(walked.walker.data_records.size(), 600);
}

void tst_hostile_hives::ends_where_many_keys_share_one_value_list()
{
    counted_hive walked;
    hive_key &start = walked.hive.key(u"start"_s);
    const QList<hive_key *> keys = add_numbered_keys(start, 400);
    for (int i = 0; i < 10000; ++i)
        keys.first()->dword(u""_s, 1);
    hive_damage damage = walked.damage();
    for (const hive_key *key : keys)
        damage.value_list(key->cells().key, keys.first()->cells().value_list)
            .value_count(key->cells().key, 10000);
    QCOMPARE(walked.walk(damage, u"start"_s, false), 0);
    QVERIFY(walked.walker.values.size() > 10000);
    QVERIFY(walked.walker.values.size() < most_values(damage));
    QCOMPARE(walked.walker.data_records.size(), 400);
}

void tst_hostile_hives::ends_where_many_keys_share_one_list_of_duplicates()
{
    user_assist_hive walked;
    hive_key &start = walked.hive.key(user_assist_key);
    const QList<hive_key *> class_ids = add_numbered_keys(start, 40000);
    const QList<hive_key *> keys = add_numbered_keys(walked.hive.key(u"many"_s), 40000);
    class_ids.last()->add_key(u"Count"_s).dword(u"beyond the budget"_s, 1);
    hive_damage damage = walked.damage();
    list_the_first_only(damage, walked.hive.key(u"many"_s), *keys.first());
    for (const hive_key *class_id : class_ids.first(39999))
        damage.share_subkeys(class_id->cells().key, walked.hive.key(u"many"_s).cells().key);
    QCOMPARE(walked.walk(damage, user_assist_key, false), 0);
    QVERIFY(walked.walker.user_assist_records.isEmpty());
}

void tst_hostile_hives::ends_where_refused_lists_have_no_end_data()
{
    QTest::addColumn<bool>("is_list_shared");
    QTest::addColumn<QStringList>("values");
    QTest::addRow("of their own") << false << QStringList{u"after them"_s};
    QTest::addRow("that they share") << true << QStringList();
}

void tst_hostile_hives::ends_where_refused_lists_have_no_end()
{
    constexpr int refused_lists = 5000;
    constexpr qsizetype longest_list = 20000;
    QFETCH(const bool, is_list_shared);
    counted_hive walked;
    hive_key &start = walked.hive.key(u"start"_s);
    const QList<hive_key *> keys = add_numbered_keys(start, refused_lists);
    const hive_key &last = start.add_key(u"last"_s).dword(u"after them"_s, 1);
    hive_damage damage = walked.damage();
    damage.add_list("li", QList<qint64>(longest_list, last.cells().key));
    damage.list_entry(damage.last_cell(), longest_list - 1, regf::first_bin + 4);
    const qint64 shared = damage.last_cell();
    for (const hive_key *key : keys) {
        damage.subkey_count(key->cells().key, longest_list);
        damage.subkey_list(key->cells().key,
                           is_list_shared ? shared : damage.add_list("li", {0x1004}).last_cell());
    }
    QCOMPARE(walked.walk(damage, u"start"_s, false), 0);
    QTEST(walked.walker.values, "values");
    QCOMPARE(walked.walker.data_records.size(), refused_lists + 1);
    QCOMPARE(walked.walker.early_end().isEmpty(), !is_list_shared);
}

void tst_hostile_hives::ends_where_undecodable_names_have_no_end()
{
    user_assist_hive walked;
    hive_key &start = walked.hive.key(user_assist_key);
    hive_key &many = start.add_key(u"1"_s);
    const QByteArray name = utf16le(QString(20000, u'a')) + "\x00\xd8"_ba;
    const hive_key &bad = many.add_key(hive_name::raw(name, false));
    add_numbered_keys(many, 60000);
    start.key(u"2\\Count"_s).dword(u"beyond the budget"_s, 1);
    hive_damage damage = walked.damage();
    list_the_first_only(damage, many, bad);
    QCOMPARE(walked.walk(damage, user_assist_key, false), 0);
    QVERIFY(walked.walker.user_assist_records.isEmpty());
}

// Each step of the path would compare its part with 60,000 names of 60,000 letters.
void tst_hostile_hives::ends_a_search_among_endless_names()
{
    counted_hive walked;
    hive_key &many = walked.hive.root();
    const hive_key &long_name = many.add_key(QString(60000, u'n'));
    add_numbered_keys(many, 60000);
    walked.hive.key(u"found"_s).dword(u"v"_s, 1);
    hive_damage damage = walked.damage();
    const qint64 last_leaf = many.cells().subkey_leaves.last();
    const qint64 found = walked.hive.key(u"found"_s).cells().key;
    const qint64 last_entry = (60002 - 1) % 511;
    QCOMPARE(walked.walk(damage, u"found"_s, true), 0);
    QCOMPARE(walked.walker.values, QStringList{u"v"_s});

    list_the_first_only(damage, many, long_name);
    damage.list_entry(last_leaf, last_entry, found);
    QCOMPARE(walked.walk(damage, u"found"_s, true), 0);
    QCOMPARE(walked.walker.values, QStringList{u"v"_s});
    QCOMPARE(walked.walker.current_key_name, QString());
}

void tst_hostile_hives::ends_where_values_share_large_data()
{
    constexpr int size = 8000000;
    user_assist_hive walked;
    hive_key &count = walked.hive.key(user_assist_key).key(u"id\\Count"_s);
    count.binary(u"0"_s, QByteArray(size, 'x'));
    for (int i = 1; i < 1000; ++i)
        count.binary(QString::number(i), "12345");
    hive_damage damage = walked.damage();
    const qint64 cell = count.cells_of_value(0).data;
    for (int i = 1; i < 1000; ++i) {
        const qint64 value = count.cells_of_value(i).value;
        damage.data_cell(value, cell).data_size(value, size);
    }
    QCOMPARE(walked.walk(damage, user_assist_key, false), 0);
    QCOMPARE(walked.walker.early_end(), user_assist_key + u"\\id\\Count"_s);
    const QList<registry::struct_user_asist> &records = walked.walker.user_assist_records;
    QCOMPARE(records.size(), most_bytes_read(damage) / size);
    for (const registry::struct_user_asist &record : records)
        QCOMPARE(record.value_data, QByteArray(size, 'x'));
}

void tst_hostile_hives::ends_where_fields_share_one_large_value()
{
    walked_hive<parse_installed_applications> walked;
    hive_key &key = walked.hive.key(uninstall_key);
    const QList<hive_key *> applications = add_numbered_keys(key, 500);
    applications.first()->binary(u"DisplayName"_s, QByteArray(8000000, 'x'));
    hive_damage damage = walked.damage();
    for (const hive_key *application : applications)
        damage.value_list(application->cells().key, applications.first()->cells().value_list)
            .value_count(application->cells().key, 1);
    QCOMPARE(walked.walk(damage, uninstall_key, false), 0);
    const auto &records = walked.walker.installed_apps_records;
    QCOMPARE(records.size(), most_bytes_read(damage) / 8000000);
    for (const registry::struct_installed_apps &record : records)
        QCOMPARE(record.display_name.size(), 8000000);
    QVERIFY(!walked.walker.early_end().isEmpty());
    QCOMPARE(walked.walk(uninstall_key, false), 0); // the hive before the damage
    QCOMPARE(walked.walker.early_end(), QString());
}

// Data of 100 bytes that claim 4,000 blocks take libhivex as long as 4,000 values.
void tst_hostile_hives::ends_where_values_share_a_long_list_of_blocks()
{
    constexpr quint16 block_count = 4000;
    walked_hive<parse_hidden_desktop_icons> walked;
    hive_key &key = walked.hive.key(hide_desktop_icons_key + u"\\sub"_s);
    key.binary(u"big"_s, QByteArray(40000, 'x'));
    key.binary(u"list"_s, QByteArray(qsizetype(4) * block_count, '\0'));
    for (int i = 2; i < 20000; ++i)
        key.binary(QString(), "12345");
    hive_damage damage = walked.damage();
    const value_cells &big = key.cells_of_value(u"big"_s);
    const qint64 list = key.cells_of_value(u"list"_s).data;
    for (int entry = 0; entry < block_count; ++entry)
        damage.offset_entry(list, entry, big.blocks.first());
    damage.set_32(big.data + regf::db::block_list, stored_offset(list));
    damage.block_count(big.data, block_count);
    for (int i = 0; i < 20000; ++i) {
        const qint64 value = key.cells_of_value(i).value;
        damage.data_cell(value, big.data).data_size(value, 100);
    }

    QCOMPARE(walked.walk(damage, hide_desktop_icons_key, false), 0);
    const QList<registry::struct_data> &records = walked.walker.data_records;
    QVERIFY(!records.isEmpty());
    QCOMPARE(records.first().data, QByteArray(100, 'x'));
    QVERIFY(records.size() < most_bytes_read(damage) / (qint64(4) * block_count) + 2);
    QVERIFY(records.size() > walk_budget::least_allowance / (qint64(5) * block_count));
}

void tst_hostile_hives::reads_nothing_past_the_end_of_the_file()
{
    user_assist_hive walked;
    hive_key &count = walked.hive.key(user_assist_key).key(u"id\\Count"_s);
    count.binary(u"big"_s, QByteArray(40000, 'x')).binary(u"next"_s, "12345");
    hive_damage damage = walked.damage();
    const value_cells &big = count.cells_of_value(0);
    const qint64 list = damage.add_last_cell(QByteArray(4, '\0')).last_cell();
    damage.offset_entry(list, 0, big.blocks.first());
    damage.set_32(big.data + regf::db::block_list, stored_offset(list));

    damage.block_count(big.data, 1);
    QCOMPARE(walked.walk(damage, user_assist_key, false), 0);
    QCOMPARE(walked.walker.user_assist_records.first().value_data.size(), 16344);
    damage.block_count(big.data, 60000);
    walked.walker.user_assist_records.clear();
    QCOMPARE(walked.walk(damage, user_assist_key, false), 0);
    QCOMPARE(walked.walker.user_assist_records.size(), 2);
    QVERIFY(walked.walker.user_assist_records.first().value_data.isEmpty());
    QCOMPARE(walked.walker.user_assist_records.last().value_data, "12345"_ba);
}

// What one walk noted and read does not touch handles that are opened by hand afterwards, nor
// does what such a handle showed.
void tst_hostile_hives::knows_no_bounds_outside_of_a_walk()
{
    user_assist_hive small;
    small.hive.key(u"a"_s);
    QCOMPARE(small.walk(u"a"_s, false), 0);

    for (const char letter : {'x', 'y'}) {
        user_assist_hive large;
        hive_key &count = large.hive.key(u"id\\Count"_s);
        for (int i = 0; i < 3000; ++i)
            count.binary(u"v"_s, QByteArray(5000, letter));
        const unique_hive hive = large.opened();
        small.walker.user_assist_records.clear();
        small.walker.run_only_multiple_paths(hive.get(), node_of(large.hive.root()));
        QCOMPARE(small.walker.user_assist_records.size(), 3000);
        for (const registry::struct_user_asist &record : small.walker.user_assist_records)
            QVERIFY(record.value_data == QByteArray(5000, letter));
    }
}

TEST_MAIN(tst_hostile_hives)
#include "tst_hostile_hives.moc"
