#include "byte_fields.h"
#include "hive_base_block.h"
#include "log_format.h"
#include "log_hash.h"
#include "marvin_hash.h"
#include "replayed_hive.h"
#include "test_main.h"
#include "transaction_log.h"

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// The builder of transaction logs, and the hash that it and the reader each have of their own.
class tst_transaction_log : public QObject
{
    Q_OBJECT

private slots:
    void hashes_as_windows_does_data();
    void hashes_as_windows_does();
    void logs_the_pages_that_differ();
    void writes_entries_of_whole_sectors();
    void writes_a_head_of_its_own_data();
    void writes_a_head_of_its_own();
    void writes_a_bit_for_each_sector_of_an_old_log();
};

void tst_transaction_log::hashes_as_windows_does_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<quint64>("hash");
    QByteArray counted;
    for (char byte = 0; byte < 64; ++byte)
        counted.append(byte);
    QTest::newRow("no bytes") << QByteArray() << quint64(0xb39efca403966e08);
    QTest::newRow("one word") << QByteArray("abcd") << quint64(0x20094fb11a6cd086);
    QTest::newRow("64 bytes") << counted << quint64(0x676c06adcf48022e);
}

void tst_transaction_log::hashes_as_windows_does()
{
    QFETCH(const QByteArray, bytes);
    QTEST(marvin_hash(bytes), "hash");
    QTEST(log_hash(bytes), "hash");
}

void tst_transaction_log::logs_the_pages_that_differ()
{
    const QByteArray before(4096 + 3 * 4096, 'a');
    QByteArray after = before + QByteArray(4096, 'a');
    after[4096 + 4096 + 600] = 'b';
    const QList<logged_page> pages = pages_that_differ(before, after);
    QCOMPARE(pages.size(), 2);
    QCOMPARE(pages.at(0).offset, 4096);
    QCOMPARE(pages.at(0).bytes, after.mid(8192, 4096));
    QCOMPARE(pages.at(1).offset, 3 * 4096);
    QCOMPARE(pages_that_differ(before, after, 512).at(0).offset, 4096 + 512);
    QCOMPARE(pages_that_differ(before, before).size(), 0);
}

void tst_transaction_log::writes_entries_of_whole_sectors()
{
    const QByteArray page(100, 'p');
    const QByteArray entry = bytes_of_entry({7, 8192, {{512, page}, {4096, page}}, 1});
    QCOMPARE(entry.size(), 512);
    QVERIFY(entry.startsWith("HvLE"));
    const QList<quint32> head{get_32(entry, 4), get_32(entry, 8), get_32(entry, 12),
                              get_32(entry, 16), get_32(entry, 20)};
    QCOMPARE(head, (QList<quint32>{512, 1, 7, 8192, 2}));
    QCOMPARE(get_64(entry, 24), marvin_hash(entry.mid(40)));
    QCOMPARE(get_64(entry, 32), marvin_hash(entry.first(32)));
    const QList<quint32> references{get_32(entry, 40), get_32(entry, 44), get_32(entry, 48),
                                    get_32(entry, 52)};
    QCOMPARE(references, (QList<quint32>{512, 100, 4096, 100}));
    QCOMPARE(entry.mid(56), (page + page).leftJustified(512 - 56, '\0'));
}

void tst_transaction_log::writes_a_head_of_its_own_data()
{
    QTest::addColumn<QByteArray>("log");
    QTest::addColumn<quint32>("type");
    QTest::addColumn<quint32>("sequence");
    const QByteArray hive = numbered(hive_in_state(0), 9, 9);
    QTest::newRow("new format") << new_format_log(hive, 7).bytes() << quint32(6) << quint32(7);
    QTest::newRow("old format") << old_format_log(hive, hive) << quint32(1) << quint32(9);
}

void tst_transaction_log::writes_a_head_of_its_own()
{
    QFETCH(const QByteArray, log);
    const hive_base_block head(log.first(512));
    QVERIFY(head.is_of_a_hive() && head.is_checksum_right() && !head.is_dirty());
    QTEST(head.file_type(), "type");
    QTEST(head.primary_sequence(), "sequence");
    QCOMPARE(head.bins_size(), hive_base_block(hive_in_state(0)).bins_size());
}

void tst_transaction_log::writes_a_bit_for_each_sector_of_an_old_log()
{
    const QByteArray page(512, 'p');
    const QByteArray log = old_format_log(hive_in_state(0), {{0, page}, {9 * 512, page}}, 8192);
    QCOMPARE(log.mid(512, 6), QByteArray("DIRT\x01\x02"));
    QCOMPARE(log.mid(1024), page + page);
    QCOMPARE(get_32(log, regf::base_block::bins_size), quint32(8192));
}

TEST_MAIN(tst_transaction_log)
#include "tst_transaction_log.moc"
