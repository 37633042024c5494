#include "base_block.h"
#include "byte_fields.h"
#include "hive_base_block.h"
#include "log_format.h"
#include "replayed_hive.h"
#include "test_main.h"
#include "transaction_log.h"

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// Which logs of the format before Windows 8.1 apply, and what comes of them.
class tst_old_log_replay : public QObject
{
    Q_OBJECT

private slots:
    void applies_what_windows_applies_data();
    void applies_what_windows_applies();
    void makes_a_clean_base_block();
    void brings_in_the_sectors_of_the_bitmap();
};

namespace {

constexpr quint64 time_of_hive = 1000;

/// The hive as it is found: its numbers differ, and the first bin has its time as well.
QByteArray found(const QByteArray &hive)
{
    return numbered(written_at(hive, time_of_hive), 8, 7);
}

/// A log with all changes up to `after`.
QByteArray logged(const QByteArray &before, const QByteArray &after, quint64 time, quint32 number)
{
    return old_format_log(written_at(before, time),
                          numbered(written_at(after, time), number, number));
}

QByteArray with_field(QByteArray bytes, qint64 offset, quint32 number)
{
    put_32(bytes, offset, number);
    if (offset < 512)
        put_checksum(bytes);
    return bytes;
}

} // namespace

void tst_old_log_replay::applies_what_windows_applies_data()
{
    add_replay_columns();
    const auto row = replay_row;
    constexpr auto applied = log_state::applied;
    constexpr auto not_needed = log_state::not_needed;
    const QByteArray s0 = hive_in_state(0);
    const QByteArray s1 = hive_in_state(1);
    const QByteArray s2 = hive_in_state(2);
    const QByteArray hive = found(s0);
    const QByteArray broken = QByteArray(hive).replace(regf::base_block::checksum, 1, "x");
    const QByteArray log_1 = logged(s0, s1, time_of_hive, 8);
    const QByteArray log_2 = logged(s0, s2, time_of_hive, 9);

    row("a log of the hive's time", hive, {log_1}, 1, 8, {applied});
    row("a log of Windows 2000", hive, {with_field(log_1, regf::base_block::file_type, 2)}, 1, 8,
        {applied});
    row("an older log", hive, {logged(s0, s1, time_of_hive - 1, 8)}, 0, 0, {log_state::older});
    row("a log of another time", hive, {logged(s0, s1, time_of_hive + 1, 8)}, 0, 0,
        {log_state::of_another_hive});
    row("the later of two logs alone", hive, {log_1, log_2}, 2, 9, {not_needed, applied});
    row("the later of two logs in the other order", hive, {log_2, log_1}, 2, 9,
        {applied, not_needed});
    row("one of two logs is older", hive, {logged(s0, s2, time_of_hive - 1, 9), log_1}, 1, 8,
        {log_state::older, applied});
    row("the later of two logs is cut off", hive, {log_2.chopped(1), log_1}, 1, 8,
        {log_state::unsound_pages, applied});
    row("a log that was being written", hive,
        {with_field(log_1, regf::base_block::secondary_sequence, 7)}, 0, 0,
        {log_state::unfinished});
    row("a wrong checksum of the hive: the first bin has the time", broken, {log_2}, 2, 9,
        {applied});
    row("a wrong checksum of the hive and an older log", broken,
        {logged(s0, s1, time_of_hive - 1, 8)}, 0, 0, {log_state::older});
    row("no bitmap", hive, {QByteArray(log_1).replace(512, 4, "dirt")}, 0, 0,
        {log_state::unsound_pages});
    row("the head alone", hive, {log_1.first(512)}, 0, 0, {log_state::unsound_pages});
    row("a bitmap that is cut off", hive, {log_1.first(600)}, 0, 0, {log_state::unsound_pages});
    row("a log of the new format is looked at first", hive,
        {log_1, new_format_log(s0, 7).change(s0, s2).bytes()}, 2, 7, {not_needed, applied});
    row("an old log where none of the new format applies", hive,
        {log_1, new_format_log(s0, 5).change(s0, s2).bytes()}, 1, 8, {applied, log_state::older});
}

void tst_old_log_replay::applies_what_windows_applies()
{
    QFETCH(const QByteArray, hive);
    QFETCH(const QList<QByteArray>, logs);
    QFETCH(const int, state);
    const replayed_hive after = replayed(hive, logs);
    QTEST(after.states(), "states");
    QTEST(after.report.sequence, "sequence");
    QVERIFY(after.bytes == hive || after.report.is_replayed());
    // The time of the first bin is that of the hive.
    QVERIFY(written_at(after.bytes, 0).mid(4096) == written_at(hive_in_state(state), 0).mid(4096));
}

void tst_old_log_replay::makes_a_clean_base_block()
{
    const QByteArray s0 = hive_in_state(0);
    const QByteArray s1 = with_field(hive_in_state(1), regf::base_block::flags, 2);
    const QByteArray log = logged(s0, s1, time_of_hive, 8);
    const QByteArray after = replayed(found(s0), {log}).bytes;
    const hive_base_block block(after.first(4096));
    QVERIFY(block.is_of_a_hive() && block.is_checksum_right() && !block.is_dirty());
    QCOMPARE(block.primary_sequence(), quint32(8));
    QCOMPARE(block.file_type(), quint32(0));
    QCOMPARE(block.flags(), quint32(2));
    QCOMPARE(block.last_written(), time_of_hive);
    QCOMPARE(block.told_length(), s1.size());
    QCOMPARE(after.size(), s1.size());
}

void tst_old_log_replay::brings_in_the_sectors_of_the_bitmap()
{
    const QByteArray hive = found(hive_in_state(0));
    const QList<logged_page> pages{{512, QByteArray(512, 'a')},
                                   {7 * 512, QByteArray(512, 'b')},
                                   {8 * 512, QByteArray(512, 'c')}};
    const auto size = quint32(hive.size() - 4096);
    const replayed_hive after = replayed(hive, {old_format_log(numbered(hive, 8, 8), pages, size)});
    QByteArray expected = hive.mid(4096);
    for (const logged_page &page : pages)
        expected.replace(page.offset, 512, page.bytes);
    QVERIFY(after.bins() == expected);
    const log_report &told = after.report.logs.first();
    QCOMPARE(told.pages, 3);
    QCOMPARE(told.bytes, 3 * 512);
    QCOMPARE(told.entries, 1);
    QVERIFY(!told.is_new_format);
    QCOMPARE(told.last_sequence, quint32(8));
}

TEST_MAIN(tst_old_log_replay)
#include "tst_old_log_replay.moc"
