#include "files.h"
#include "hive_bins.h"
#include "hive_builder.h"
#include "hive_damage.h"
#include "hive_file.h"
#include "regf_format.h"
#include "test_main.h"

#include <QFile>
#include <QTemporaryDir>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace test_support;

class tst_hive_file : public QObject
{
    Q_OBJECT

private slots:
    void opens_a_regular_file();
    void opens_nothing_else_data();
    void opens_nothing_else();
    void is_limited_by_the_reach_of_an_offset();
    void knows_what_lies_inside_the_file();
    void lets_everything_pass_while_closed();
    void tells_the_stored_length_of_a_name();
    void tells_the_length_of_a_block_list_data();
    void tells_the_length_of_a_block_list();
    void takes_data_that_fit_into_their_cell_as_they_are_data();
    void takes_data_that_fit_into_their_cell_as_they_are();
    void refuses_a_record_or_a_list_that_leaves_the_file();
    void refuses_a_record_that_cannot_be_read();
    void counts_the_lists_below_an_index_data();
    void counts_the_lists_below_an_index();
    void counts_lists_that_are_listed_again();
    void counts_lists_of_damaged_indexes();
    void reads_cells_in_any_order();
    void reads_the_file_that_was_opened_last();

private:
    quint64 cell_of_data_written(qsizetype length) const;
    QString path() const { return m_folder.filePath(u"hive"_s); }

    QTemporaryDir m_folder;
};

/// Writes a hive with a value of so much data; returns the cell that they lie in.
quint64 tst_hive_file::cell_of_data_written(qsizetype length) const
{
    hive_builder hive;
    hive.root().binary(u"v"_s, QByteArray(length, 'x'));
    hive.write_to(path());
    return static_cast<quint64>(hive.root().cells_of_value(0).data);
}

void tst_hive_file::opens_a_regular_file()
{
    write_file(path(), QByteArray(100, 'x'));
    hive_file file;
    QVERIFY(!file.is_open());
    QVERIFY(file.open(path()));
    QVERIFY(file.is_open());
    QCOMPARE(file.length(), 100);
    file.close();
    QVERIFY(!file.is_open());
}

void tst_hive_file::opens_nothing_else_data()
{
    QTest::addColumn<QString>("name");
    QTest::addRow("a missing file") << u"missing"_s;
    QTest::addRow("a folder") << u"."_s;
    QTest::addRow("a pipe that nobody writes to") << u"pipe"_s;
    QTest::addRow("a link to a device") << u"device"_s;
    QTest::addRow("a link to nothing") << u"nothing"_s;
}

void tst_hive_file::opens_nothing_else()
{
    QFETCH(const QString, name);
    const QTemporaryDir folder;
    QCOMPARE(mkfifo(QFile::encodeName(folder.filePath(u"pipe"_s)).constData(), 0600), 0);
    QVERIFY(QFile::link(u"/dev/zero"_s, folder.filePath(u"device"_s)));
    QVERIFY(QFile::link(u"no such file"_s, folder.filePath(u"nothing"_s)));
    hive_file file;
    QVERIFY(!file.open(folder.filePath(name)));
    QVERIFY(!file.is_open());
}

void tst_hive_file::is_limited_by_the_reach_of_an_offset()
{
    const qint64 limit = qint64(1) << 32;
    write_file(path(), {});
    QFile content(path());
    hive_file file;
    QVERIFY(content.resize(limit));
    QVERIFY(file.open(path()));
    file.close();
    QVERIFY(content.resize(limit + 1));
    QVERIFY(!file.open(path()));
    QVERIFY(content.remove());
}

void tst_hive_file::knows_what_lies_inside_the_file()
{
    write_file(path(), QByteArray(100, 'x'));
    hive_file file;
    QVERIFY(file.open(path()));
    QVERIFY(file.holds(0, 100));
    QVERIFY(file.holds(80, 20));
    QVERIFY(!file.holds(80, 21));
    QVERIFY(!file.holds(101, 0));
    QVERIFY(!file.holds(0xffffffff, 1));
}

void tst_hive_file::lets_everything_pass_while_closed()
{
    hive_file file;
    QVERIFY(file.holds(1000, 1000));
    QCOMPARE(file.block_list_length(1000, 40000), 0);
}

