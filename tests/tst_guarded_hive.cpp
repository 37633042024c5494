#include "files.h"
#include "guarded_hive.h"
#include "hive_bins.h"
#include "hive_builder.h"
#include "hive_damage.h"
#include "regf_format.h"
#include "test_main.h"
#include "walked_hive.h"

#include <QFile>
#include <QTemporaryDir>
#include <functional>

using namespace Qt::StringLiterals;
using namespace test_support;

// What libhivex must not be asked for, and what is counted before it is asked.
class tst_guarded_hive : public QObject
{
    Q_OBJECT

private slots:
    void reads_an_intact_hive();
    void reads_nothing_while_closed();
    void opens_no_hive_that_ends_within_a_bin_head();
    void opens_a_hive_anew();
    void reads_data_of_every_length_data();
    void reads_data_of_every_length();
    void refuses_big_data_that_leave_the_file();
    void takes_data_that_begin_like_big_data_as_they_are_data();
    void takes_data_that_begin_like_big_data_as_they_are();
    void refuses_data_that_cannot_be_read_again();
    void reads_records_that_end_with_the_file();
    void counts_only_what_is_read_again_data();
    void counts_only_what_is_read_again();
    void follows_lists_to_where_libhivex_gives_up_data();
    void follows_lists_to_where_libhivex_gives_up();
    void tells_the_path_of_a_key();
    void tells_of_a_long_path_the_end();
    void tells_the_way_on_which_a_key_was_found();
    void tells_the_key_at_which_the_walk_ended();
    void allows_nothing_for_what_stands_behind_the_bins();
    void begins_another_walk();

private:
    QString write(const QByteArray &hive) const
    {
        write_file(m_folder.filePath(u"hive"_s), hive);
        return m_folder.filePath(u"hive"_s);
    }

    QTemporaryDir m_folder;
};

namespace {

unsigned long handle_at(qint64 cell)
{
    return static_cast<unsigned long>(cell);
}

/// Lists the subkeys of every key.
void list_everything(guarded_hive &hive)
{
    QList<size_t> keys{hive.root()};
    for (qsizetype i = 0; i < keys.size(); ++i)
        keys += entries_of(hive.subkeys(keys.at(i)));
}

/// How often, beyond the first time, the reading can be done before the walk is over; no more than
/// `most` times.
int further_readings(guarded_hive &hive, const std::function<void(guarded_hive &)> &read, int most)
{
    hive.begin_walk();
    read(hive);
    int readings = 0;
    while (readings < most) {
        read(hive);
        if (hive.is_walk_over())
            return readings;
        ++readings;
    }
    return readings;
}

} // namespace

void tst_guarded_hive::reads_an_intact_hive()
{
    hive_builder builder;
    const hive_key &key = builder.key(u"a"_s).last_write(1234567).dword(u"v"_s, 7);
    const hive_key &below = builder.key(u"a\\b"_s);
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    QCOMPARE(hive.root(), node_of(builder.root()));
    QCOMPARE(entries_of(hive.subkeys(hive.root())), QList<size_t>{node_of(key)});
    QCOMPARE(entries_of(hive.subkeys(node_of(key))), QList<size_t>{node_of(below)});
    QCOMPARE(QByteArray(hive.key_name(node_of(key)).get()), "a"_ba);
    QCOMPARE(hive.last_write_time(node_of(key)), 1234567);
    const size_t value = handle_at(key.cells_of_value(0).value);
    QCOMPARE(entries_of(hive.values(node_of(key))), QList<size_t>{value});
    QCOMPARE(QByteArray(hive.value_name(value).get()), "v"_ba);
    QCOMPARE(hive.value_type(value), 4);
    const unguarded_hive::value_data data = hive.data(value);
    QCOMPARE(QByteArray(data.bytes.get(), data.length), "\x07\0\0\0"_ba);
    QVERIFY(entries_of(hive.subkeys(node_of(below))).isEmpty());
    QVERIFY(hive.subkeys(node_of(below)) != nullptr); // an empty list is no refused one
}

