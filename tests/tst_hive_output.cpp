#include "hive_output.h"
#include "test_main.h"

using namespace Qt::StringLiterals;

class tst_hive_output : public QObject
{
    Q_OBJECT

private slots:
    void counts_text_as_tables_keep_it_data();
    void counts_text_as_tables_keep_it();
    void counts_the_columns_that_end_every_row();
    void takes_rows_up_to_the_limit();
    void takes_certain_rows_beyond_it();
    void takes_no_row_behind_one_that_was_too_long();
    void is_far_above_what_windows_writes();
};

void tst_hive_output::counts_text_as_tables_keep_it_data()
{
    QTest::addColumn<QStringList>("columns");
    QTest::newRow("no column") << QStringList();
    QTest::newRow("empty columns") << QStringList{u""_s, QString()};
    QTest::newRow("several columns") << QStringList{u"one"_s, u"two"_s};
    QTest::newRow("characters of one byte") << QStringList{u"a\u007f"_s};
    QTest::newRow("characters of two bytes") << QStringList{u"\u0080é\u07ff"_s};
    QTest::newRow("characters of three bytes") << QStringList{u"\u0800中\uffee"_s};
    QTest::newRow("characters of four bytes") << QStringList{u"😀\U0010ffff"_s};
}

void tst_hive_output::counts_text_as_tables_keep_it()
{
    QFETCH(const QStringList, columns);
    const qint64 length = columns.join(QString()).toUtf8().size();
    QVERIFY(hive_output({1, length}).takes(columns));
    QVERIFY(length == 0 || !hive_output({1, length - 1}).takes(columns));
}

void tst_hive_output::counts_the_columns_that_end_every_row()
{
    hive_output output({10, 18}, {u"é"_s, u"end"_s});
    for (int row = 0; row < 3; ++row)
        QVERIFY(output.takes({u"x"_s}));
    QVERIFY(!output.takes({u"x"_s}));
}

void tst_hive_output::takes_rows_up_to_the_limit()
{
    hive_output output({3, 1000});
    for (int row = 0; row < 3; ++row)
        QVERIFY(output.takes({u"x"_s}));
    QVERIFY(!output.takes({u"x"_s}));
    QVERIFY(!output.takes({}));
}

void tst_hive_output::takes_certain_rows_beyond_it()
{
    hive_output output({1, 4, 2});
    QVERIFY(output.takes({u"long text"_s}, true));
    QVERIFY(!output.takes({u"x"_s}));
    QVERIFY(output.takes({u"x"_s}, true));
    QVERIFY(!output.takes({u"x"_s}));
    QVERIFY(!output.takes({u"x"_s}, true)); // as many as the limit says
}

// Else a short row would follow, and the rows would end at two places.
void tst_hive_output::takes_no_row_behind_one_that_was_too_long()
{
    hive_output output({10, 4});
    QVERIFY(!output.takes({u"long text"_s}));
    QVERIFY(!output.takes({u"x"_s}));
}

void tst_hive_output::is_far_above_what_windows_writes()
{
    const hive_output::limit small = hive_output::limit_for(8192);
    QCOMPARE(small.rows, 5000000);
    QCOMPARE(small.text_bytes, qint64(1) << 30);
    const hive_output::limit large = hive_output::limit_for(360000000);
    QCOMPARE(large.rows, 10000000);
    QCOMPARE(large.text_bytes, 64 * qint64(360000000));
    QCOMPARE(large.certain_rows, 20000000);
}

TEST_MAIN(tst_hive_output)
#include "tst_hive_output.moc"