void tst_hive_file::tells_the_stored_length_of_a_name()
{
    constexpr named_record key_record = {0x50, 0x4c};
    hive_builder hive;
    const hive_key &ascii = hive.key(u"four"_s);
    const hive_key &utf16 = hive.key(u"Ωmega"_s);
    hive.write_to(path());
    hive_file file;
    QCOMPARE(file.name_length(static_cast<quint64>(ascii.cells().key), key_record), 0);
    QVERIFY(file.open(path()));
    QCOMPARE(file.name_length(static_cast<quint64>(ascii.cells().key), key_record), 4);
    QCOMPARE(file.name_length(static_cast<quint64>(utf16.cells().key), key_record), 10);
    QCOMPARE(file.name_length(0x7fffffff, key_record), 0);
}

void tst_hive_file::tells_the_length_of_a_block_list_data()
{
    QTest::addColumn<int>("data_size");
    QTest::addColumn<qint64>("length");
    QTest::addRow("none for data inside the value") << 4 << qint64(0);
    QTest::addRow("none for data in one cell") << 16344 << qint64(0);
    QTest::addRow("4 bytes for each block") << 40000 << qint64(12);
}

void tst_hive_file::tells_the_length_of_a_block_list()
{
    QFETCH(const int, data_size);
    hive_builder hive;
    hive.root().binary(u"v"_s, QByteArray(data_size, 'x'));
    hive.write_to(path());
    hive_file file;
    QVERIFY(file.open(path()));
    const qint64 cell = hive.root().cells_of_value(0).data;
    QTEST(file.block_list_length(static_cast<quint64>(cell), data_size), "length");
}

void tst_hive_file::takes_data_that_fit_into_their_cell_as_they_are_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addRow("a text that begins like a big-data record") << "dbForge Studio for MySQL"_ba;
    QTest::addRow("the shortest data in a cell") << "dbase"_ba;
    QTest::addRow("a record's length of data") << "db\xff\xff\xff\xff\xff\xff"_ba;
}

void tst_hive_file::takes_data_that_fit_into_their_cell_as_they_are()
{
    QFETCH(const QByteArray, data);
    hive_builder hive;
    hive.root().binary(u"v"_s, data);
    hive.write_to(path());
    hive_file file;
    QVERIFY(file.open(path()));
    const auto cell = static_cast<quint64>(hive.root().cells_of_value(0).data);
    QCOMPARE(file.block_list_length(cell, data.size()), 0);
}

void tst_hive_file::refuses_a_record_or_a_list_that_leaves_the_file()
{
    hive_builder hive;
    hive.root().binary(u"v"_s, QByteArray(40000, 'x'));
    hive_damage damage(hive.bytes());
    const qint64 record = hive.root().cells_of_value(0).data;
    const auto length_at = [&](qint64 cell) {
        write_file(path(), damage.bytes());
        hive_file file;
        return file.open(path()) ? file.block_list_length(static_cast<quint64>(cell), 40000) : 99;
    };

    const qint64 list_of_three = damage.add_last_cell(QByteArray(12, '\0')).last_cell();
    damage.set_32(record + regf::db::block_list, stored_offset(list_of_three));
    damage.block_count(record, 3);
    QCOMPARE(length_at(record), 12);
    damage.block_count(record, 4);
    QCOMPARE(length_at(record), -1);
    damage.set_32(record + regf::db::block_list, 0xffffffff);
    QCOMPARE(length_at(record), -1);

    const qint64 record_of_eight_bytes = damage.add_last_cell("db\x03\0"_ba).last_cell();
    QCOMPARE(length_at(record_of_eight_bytes), -1);
}

void tst_hive_file::refuses_a_record_that_cannot_be_read()
{
    const quint64 cell = cell_of_data_written(100);
    hive_file file;
    QVERIFY(file.open(path()));
    QVERIFY(QFile(path()).resize(0));
    QCOMPARE(file.block_list_length(cell, 100), -1);
}