void tst_guarded_hive::reads_nothing_while_closed()
{
    guarded_hive hive;
    const auto expect_nothing = [&hive] {
        QVERIFY(!hive.is_open());
        QVERIFY(!hive.subkeys(0x1020));
        QVERIFY(!hive.values(0x1020));
        QVERIFY(!hive.key_name(0x1020));
        QVERIFY(!hive.value_name(0x1020));
        QVERIFY(!hive.data(0x1020).bytes);
        QCOMPARE(hive.last_write_time(0x1020), -1);
        QCOMPARE(hive.value_type(0x1020), 0);
        QCOMPARE(hive.key_path(0x1020), QString());
    };
    expect_nothing();
    QVERIFY(hive.open(write(hive_builder().bytes())));
    hive.close();
    expect_nothing();
    QVERIFY(!hive.open(write("no hive")));
    expect_nothing();
    QVERIFY(!hive.open(m_folder.filePath(u"missing"_s)));
    expect_nothing();
}

void tst_guarded_hive::opens_no_hive_that_ends_within_a_bin_head()
{
    hive_builder builder;
    for (int i = 0; i < 3; ++i)
        builder.root().binary(QString::number(i), QByteArray(4000, 'x'));
    const QByteArray whole = builder.bytes();
    QVERIFY(whole.size() >= 12288);
    hive_damage damage(whole);
    damage.add_last_cell(QByteArray(100, 'x'));
    const qint64 last_bin = whole.size();
    for (qint64 behind = 0; behind < 40; ++behind) {
        const QByteArray cut = hive_damage(damage).truncate(last_bin + behind).bytes();
        guarded_hive hive;
        QCOMPARE(hive.open(write(cut)), behind == 0);
    }
}

void tst_guarded_hive::opens_a_hive_anew()
{
    hive_builder builder;
    const hive_key &key = builder.key(u"first"_s);
    const QString path = write(builder.bytes());
    guarded_hive hive;
    QVERIFY(hive.open(path));
    QVERIFY(QFile::copy(path, m_folder.filePath(u"copy"_s)));
    QVERIFY(hive.open(m_folder.filePath(u"copy"_s)));
    QCOMPARE(QByteArray(hive.key_name(node_of(key)).get()), "first"_ba);
    QVERIFY(!hive.open(m_folder.filePath(u"missing"_s)));
    QVERIFY(!hive.key_name(node_of(key)));
}

void tst_guarded_hive::reads_data_of_every_length_data()
{
    QTest::addColumn<int>("length");
    for (const int length : {0, 1, 4, 5, 8, 16344, 16345, 40000, 1000000})
        QTest::addRow("%d bytes", length) << length;
}

void tst_guarded_hive::reads_data_of_every_length()
{
    QFETCH(const int, length);
    hive_builder builder;
    builder.root().binary(u"v"_s, QByteArray(length, 'x'));
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    const auto data = hive.data(handle_at(builder.root().cells_of_value(0).value));
    QVERIFY(data.bytes != nullptr);
    QCOMPARE(QByteArray(data.bytes.get(), data.length), QByteArray(length, 'x'));
}

void tst_guarded_hive::refuses_big_data_that_leave_the_file()
{
    hive_builder builder;
    builder.root().binary(u"v"_s, QByteArray(40000, 'x'));
    hive_damage damage(builder.bytes());
    const value_cells cells = builder.root().cells_of_value(0);
    const auto is_read = [&] {
        guarded_hive hive;
        return hive.open(write(damage.bytes())) &&
               hive.data(handle_at(cells.value)).bytes != nullptr;
    };

    const qint64 list_of_three = damage.add_last_cell(QByteArray(12, '\0')).last_cell();
    for (qsizetype i = 0; i < 3; ++i)
        damage.offset_entry(list_of_three, i, cells.blocks.at(i));
    damage.set_32(cells.data + regf::db::block_list, stored_offset(list_of_three));
    damage.block_count(cells.data, 3);
    QVERIFY(is_read());
    damage.block_count(cells.data, 4);
    QVERIFY(!is_read());
    damage.set_32(cells.data + regf::db::block_list, 0xffffffff);
    QVERIFY(!is_read());
    const qint64 record_of_eight_bytes = damage.add_last_cell("db\x03\0"_ba).last_cell();
    damage.data_cell(cells.value, record_of_eight_bytes);
    QVERIFY(!is_read());
}

void tst_guarded_hive::takes_data_that_begin_like_big_data_as_they_are_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addRow("a text that begins like a big-data record") << "dbForge Studio for MySQL"_ba;
    QTest::addRow("the shortest data in a cell") << "dbase"_ba;
    QTest::addRow("data that fill their cell") << "db as twelve"_ba;
    QTest::addRow("a record of a list without an end") << "db\xff\xff\xff\xff\xff\xff"_ba;
}

