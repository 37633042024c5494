#include "log_generator.h"
#include "replay_check.h"
#include "test_main.h"

using namespace evidence;
using namespace test_support;

// Hives and logs that follow from byte strings, in large numbers.
class tst_generated_logs : public QObject
{
    Q_OBJECT

private slots:
    void replays_keep_their_promises();
    void are_the_same_for_the_same_bytes();
};

void tst_generated_logs::replays_keep_their_promises()
{
    constexpr int rounds = 1'000;
    int replayed = 0;
    int with_both_logs = 0;
    for (quint32 seed = 0; seed < rounds; ++seed) {
        byte_choices choices(random_bytes(seed, 400));
        const generated_logs made = generate_logs(choices);
        const replay_report report = check_replay(made.hive, made.logs);
        replayed += int(report.is_replayed());
        with_both_logs += int(report.logs.at(0).state == log_state::applied &&
                              report.logs.at(1).state == log_state::applied);
    }
    qInfo("of %d hives %d were replayed, %d with both logs", rounds, replayed, with_both_logs);
    QVERIFY(replayed > rounds / 3 && replayed < rounds);
    QVERIFY(with_both_logs > rounds / 30);
}

void tst_generated_logs::are_the_same_for_the_same_bytes()
{
    byte_choices once(random_bytes(1, 400));
    byte_choices again(random_bytes(1, 400));
    const generated_logs first = generate_logs(once);
    const generated_logs second = generate_logs(again);
    QCOMPARE(first.hive, second.hive);
    QCOMPARE(first.logs, second.logs);
}

TEST_MAIN(tst_generated_logs)
#include "tst_generated_logs.moc"
