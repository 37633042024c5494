#include "files.h"
#include "guarded_hive.h"
#include "hive_bins.h"
#include "hive_builder.h"
#include "hive_damage.h"
#include "test_main.h"
#include "walked_hive.h"

#include <QTemporaryDir>
#include <functional>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What a guarded hive counts as read again, before libhivex is asked.
class tst_counted_readings : public QObject
{
    Q_OBJECT

private slots:
    void counts_only_what_is_read_again_data();
    void counts_only_what_is_read_again();
    void counts_lists_of_each_kind_data();
    void counts_lists_of_each_kind();
    void follows_lists_to_where_libhivex_gives_up_data();
    void follows_lists_to_where_libhivex_gives_up();
    void follows_no_more_lists_than_libhivex();
    void counts_nothing_that_libhivex_refuses_unread_data();
    void counts_nothing_that_libhivex_refuses_unread();
    void counts_no_data_that_are_longer_than_their_cell();
    void counts_the_blocks_that_big_data_need_data();
    void counts_the_blocks_that_big_data_need();
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

constexpr qint64 in_units(qint64 length)
{
    return (length + walk_budget::unit - 1) / walk_budget::unit * walk_budget::unit;
}

unsigned long value_of(const hive_key &key, qsizetype index)
{
    return static_cast<unsigned long>(key.cells_of_value(index).value);
}

/// Says what a further reading counts: how many fewer of the smallest readings the walk lasts for
/// then. Long data are read again before, which leaves few of them. The hive gets two keys for it.
class reading_count
{
public:
    using reading = std::function<void(guarded_hive &)>;

    /// The default leaves 57,408 of 64 MiB; each long reading less leaves 1,000,768 bytes more.
    explicit reading_count(hive_builder &builder, int long_readings = 67)
        : m_long_readings(long_readings),
          m_long(builder.key(u"long"_s).binary(u"v"_s, QByteArray(1000000, 'x'))),
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
        hive.begin_walk();
        read(hive);
        hive.values(node_of(m_small));
        for (int i = 0; i <= m_long_readings; ++i)
            hive.data(value_of(m_long, 0));
        qint64 readings = 0;
        while (hive.values(node_of(m_small)))
            ++readings;
        return readings;
    }

    int m_long_readings;
    const hive_key &m_long;
    const hive_key &m_small; ///< its list of values has one entry, which makes 8 bytes
};

} // namespace

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
constexpr qint64 cell_data_length = 1000;

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
     in_units(4 + cell_data_length)},
    {"data in the value",
     [](guarded_hive &hive, const hive_key &key) { hive.data(value_of(key, 1)); }, 0},
    {"big data", [](guarded_hive &hive, const hive_key &key) { hive.data(value_of(key, 2)); },
     in_units(12) + in_units(4 + 4 * 3) + 2 * in_units(4 + 16344) +
         in_units(4 + 40000 - 2 * 16344)},
    {"a last-write time",
     [](guarded_hive &hive, const hive_key &key) { hive.last_write_time(node_of(key)); }, 0},
};

} // namespace

void tst_counted_readings::counts_only_what_is_read_again_data()
{
    QTest::addColumn<int>("number");
    int number = 0;
    for (const counted_reading &counted : readings)
        QTest::newRow(counted.name) << number++;
}

void tst_counted_readings::counts_only_what_is_read_again()
{
    QFETCH(const int, number);
    const counted_reading &counted = readings[number];
    hive_builder builder;
    hive_key &key = builder.key(QString(key_name_length, u'k'));
    key.binary(u"cell"_s, QByteArray(cell_data_length, 'x')).dword(u"dword"_s, 1);
    key.binary(u"big"_s, QByteArray(40000, 'x')).dword(u"日本語字"_s, 1);
    for (int i = 4; i < value_count; ++i)
        key.dword(QString::number(i), 1);
    for (int i = 0; i < subkey_count; ++i)
        key.add_key(QString::number(i));
    const reading_count count(builder);
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    const auto read = [&](guarded_hive &open) { counted.read(open, key); };
    QCOMPARE(count.of(hive, read), counted.bytes);
}

void tst_counted_readings::counts_lists_of_each_kind_data()
{
    QTest::addColumn<subkey_list>("kind");
    QTest::addColumn<int>("entry_length");
    QTest::newRow("li") << subkey_list::li << 4;
    QTest::newRow("lf") << subkey_list::lf << 8;
    QTest::newRow("lh") << subkey_list::lh << 8;
}

void tst_counted_readings::counts_lists_of_each_kind()
{
    QFETCH(const subkey_list, kind);
    QFETCH(const int, entry_length);
    hive_builder builder;
    hive_key &key = builder.key(u"a"_s).list_kind(kind);
    for (int i = 0; i < subkey_count; ++i)
        key.add_key(QString::number(i));
    const reading_count count(builder);
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    const auto read = [&](guarded_hive &open) { open.subkeys(node_of(key)); };
    QCOMPARE(count.of(hive, read), in_units(8 + entry_length * subkey_count));
}

void tst_counted_readings::follows_lists_to_where_libhivex_gives_up_data()
{
    QTest::addColumn<int>("levels");
    QTest::addColumn<bool>("is_read");
    QTest::newRow("a list of keys") << 0 << true;
    QTest::newRow("an index of it") << 1 << true;
    QTest::newRow("an index of an index") << 2 << true;
    QTest::newRow("as many levels as libhivex follows") << 32 << true;
    QTest::newRow("one level more") << 33 << false;
}