void tst_guarded_hive::takes_data_that_begin_like_big_data_as_they_are()
{
    QFETCH(const QByteArray, data);
    hive_builder builder;
    builder.root().binary(u"v"_s, data);
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    const auto read = hive.data(handle_at(builder.root().cells_of_value(0).value));
    QCOMPARE(QByteArray(read.bytes.get(), read.length), data);
}

void tst_guarded_hive::refuses_data_that_cannot_be_read_again()
{
    hive_builder builder;
    builder.root().binary(u"first"_s, QByteArray(10000, 'x')).binary(u"v"_s, QByteArray(100, 'x'));
    const QString path = write(builder.bytes());
    guarded_hive hive;
    QVERIFY(hive.open(path));
    QVERIFY(QFile(path).resize(0));
    QVERIFY(hive.values(hive.root()) != nullptr); // libhivex has it in memory
    QVERIFY(!hive.data(handle_at(builder.root().cells_of_value(1).value)).bytes);
}

// Records of nothing but their fixed part, which is as long as their cell.
void tst_guarded_hive::reads_records_that_end_with_the_file()
{
    hive_builder builder;
    hive_key &parent = builder.key(u"parent"_s).dword(u""_s, 7);
    const hive_key &below = parent.add_key(u""_s);
    hive_damage damage(builder.bytes());
    const auto copy_to_the_end = [&](qint64 cell, qint64 length) {
        const QByteArray record = damage.bytes().mid(cell, length).mid(regf::cell_head::length);
        return damage.add_last_cell(record).last_cell();
    };
    guarded_hive hive;

    const qint64 value = copy_to_the_end(parent.cells_of_value(0).value, regf::vk::name);
    damage.offset_entry(parent.cells().value_list, 0, value);
    QCOMPARE(value + 24, damage.bytes().size());
    QVERIFY(hive.open(write(damage.bytes())));
    QCOMPARE(entries_of(hive.values(node_of(parent))), QList<size_t>{handle_at(value)});
    QCOMPARE(QByteArray(hive.value_name(handle_at(value)).get()), ""_ba);
    QVERIFY(hive.value_name(handle_at(value)) != nullptr);
    QCOMPARE(hive.value_type(handle_at(value)), 4);
    QVERIFY(hive.data(handle_at(value)).bytes != nullptr);

    const qint64 key = copy_to_the_end(below.cells().key, regf::nk::name);
    damage.list_entry(parent.cells().subkey_list, 0, key);
    QCOMPARE(key + 80, damage.bytes().size());
    QVERIFY(hive.open(write(damage.bytes())));
    QCOMPARE(entries_of(hive.subkeys(node_of(parent))), QList<size_t>{handle_at(key)});
    QVERIFY(hive.key_name(handle_at(key)) != nullptr);
    QVERIFY(hive.last_write_time(handle_at(key)) > 0);
    QVERIFY(hive.values(handle_at(key)) != nullptr);
}

namespace {

using reading = void (*)(guarded_hive &, const hive_key &);

struct counted_reading
{
    const char *name;
    reading read;
    qint64 bytes; ///< that a further reading costs, in units of 8
};

constexpr qint64 key_name_length = 24;
constexpr int subkey_count = 100;
constexpr int value_count = 50;
constexpr qint64 data_length = 1000;

constexpr qint64 in_units(qint64 length)
{
    return (length + walk_budget::unit - 1) / walk_budget::unit * walk_budget::unit;
}

unsigned long value_of(const hive_key &key, qsizetype index)
{
    return handle_at(key.cells_of_value(index).value);
}

const counted_reading readings[] = {
    {"the name of a key",
     [](guarded_hive &hive, const hive_key &key) { hive.key_name(node_of(key)); },
     in_units(0x50 + key_name_length)},
    {"a list of subkeys",
     [](guarded_hive &hive, const hive_key &key) { hive.subkeys(node_of(key)); },
     in_units(8 + 8 * subkey_count)},
    {"a list of values", [](guarded_hive &hive, const hive_key &key) { hive.values(node_of(key)); },
     in_units(4 + 4 * value_count)},
    {"the name of a value",
     [](guarded_hive &hive, const hive_key &key) { hive.value_name(value_of(key, 0)); },
     in_units(0x18 + 4)},
    {"the UTF-16 name of a value",
     [](guarded_hive &hive, const hive_key &key) { hive.value_name(value_of(key, 3)); },
     in_units(0x18 + 8)},
    {"data in a cell", [](guarded_hive &hive, const hive_key &key) { hive.data(value_of(key, 0)); },
     in_units(4 + data_length)},
    {"data in the value",
     [](guarded_hive &hive, const hive_key &key) { hive.data(value_of(key, 1)); }, 0},
    {"big data", [](guarded_hive &hive, const hive_key &key) { hive.data(value_of(key, 2)); },
     in_units(12) + in_units(4 + 4 * 3) + 2 * in_units(4 + 16344) +
         in_units(4 + 40000 - 2 * 16344)},
    {"a last-write time",
     [](guarded_hive &hive, const hive_key &key) { hive.last_write_time(node_of(key)); }, 0},
};

} // namespace