void tst_hive_file::counts_the_lists_below_an_index_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("subkeys");
    QTest::addColumn<qint64>("lists");
    const auto add_row = [](const char *name, subkey_list kind, int subkeys, qint64 lists) {
        QTest::addRow("%s", name) << static_cast<int>(kind) << subkeys << lists;
    };
    add_row("no subkeys", subkey_list::automatic, 0, 0);
    add_row("one list", subkey_list::automatic, 5, 0);
    add_row("one list of offsets", subkey_list::li, 5, 0);
    add_row("an index of a single list", subkey_list::ri, 1, 1);
    add_row("an index above the lists of many keys", subkey_list::automatic, 3000, 6);
}

void tst_hive_file::counts_the_lists_below_an_index()
{
    QFETCH(const int, kind);
    QFETCH(const int, subkeys);
    hive_builder hive;
    hive_key &key = hive.key(u"k"_s).list_kind(static_cast<subkey_list>(kind));
    for (int i = 0; i < subkeys; ++i)
        key.add_key(QString::number(i));
    hive.write_to(path());
    hive_file file;
    QVERIFY(file.open(path()));
    QTEST(file.indexed_lists(static_cast<quint64>(key.cells().key), 1000), "lists");
}

void tst_hive_file::counts_lists_that_are_listed_again()
{
    hive_builder hive;
    hive.key(u"k\\s"_s);
    hive_damage damage(hive.bytes());
    const qint64 empty = damage.add_list("li", {}).last_cell();
    const qint64 index = damage.add_list("ri", QList<qint64>(300, empty)).last_cell();
    const qint64 top = damage.add_list("ri", {empty, index, empty, index, index}).last_cell();
    const qint64 key = hive.key(u"k"_s).cells().key;
    write_file(path(), damage.subkey_list(key, top).bytes());
    hive_file file;
    QVERIFY(file.open(path()));
    const auto node = static_cast<quint64>(key);
    QCOMPARE(file.indexed_lists(node, 100000), 5 + 3 * 300);
    QCOMPARE(file.indexed_lists(node, 350), 350);
    QCOMPARE(file.indexed_lists(node, 3), 3);
}

void tst_hive_file::counts_lists_of_damaged_indexes()
{
    hive_builder hive;
    hive.key(u"k\\s"_s);
    hive_damage damage(hive.bytes());
    const qint64 key = hive.key(u"k"_s).cells().key;
    const auto lists = [&] {
        write_file(path(), damage.bytes());
        hive_file file;
        return file.open(path()) ? file.indexed_lists(static_cast<quint64>(key), 1000) : -1;
    };

    const qint64 index = damage.add_list("ri", {key}).last_cell();
    damage.subkey_list(key, index).list_entry(index, 0, index);
    QCOMPARE(lists(), 33); // libhivex goes no deeper into an index that lists itself
    damage.list_entry(index, 0, 0x7ffff000);
    QCOMPARE(lists(), 1);
    damage.list_count(index, 3); // the file ends after the second
    QCOMPARE(lists(), 2);
    damage.subkey_list(key, 0x7ffff000);
    QCOMPARE(lists(), 0);
    QCOMPARE(hive_file().indexed_lists(static_cast<quint64>(key), 1000), 0);
}

void tst_hive_file::reads_cells_in_any_order()
{
    hive_builder hive;
    for (int i = 0; i < 60; ++i)
        hive.root().binary(QString::number(i), QByteArray(i % 2 == 0 ? 17000 : 500, 'x'));
    hive.write_to(path());
    hive_file file;
    QVERIFY(file.open(path()));
    for (int i = 0; i < 240; ++i) {
        const int value = i * 37 % 60;
        const qint64 cell = hive.root().cells_of_value(value).data;
        const qint64 length = value % 2 == 0 ? 17000 : 500;
        QCOMPARE(file.block_list_length(static_cast<quint64>(cell), length),
                 value % 2 == 0 ? 8 : 0);
    }
}

void tst_hive_file::reads_the_file_that_was_opened_last()
{
    const quint64 cell = cell_of_data_written(40000);
    hive_file file;
    QVERIFY(file.open(path()));
    QCOMPARE(file.block_list_length(cell, 40000), 12);
    file.close();
    write_file(path(), QByteArray(100000, 'x'));
    QVERIFY(file.open(path()));
    QCOMPARE(file.block_list_length(cell, 40000), 0);
    QCOMPARE(file.length(), 100000);
}

TEST_MAIN(tst_hive_file)
#include "tst_hive_file.moc"
