#include "test_main.h"
#include "walk_budget.h"

class tst_walk_budget : public QObject
{
    Q_OBJECT

private slots:
    void a_first_reading_is_free();
    void a_further_reading_counts_data();
    void a_further_reading_counts();
    void readings_beyond_the_file_are_free();
    void counts_up_to_the_end_of_the_file_data();
    void counts_up_to_the_end_of_the_file();
    void ends_after_a_few_lengths_of_the_hive();
    void lasts_for_64_mib_in_a_short_hive();
    void stays_spent();
    void begins_anew();
};

void tst_walk_budget::a_first_reading_is_free()
{
    walk_budget budget;
    budget.start(1000);
    for (qint64 offset = 0; offset < 1000; offset += 8)
        QVERIFY(budget.read(offset, 8));
    QCOMPARE(budget.read_again(), 0);
}

void tst_walk_budget::a_further_reading_counts_data()
{
    QTest::addColumn<qint64>("offset");
    QTest::addColumn<qint64>("length");
    QTest::addColumn<qint64>("read_again");
    const auto add_row = [](const char *name, qint64 offset, qint64 length, qint64 read_again) {
        QTest::newRow(name) << offset << length << read_again;
    };
    // 4,096 bytes from 1,024 on have been read.
    add_row("the same bytes", 1024, 4096, 4096);
    add_row("some of the bytes", 2000, 80, 80);
    add_row("bytes before", 0, 1024, 0);
    add_row("bytes behind", 5120, 1024, 0);
    add_row("the beginning and what stands before", 1000, 32, 8);
    add_row("the end and what stands behind", 5112, 16, 8);
    add_row("everything", 0, 8192, 4096);
    add_row("one byte as the unit that it stands in", 1031, 1, 8);
    add_row("two bytes as the two units that they stand in", 1031, 2, 16);
    add_row("no byte", 1024, 0, 0);
    add_row("a unit at the end of a word of the bitmap", 1528, 8, 8);
    add_row("units of two words of the bitmap", 1528, 16, 16);
}

void tst_walk_budget::a_further_reading_counts()
{
    QFETCH(const qint64, offset);
    QFETCH(const qint64, length);
    walk_budget budget;
    budget.start(8192);
    QVERIFY(budget.read(1024, 4096));
    QCOMPARE(budget.read_again(), 0);
    QVERIFY(budget.read(offset, length));
    QTEST(budget.read_again(), "read_again");
}

void tst_walk_budget::readings_beyond_the_file_are_free()
{
    walk_budget budget;
    budget.start(100);
    for (int i = 0; i < 2; ++i) {
        QVERIFY(budget.read(4096, 1000));
        QVERIFY(budget.read(qint64(1) << 33, 8));
    }
    QCOMPARE(budget.read_again(), 0);
}

void tst_walk_budget::counts_up_to_the_end_of_the_file_data()
{
    QTest::addColumn<qint64>("hive_length");
    QTest::addColumn<qint64>("read_again");
    // The byte that is read is number 512, of the first unit behind one word of the bitmap.
    QTest::newRow("the last byte") << qint64(513) << qint64(8);
    QTest::newRow("the first byte behind the file") << qint64(512) << qint64(0);
}

void tst_walk_budget::counts_up_to_the_end_of_the_file()
{
    QFETCH(const qint64, hive_length);
    walk_budget budget;
    budget.start(hive_length);
    QVERIFY(budget.read(512, 1));
    QVERIFY(budget.read(512, 1));
    QTEST(budget.read_again(), "read_again");
}

void tst_walk_budget::ends_after_a_few_lengths_of_the_hive()
{
    constexpr qint64 length = qint64(32) << 20;
    walk_budget budget;
    budget.start(length);
    for (int reading = 0; reading <= walk_budget::hive_lengths; ++reading)
        QVERIFY(budget.read(0, length));
    QCOMPARE(budget.read_again(), 4 * length);
    QVERIFY(!budget.is_spent());
    QVERIFY(!budget.read(8, 1));
    QVERIFY(budget.is_spent());
}

void tst_walk_budget::lasts_for_64_mib_in_a_short_hive()
{
    constexpr qint64 length = 8192;
    walk_budget budget;
    budget.start(length);
    QVERIFY(budget.read(0, length));
    for (qint64 read_again = 0; read_again < qint64(64) << 20; read_again += length)
        QVERIFY(budget.read(0, length));
    QVERIFY(!budget.read(0, 1));
}

void tst_walk_budget::stays_spent()
{
    walk_budget budget;
    budget.start(8192);
    while (budget.read(0, 8192)) {
    }
    QVERIFY(!budget.read(0, 0));
    QVERIFY(!budget.read(8192, 1));
    QVERIFY(budget.is_spent());
}

void tst_walk_budget::begins_anew()
{
    walk_budget budget;
    budget.start(8192);
    while (budget.read(0, 8192)) {
    }
    budget.start(8192);
    QVERIFY(!budget.is_spent());
    QVERIFY(budget.read(0, 8192));
    QCOMPARE(budget.read_again(), 0);
}

TEST_MAIN(tst_walk_budget)
#include "tst_walk_budget.moc"