/// The list is read again and again: however deep it stands, each reading counts the same.
void tst_counted_readings::follows_lists_to_where_libhivex_gives_up()
{
    QFETCH(const int, levels);
    QFETCH(const bool, is_read);
    constexpr int keys = 8000;
    hive_builder builder;
    const hive_key &only = builder.key(u"a\\b"_s);
    const reading_count count(builder);
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
    QCOMPARE(count.of(hive, read), read_again);
}

/// An index of two indexes of more empty lists than libhivex follows.
void tst_counted_readings::follows_no_more_lists_than_libhivex()
{
    constexpr int most_lists = 70000;
    constexpr int lists_of_an_index = 40000;
    hive_builder builder;
    const hive_key &parent = builder.key(u"a"_s);
    builder.key(u"a\\b"_s);
    const reading_count count(builder, 65);
    hive_damage damage(builder.bytes());
    damage.add_list("li", {});
    damage.add_list("ri", QList<qint64>(lists_of_an_index, damage.last_cell()));
    damage.add_list("ri", QList<qint64>(2, damage.last_cell()));
    damage.subkey_list(parent.cells().key, damage.last_cell());
    guarded_hive hive;
    QVERIFY(hive.open(write(damage.bytes())));
    QVERIFY(!hive.subkeys(node_of(parent)));
    const qint64 indexes = in_units(8 + 4 * 2) + 2 * in_units(8 + 4 * lists_of_an_index);
    const auto read = [&](guarded_hive &open) { open.subkeys(node_of(parent)); };
    QCOMPARE(count.of(hive, read), indexes + (most_lists - 3) * in_units(8));
}

void tst_counted_readings::counts_nothing_that_libhivex_refuses_unread_data()
{
    QTest::addColumn<quint32>("subkeys");
    QTest::addColumn<quint32>("values");
    QTest::addColumn<quint32>("data_length");
    QTest::addColumn<bool>("is_counted");
    const auto add_row = [](const char *name, quint32 subkeys, quint32 values, quint32 data,
                            bool is_counted) {
        QTest::newRow(name) << subkeys << values << data << is_counted;
    };
    constexpr quint32 too_long = 8000001;
    add_row("most subkeys", 70000, 0, too_long, true);
    add_row("too many subkeys", 70001, 0, too_long, false);
    add_row("most values", 0, 110000, too_long, true);
    add_row("too many values", 0, 110001, too_long, false);
    add_row("longest data", 0, 0, too_long - 1, true);
    add_row("too long data", 0, 0, too_long, false);
}

void tst_counted_readings::counts_nothing_that_libhivex_refuses_unread()
{
    QFETCH(const quint32, subkeys);
    QFETCH(const quint32, values);
    QFETCH(const quint32, data_length);
    QFETCH(const bool, is_counted);
    hive_builder builder;
    const hive_key &key = builder.key(u"a"_s).binary(u"v"_s, QByteArray(20000, 'x'));
    builder.key(u"a\\b"_s);
    const reading_count count(builder, 66);
    hive_damage damage(builder.bytes());
    damage.subkey_count(key.cells().key, subkeys).value_count(key.cells().key, values);
    damage.data_size(key.cells_of_value(0).value, data_length);
    guarded_hive hive;
    QVERIFY(hive.open(write(damage.bytes())));
    const qint64 counted = count.of(hive, [&](guarded_hive &open) {
        open.subkeys(node_of(key));
        open.values(node_of(key));
        open.data(value_of(key, 0));
    });
    QCOMPARE(counted > 0, is_counted);
}

void tst_counted_readings::counts_no_data_that_are_longer_than_their_cell()
{
    hive_builder builder;
    const hive_key &key = builder.key(u"a"_s).binary(u"v"_s, QByteArray(20, 'x'));
    const reading_count count(builder);
    hive_damage damage(builder.bytes());
    const auto read = [&](guarded_hive &open) { open.data(value_of(key, 0)); };
    for (const quint32 length : {20U, 21U}) {
        damage.data_size(key.cells_of_value(0).value, length);
        guarded_hive hive;
        QVERIFY(hive.open(write(damage.bytes())));
        QCOMPARE(hive.data(value_of(key, 0)).bytes != nullptr, length == 20);
        QCOMPARE(count.of(hive, read), length == 20 ? 24 : 0);
    }
}

void tst_counted_readings::counts_the_blocks_that_big_data_need_data()
{
    QTest::addColumn<quint32>("length");
    QTest::addColumn<qint64>("counted");
    constexpr qint64 record_and_list = in_units(12) + in_units(4 + 4 * 3);
    constexpr qint64 full_block = in_units(4 + 16344);
    // The three blocks hold 16,344, 16,344 and 7,312 bytes.
    QTest::newRow("one") << 16344U << record_and_list + full_block;
    QTest::newRow("a byte of the next") << 16345U << record_and_list + full_block + in_units(4 + 1);
    QTest::newRow("two") << 32688U << record_and_list + 2 * full_block;
    QTest::newRow("more than there are")
        << 60000U << record_and_list + 2 * full_block + in_units(4 + 7312);
}

void tst_counted_readings::counts_the_blocks_that_big_data_need()
{
    QFETCH(const quint32, length);
    hive_builder builder;
    const hive_key &key = builder.key(u"a"_s).binary(u"v"_s, QByteArray(40000, 'x'));
    const reading_count count(builder);
    hive_damage damage(builder.bytes());
    damage.data_size(key.cells_of_value(0).value, length);
    guarded_hive hive;
    QVERIFY(hive.open(write(damage.bytes())));
    const qint64 counted = count.of(hive, [&](guarded_hive &open) { open.data(value_of(key, 0)); });
    QTEST(counted, "counted");
}

void tst_counted_readings::begins_another_walk()
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

TEST_MAIN(tst_counted_readings)
#include "tst_counted_readings.moc"