void tst_guarded_hive::counts_only_what_is_read_again_data()
{
    QTest::addColumn<int>("number");
    int number = 0;
    for (const counted_reading &counted : readings)
        QTest::newRow(counted.name) << number++;
}

void tst_guarded_hive::counts_only_what_is_read_again()
{
    QFETCH(const int, number);
    const counted_reading &counted = readings[number];
    hive_builder builder;
    hive_key &key = builder.key(QString(key_name_length, u'k'));
    key.binary(u"cell"_s, QByteArray(data_length, 'x')).dword(u"dword"_s, 1);
    key.binary(u"big"_s, QByteArray(40000, 'x')).dword(u"日本語字"_s, 1);
    for (int i = 4; i < value_count; ++i)
        key.dword(QString::number(i), 1);
    for (int i = 0; i < subkey_count; ++i)
        key.add_key(QString::number(i));
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    const auto read = [&](guarded_hive &open) { counted.read(open, key); };
    constexpr int many = 3000000;
    const qint64 allowance = walk_budget::least_allowance;
    const qint64 expected = counted.bytes == 0 ? many : allowance / counted.bytes;
    QCOMPARE(further_readings(hive, read, many), expected);
}

void tst_guarded_hive::follows_lists_to_where_libhivex_gives_up_data()
{
    QTest::addColumn<int>("levels");
    QTest::addColumn<bool>("is_read");
    QTest::newRow("a list of keys") << 0 << true;
    QTest::newRow("an index of it") << 1 << true;
    QTest::newRow("an index of an index") << 2 << true;
    QTest::newRow("as many levels as libhivex follows") << 32 << true;
    QTest::newRow("one level more") << 33 << false;
}

/// The list is read again and again: however deep it stands, each reading costs the same.
void tst_guarded_hive::follows_lists_to_where_libhivex_gives_up()
{
    QFETCH(const int, levels);
    QFETCH(const bool, is_read);
    constexpr int keys = 8000;
    hive_builder builder;
    const hive_key &only = builder.key(u"a\\b"_s);
    hive_damage damage(builder.bytes());
    const hive_key &parent = builder.key(u"a"_s);
    damage.add_list("li", QList<qint64>(keys, only.cells().key));
    for (int level = 0; level < levels; ++level)
        damage.add_list("ri", {damage.last_cell()});
    damage.subkey_list(parent.cells().key, damage.last_cell());
    damage.subkey_count(parent.cells().key, keys);
    guarded_hive hive;
    QVERIFY(hive.open(write(damage.bytes())));
    QCOMPARE(entries_of(hive.subkeys(node_of(parent))).size(), is_read ? keys : 0);
    const auto read = [&](guarded_hive &open) { open.subkeys(node_of(parent)); };
    const qint64 cost = (is_read ? in_units(8 + 4 * keys) : 0) + qint64(levels) * in_units(8 + 4);
    QCOMPARE(further_readings(hive, read, 1000000), walk_budget::least_allowance / cost);
}

void tst_guarded_hive::tells_the_path_of_a_key()
{
    hive_builder builder;
    const hive_key &deep = builder.key(u"One\\Zwei ü\\三"_s);
    builder.key(u"other\\sister"_s);
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    QCOMPARE(hive.key_path(node_of(deep)), QString()); // not listed yet
    list_everything(hive);
    QCOMPARE(hive.key_path(node_of(deep)), u"One\\Zwei ü\\三"_s);
    QCOMPARE(hive.key_path(node_of(builder.key(u"One"_s))), u"One"_s);
    QCOMPARE(hive.key_path(hive.root()), QString());
    QCOMPARE(hive.key_path(0), QString());
    hive.begin_walk();
    QCOMPARE(hive.key_path(node_of(deep)), QString());
}

