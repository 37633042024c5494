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
    void counts_only_what_is_read_again_data();
    void counts_only_what_is_read_again();
    void follows_lists_to_where_libhivex_gives_up_data();
    void follows_lists_to_where_libhivex_gives_up();
    void tells_the_path_of_a_key();
    void tells_of_a_long_path_the_end();
    void tells_the_key_at_which_the_walk_ended();
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

constexpr qint64 in_units(qint64 length)
{
    return (length + walk_budget::unit - 1) / walk_budget::unit * walk_budget::unit;
}

unsigned long value_of(const hive_key &key, qsizetype index)
{
    return handle_at(key.cells_of_value(index).value);
}

/// Tells what a further reading counts: how many fewer of the smallest readings the walk lasts for
/// then. Long data are read again before, which leaves few of them. The hive gets two keys for it.
class reading_cost
{
public:
    using reading = std::function<void(guarded_hive &)>;

    explicit reading_cost(hive_builder &builder)
        : m_long(builder.key(u"long"_s).binary(u"v"_s, QByteArray(1000000, 'x'))),
          m_small(builder.key(u"small"_s).dword(u"v"_s, 1))
    {
    }

    qint64 of(guarded_hive &hive, const reading &read) const
    {
        const auto read_twice = [&](guarded_hive &open) {
            read(open);
            read(open);
        };
        return walk_budget::unit *
               (small_readings_after(hive, read) - small_readings_after(hive, read_twice));
    }

private:
    qint64 small_readings_after(guarded_hive &hive, const reading &read) const
    {
        constexpr int most_long_readings = 67; // of 64 MiB they leave 57,408 bytes
        hive.begin_walk();
        read(hive);
        hive.values(node_of(m_small));
        for (int i = 0; i <= most_long_readings; ++i)
            hive.data(value_of(m_long, 0));
        qint64 readings = 0;
        while (hive.values(node_of(m_small)))
            ++readings;
        return readings;
    }

    const hive_key &m_long;
    const hive_key &m_small; ///< its list of values has one entry, which makes 8 bytes
};

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

namespace {

using reading = void (*)(guarded_hive &, const hive_key &);

struct counted_reading
{
    const char *name;
    reading read;
    qint64 bytes; ///< that a further reading counts, in units of 8
};

constexpr qint64 key_name_length = 24;
constexpr int subkey_count = 100;
constexpr int value_count = 50;
constexpr qint64 data_length = 1000;

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
    const reading_cost cost(builder);
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    const auto read = [&](guarded_hive &open) { counted.read(open, key); };
    QCOMPARE(cost.of(hive, read), counted.bytes);
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
    const reading_cost cost(builder);
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
    const qint64 read_again =
        (is_read ? in_units(8 + 4 * keys) : 0) + qint64(levels) * in_units(8 + 4);
    QCOMPARE(cost.of(hive, read), read_again);
}

void tst_guarded_hive::tells_the_path_of_a_key()
{
    hive_builder builder;
    const hive_key &deep = builder.key(u"One\\Zwei ü\\三"_s);
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    QCOMPARE(hive.key_path(node_of(deep)), u"One\\Zwei ü\\三"_s);
    QCOMPARE(hive.key_path(node_of(builder.key(u"One"_s))), u"One"_s);
    QCOMPARE(hive.key_path(hive.root()), QString());
    QCOMPARE(hive.key_path(0), QString());
}

void tst_guarded_hive::tells_of_a_long_path_the_end()
{
    hive_builder builder;
    const hive_key &deep = builder.key(u"first\\"_s.repeated(200) + u"last"_s);
    hive_damage damage(builder.bytes());
    guarded_hive hive;
    QVERIFY(hive.open(write(damage.bytes())));
    const QString path = hive.key_path(node_of(deep));
    QCOMPARE(path.size(), 501);
    QVERIFY(path.startsWith(u'…'));
    QVERIFY(path.endsWith(u"first\\last"_s));

    // A key that is its own parent has a path without an end.
    damage.set_32(deep.cells().key + regf::nk::parent, stored_offset(deep.cells().key));
    QVERIFY(hive.open(write(damage.bytes())));
    QCOMPARE(hive.key_path(node_of(deep)).size(), 501);
}

void tst_guarded_hive::tells_the_key_at_which_the_walk_ended()
{
    hive_builder builder;
    hive_key &listed = builder.key(u"a\\listed"_s);
    for (int i = 0; i < 10000; ++i)
        listed.dword(u""_s, 1);
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    hive.values(node_of(builder.key(u"a"_s)));
    while (hive.values(node_of(listed))) {
    }
    QVERIFY(hive.is_walk_over());
    QVERIFY(!hive.values(node_of(builder.key(u"a"_s))));
    QVERIFY(!hive.subkeys(node_of(builder.key(u"a"_s))));
    QCOMPARE(hive.last_key_path(), u"a\\listed"_s);
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
