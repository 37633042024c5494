#include "hive_base_block.h"
#include "hive_builder.h"
#include "hive_damage.h"
#include "regf_format.h"
#include "test_main.h"

using namespace Qt::StringLiterals;
using namespace evidence;

class tst_hive_base_block : public QObject
{
    Q_OBJECT

private slots:
    void tells_an_intact_hive();
    void tells_a_short_file();
    void tells_another_file();
    void tells_a_wrong_checksum_data();
    void tells_a_wrong_checksum();
    void takes_the_checksums_that_windows_replaces_data();
    void takes_the_checksums_that_windows_replaces();
    void tells_a_hive_that_was_not_closed_cleanly();
    void tells_a_hive_that_is_cut_off();
    void tells_a_file_that_ends_within_a_bin_head_data();
    void tells_a_file_that_ends_within_a_bin_head();
};

namespace {

/// A hive of three bins' length.
QByteArray intact_hive()
{
    hive_builder hive;
    hive.root().binary(u"v"_s, QByteArray(10000, 'x'));
    return hive.bytes();
}

hive_base_block block_of(const QByteArray &hive)
{
    return hive_base_block(hive.first(regf::base_block::size));
}

} // namespace

void tst_hive_base_block::tells_an_intact_hive()
{
    const QByteArray hive = intact_hive();
    const hive_base_block block = block_of(hive);
    QVERIFY(block.is_whole());
    QVERIFY(block.is_of_a_hive());
    QVERIFY(block.is_checksum_right());
    QVERIFY(!block.is_dirty());
    QCOMPARE(block.told_length(), hive.size());
    QVERIFY(!block.is_cut_off(hive.size()));
    QVERIFY(!block.ends_within_a_bin_head(hive.size()));
}

void tst_hive_base_block::tells_a_short_file()
{
    QVERIFY(!hive_base_block({}).is_whole());
    QVERIFY(!hive_base_block(intact_hive().first(4095)).is_whole());
}

void tst_hive_base_block::tells_another_file()
{
    QVERIFY(!block_of(intact_hive().replace(0, 4, "RegF")).is_of_a_hive());
    QVERIFY(!hive_base_block("reg").is_of_a_hive());
}

void tst_hive_base_block::tells_a_wrong_checksum_data()
{
    QTest::addColumn<qint64>("offset");
    QTest::addColumn<bool>("is_right");
    QTest::newRow("a byte of the signature") << qint64(0) << false;
    QTest::newRow("the last byte that is summed") << qint64(507) << false;
    QTest::newRow("a byte of the checksum") << qint64(511) << false;
    QTest::newRow("a byte behind it") << qint64(512) << true;
}

void tst_hive_base_block::tells_a_wrong_checksum()
{
    QFETCH(const qint64, offset);
    QByteArray hive = intact_hive();
    hive[offset] = static_cast<char>(hive.at(offset) ^ 0x40);
    QTEST(block_of(hive).is_checksum_right(), "is_right");
}

void tst_hive_base_block::takes_the_checksums_that_windows_replaces_data()
{
    QTest::addColumn<quint32>("sum");
    QTest::addColumn<quint32>("checksum");
    QTest::newRow("0 becomes 1") << quint32(0) << quint32(1);
    QTest::newRow("-1 becomes -2") << quint32(0xffffffff) << quint32(0xfffffffe);
    QTest::newRow("1 stays") << quint32(1) << quint32(1);
}

void tst_hive_base_block::takes_the_checksums_that_windows_replaces()
{
    QFETCH(const quint32, sum);
    QFETCH(const quint32, checksum);
    QByteArray bytes(regf::base_block::size, '\0');
    hive_damage damage(bytes);
    damage.set_32(100, sum);
    bytes = damage.bytes();
    QVERIFY(block_of(bytes).is_checksum_right());
    const auto low_byte = static_cast<quint8>(bytes.at(regf::base_block::checksum));
    QCOMPARE(low_byte, static_cast<quint8>(checksum));
}

void tst_hive_base_block::tells_a_hive_that_was_not_closed_cleanly()
{
    const hive_base_block block =
        block_of(hive_damage(intact_hive()).sequence_numbers(8, 7).bytes());
    QVERIFY(block.is_dirty());
    QCOMPARE(block.primary_sequence(), quint32(8));
    QCOMPARE(block.secondary_sequence(), quint32(7));
}

void tst_hive_base_block::tells_a_hive_that_is_cut_off()
{
    const QByteArray hive = intact_hive();
    QVERIFY(block_of(hive).is_cut_off(hive.size() - 1));
    QVERIFY(!block_of(hive).is_cut_off(hive.size() + 1));
    QCOMPARE(block_of(hive_damage(hive).bins_size(0xffffffff).bytes()).told_length(),
             4096 + qint64(0xffffffff));
}

void tst_hive_base_block::tells_a_file_that_ends_within_a_bin_head_data()
{
    QTest::addColumn<quint32>("bins_size");
    QTest::addColumn<qint64>("length");
    QTest::addColumn<bool>("ends_within");
    const auto add_row = [](const char *name, quint32 bins_size, qint64 length, bool ends_within) {
        QTest::newRow(name) << bins_size << length << ends_within;
    };
    // The base block counts two bins of 4,096 bytes.
    add_row("before the second bin", 8192, 8192, false);
    add_row("after its first byte", 8192, 8193, true);
    add_row("before the last byte that libhivex reads", 8192, 8203, true);
    add_row("after that byte", 8192, 8204, false);
    add_row("within the first bin", 8192, 4099, true);
    add_row("behind the last bin, which is not counted in", 8192, 12290, false);
    add_row("within a bin of which one byte is counted in", 4097, 8203, true);
}

void tst_hive_base_block::tells_a_file_that_ends_within_a_bin_head()
{
    QFETCH(const quint32, bins_size);
    QFETCH(const qint64, length);
    const hive_base_block block = block_of(hive_damage(intact_hive()).bins_size(bins_size).bytes());
    QTEST(block.ends_within_a_bin_head(length), "ends_within");
}

TEST_MAIN(tst_hive_base_block)
#include "tst_hive_base_block.moc"