void tst_guarded_hive::tells_of_a_long_path_the_end()
{
    hive_builder builder;
    const hive_key &deep = builder.key(u"first\\"_s.repeated(200) + u"last"_s);
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    list_everything(hive);
    const QString path = hive.key_path(node_of(deep));
    QCOMPARE(path.size(), 501);
    QVERIFY(path.startsWith(u'…'));
    QVERIFY(path.endsWith(u"first\\last"_s));
}

// What a key says of its parent is evidence, and a key may be listed below itself.
void tst_guarded_hive::tells_the_way_on_which_a_key_was_found()
{
    hive_builder builder;
    const hive_key &found = builder.key(u"a\\found"_s);
    const hive_key &looped = builder.key(u"a\\found\\looped"_s);
    builder.key(u"a\\found\\looped\\x"_s);
    hive_damage damage(builder.bytes());
    damage.set_32(found.cells().key + regf::nk::parent, 0xffffffff);
    damage.list_entry(looped.cells().subkey_list, 0, builder.root().cells().key);
    guarded_hive hive;
    QVERIFY(hive.open(write(damage.bytes())));
    for (const unsigned long key :
         {node_of(builder.root()), node_of(builder.key(u"a"_s)), node_of(found), node_of(looped)})
        QVERIFY(hive.subkeys(key) != nullptr);
    QCOMPARE(hive.key_path(node_of(looped)), u"a\\found\\looped"_s);
    QCOMPARE(hive.key_path(hive.root()), QString());
}

namespace {

/// Reads until the walk is over; tells where it was.
QString end_of(guarded_hive &hive, const std::function<void()> &read)
{
    while (!hive.is_walk_over())
        read();
    return hive.last_key_path();
}

} // namespace

void tst_guarded_hive::tells_the_key_at_which_the_walk_ended()
{
    hive_builder builder;
    hive_key &listed = builder.key(u"a\\listed"_s);
    for (int i = 0; i < 10000; ++i)
        listed.binary(u""_s, QByteArray(100, 'x'));
    const hive_key &parent = builder.key(u"a"_s);
    for (int i = 0; i < 1000; ++i)
        builder.key(u"a"_s).add_key(QString(1000, u'n'));
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    const unsigned long value = handle_at(listed.cells_of_value(0).value);
    const auto list = [&] {
        list_everything(hive);
        hive.values(node_of(listed));
    };
    const QList<QPair<QString, std::function<void()>>> readings{
        {u"a\\listed"_s, [&] { hive.values(node_of(listed)); }},
        {u"a\\listed"_s, [&] { hive.value_name(value); }},
        {u"a\\listed"_s, [&] { hive.data(value); }},
        {u"a"_s, [&] { hive.subkeys(node_of(parent)); }},
        {u"a"_s, [&] { hive.key_name(node_of(listed)); }},
        {u""_s, [&] { hive.key_name(node_of(parent)); }},
        {u""_s, [&] { hive.subkeys(hive.root()); }},
    };
    for (const auto &[path, read] : readings) {
        hive.begin_walk();
        list();
        QCOMPARE(end_of(hive, read), path);
        QVERIFY(!hive.values(node_of(parent)));
        QVERIFY(!hive.subkeys(node_of(parent)));
        QCOMPARE(hive.last_key_path(), path); // however much is asked for afterwards
    }
}

void tst_guarded_hive::allows_nothing_for_what_stands_behind_the_bins()
{
    hive_builder builder;
    hive_key &listed = builder.key(u"listed"_s);
    for (int i = 0; i < 60000; ++i)
        listed.dword(u""_s, 1);
    const QByteArray bytes = builder.bytes();
    const auto lists_read = [&](qint64 file_length) {
        const QString path = write(bytes);
        guarded_hive hive;
        if (!QFile::resize(path, file_length) || !hive.open(path))
            return -1;
        return further_readings(
            hive, [&](guarded_hive &open) { open.values(node_of(listed)); }, 100000);
    };
    const int readings = lists_read(bytes.size());
    QVERIFY(readings > 0);
    QCOMPARE(lists_read(qint64(200) << 20), readings);
}

void tst_guarded_hive::begins_another_walk()
{
    hive_builder builder;
    hive_key &listed = builder.key(u"listed"_s);
    for (int i = 0; i < 10000; ++i)
        listed.dword(u""_s, 1);
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    while (hive.values(node_of(listed))) {
    }
    hive.begin_walk();
    QVERIFY(!hive.is_walk_over());
    QCOMPARE(entries_of(hive.values(node_of(listed))).size(), 10000);
}

TEST_MAIN(tst_guarded_hive)
#include "tst_guarded_hive.moc"
