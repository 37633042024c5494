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
#include <QtEndian>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What libhivex must not be asked for.
class tst_guarded_hive : public QObject
{
    Q_OBJECT

private slots:
    void reads_an_intact_hive();
    void tells_nothing_of_a_handle_of_another_kind();
    void reads_nothing_while_closed();
    void opens_no_hive_that_ends_within_a_bin_head();
    void opens_a_hive_with_a_few_bytes_behind_its_bins();
    void opens_no_hive_without_a_root();
    void opens_a_hive_anew();
    void reads_data_of_every_length_data();
    void reads_data_of_every_length();
    void refuses_big_data_that_leave_the_file();
    void takes_data_that_begin_like_big_data_as_they_are_data();
    void takes_data_that_begin_like_big_data_as_they_are();
    void refuses_data_that_cannot_be_read_again();
    void reads_records_that_end_with_the_file();
    void tells_the_path_of_a_key();
    void tells_where_a_name_cannot_be_read();
    void tells_of_a_long_path_the_end();
    void tells_the_way_on_which_a_key_was_found();
    void tells_the_key_at_which_the_walk_ended();
    void allows_nothing_for_what_stands_behind_the_bins();

private:
    QString write(const QByteArray &hive) const
    {
        write_file(m_folder.filePath(u"hive"_s), hive);
        return m_folder.filePath(u"hive"_s);
    }

    QTemporaryDir m_folder;
};

namespace {

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

void tst_guarded_hive::tells_nothing_of_a_handle_of_another_kind()
{
    hive_builder builder;
    builder.root().dword(u"v"_s, 7);
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    const unsigned long key = hive.root();
    const unsigned long value = handle_at(builder.root().cells_of_value(0).value);
    QVERIFY(!hive.value_name(key));
    QVERIFY(!hive.data(key).bytes);
    QCOMPARE(hive.data(key).length, 0);
    QCOMPARE(hive.value_type(key), 0);
    QVERIFY(!hive.key_name(value));
    QVERIFY(!hive.subkeys(value));
    QVERIFY(!hive.values(value));
    QCOMPARE(hive.last_write_time(value), -1);
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
    QVERIFY(!hive.open(write(QByteArray(8192, 'x'))));
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

void tst_guarded_hive::opens_a_hive_with_a_few_bytes_behind_its_bins()
{
    guarded_hive hive;
    QVERIFY(hive.open(write(hive_builder().bytes() + "bytes")));
}

void tst_guarded_hive::opens_no_hive_without_a_root()
{
    hive_builder builder;
    hive_damage damage(builder.bytes());
    const qint64 root = builder.root().cells().key;
    const auto size = qFromLittleEndian<quint32>(builder.bytes().constData() + root);
    damage.set_32(root, 0 - size); // not in use any more, which libhivex opens
    guarded_hive hive;
    QVERIFY(!hive.open(write(damage.bytes())));
    QVERIFY(!hive.is_open());
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
    builder.root().dword(u"inside"_s, 7);
    const QString path = write(builder.bytes());
    guarded_hive hive;
    QVERIFY(hive.open(path));
    QVERIFY(QFile(path).resize(0));
    QVERIFY(hive.values(hive.root()) != nullptr); // libhivex has it in memory
    QVERIFY(!hive.data(handle_at(builder.root().cells_of_value(1).value)).bytes);
    QVERIFY(hive.data(handle_at(builder.root().cells_of_value(2).value)).bytes != nullptr);
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

void tst_guarded_hive::tells_the_path_of_a_key()
{
    hive_builder builder;
    const hive_key &deep = builder.key(u"One\\Zwei ü\\三"_s);
    builder.key(u"other\\sibling"_s);
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

void tst_guarded_hive::tells_where_a_name_cannot_be_read()
{
    hive_builder builder;
    hive_key &unreadable = builder.root().add_key(hive_name::lone_surrogate());
    const hive_key &below = unreadable.add_key(u"below"_s);
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    list_everything(hive);
    QCOMPARE(hive.key_path(node_of(below)), u"?\\below"_s);
}

void tst_guarded_hive::tells_of_a_long_path_the_end()
{
    const QString longest(249, u'x');
    hive_builder builder;
    const hive_key &whole = builder.key(longest + u'\\' + longest);
    const hive_key &cut = builder.key(longest + u'\\' + longest + u'x');
    const hive_key &deep = builder.key(u"first\\"_s.repeated(200) + u"last"_s);
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    list_everything(hive);
    QCOMPARE(hive.key_path(node_of(whole)), longest + u'\\' + longest);
    QCOMPARE(hive.key_path(node_of(cut)), u'…' + longest + u'\\' + longest + u'x');
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

/// Reads until the walk is over; returns where it was.
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
    const hive_key &long_data = builder.key(u"z"_s).binary(u""_s, QByteArray(1000000, 'x'));
    guarded_hive hive;
    QVERIFY(hive.open(write(builder.bytes())));
    const unsigned long value = handle_at(listed.cells_of_value(0).value);
    const auto list = [&] {
        list_everything(hive);
        for (int i = 0; i <= 66; ++i) // which leaves a megabyte
            hive.data(handle_at(long_data.cells_of_value(0).value));
        hive.values(node_of(listed));
        QVERIFY(!hive.is_walk_over());
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

TEST_MAIN(tst_guarded_hive)
#include "tst_guarded_hive.moc"
