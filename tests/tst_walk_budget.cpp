#include "test_main.h"
#include "walk_budget.h"

#include <limits>

class tst_walk_budget : public QObject
{
    Q_OBJECT

private slots:
    void limits_nothing_before_the_start();
    void lasts_for_a_few_lengths_of_the_hive();
    void stays_spent();
    void lasts_for_some_thousand_refusals();
    void charges_the_data_of_a_refusal();
    void charges_a_refused_name_no_more_than_a_refusal();
    void charges_lists_below_an_index();
    void begins_anew();
    void tells_what_was_spent();
};

void tst_walk_budget::limits_nothing_before_the_start()
{
    walk_budget budget;
    for (int i = 0; i < 10000; ++i)
        budget.spend_refusal();
    QVERIFY(budget.spend(std::numeric_limits<qint64>::max()));
    QVERIFY(!budget.is_spent());
}

void tst_walk_budget::lasts_for_a_few_lengths_of_the_hive()
{
    walk_budget budget;
    budget.start(10000);
    QVERIFY(budget.spend(39999));
    QVERIFY(budget.spend(1));
    QVERIFY(budget.spend(0));
    QVERIFY(!budget.is_spent());
    QVERIFY(!budget.spend(1));
    QVERIFY(budget.is_spent());
}

void tst_walk_budget::stays_spent()
{
    walk_budget budget;
    budget.start(100);
    QVERIFY(!budget.spend(std::numeric_limits<qint64>::max()));
    QVERIFY(!budget.spend(0));
    QVERIFY(!budget.spend(1));
}

void tst_walk_budget::lasts_for_some_thousand_refusals()
{
    walk_budget budget;
    budget.start(1 << 20);
    for (int i = 0; i < 4096; ++i)
        budget.spend_refusal();
    QVERIFY(!budget.is_spent());
    budget.spend_refusal();
    QVERIFY(budget.is_spent());
}

void tst_walk_budget::charges_the_data_of_a_refusal()
{
    walk_budget budget;
    budget.start(1 << 20); // 4 MiB, of which a refusal takes 1 KiB
    budget.spend_refusal(16000);
    QCOMPARE(budget.spent(), 1024 + 1000);
}

void tst_walk_budget::charges_a_refused_name_no_more_than_a_refusal()
{
    walk_budget budget;
    budget.start(1 << 20);
    budget.spend_refused_name(100);
    QCOMPARE(budget.spent(), 100);
    budget.spend_refused_name(65535);
    QCOMPARE(budget.spent(), 100 + 1024);
}

void tst_walk_budget::charges_lists_below_an_index()
{
    walk_budget budget(1000);
    QCOMPARE(budget.most_indexed_lists(), 4);
    budget.spend_on_indexed_lists(3);
    QCOMPARE(budget.spent(), 768);
    QCOMPARE(budget.most_indexed_lists(), 1);
    budget.spend_on_indexed_lists(1);
    QVERIFY(budget.is_spent());
    QCOMPARE(budget.most_indexed_lists(), 1);
}

void tst_walk_budget::begins_anew()
{
    walk_budget budget;
    budget.start(1);
    QVERIFY(!budget.spend(5));
    budget.start(2);
    QVERIFY(budget.spend(5));
}

void tst_walk_budget::tells_what_was_spent()
{
    walk_budget budget(100);
    QCOMPARE(budget.spent(), 0);
    QVERIFY(budget.spend(70));
    QCOMPARE(budget.spent(), 70);
    QVERIFY(!budget.spend(70));
    QCOMPARE(budget.spent(), 100);
}

TEST_MAIN(tst_walk_budget)
#include "tst_walk_budget.moc"
