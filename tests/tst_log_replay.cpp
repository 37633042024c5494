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

// Which logs of the new format apply, in which order, and what comes of them.
class tst_log_replay : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void applies_what_windows_applies_data();
    void applies_what_windows_applies();
    void takes_no_log_of_a_clean_hive();
    void tells_what_is_no_hive_data();
    void tells_what_is_no_hive();
    void tells_what_is_no_log_data();
    void tells_what_is_no_log();
    void makes_a_clean_base_block();
    void takes_one_flag_from_the_last_entry();
    void takes_the_base_block_of_the_last_log();
    void keeps_what_stands_behind_the_bins();
    void keeps_the_longest_state_of_a_hive_that_shrinks();
    void tells_what_it_did();

private:
    QByteArray m_states[5]; ///< a hive that changes
};

namespace {

/// The logs' numbers count from here, so that they wrap on the way.
constexpr quint32 near_wrap = 0xfffffffe;

QByteArray with_wrong_checksum(QByteArray hive)
{
    put_32(hive, regf::base_block::checksum, get_32(hive, regf::base_block::checksum) ^ 0x40);
    return hive;
}

QByteArray with_byte_changed(QByteArray bytes, qsizetype offset)
{
    bytes[offset] = static_cast<char>(bytes.at(offset) ^ 0x40);
    return bytes;
}

} // namespace

void tst_log_replay::initTestCase()
{
    for (int i = 0; i < 5; ++i)
        m_states[i] = hive_in_state(i);
    QVERIFY(m_states[0].size() < m_states[1].size() && m_states[3].size() < m_states[4].size());
}

void tst_log_replay::applies_what_windows_applies_data()
{
    add_replay_columns();
    const auto row = replay_row;
    constexpr auto applied = log_state::applied;
    const QByteArray *s = m_states;
    const QByteArray hive = numbered(s[0], 8, 7);
    const QByteArray log_12 = new_format_log(s[0], 7).change(s[0], s[1]).change(s[1], s[2]).bytes();
    const QByteArray log_3 = new_format_log(s[2], 9).change(s[2], s[3]).bytes();
    const QByteArray log_34 = new_format_log(s[2], 9).change(s[2], s[3]).change(s[3], s[4]).bytes();

    row("no log", hive, {}, 0, 0, {});
    row("one log", hive, {log_12}, 2, 8, {applied});
    row("two logs that adjoin", hive, {log_12, log_34}, 4, 10, {applied, applied});
    row("two logs in the other order", hive, {log_34, log_12}, 4, 10, {applied, applied});
    row("three logs in any order", hive,
        {new_format_log(s[3], 10).change(s[3], s[4]).bytes(), log_12, log_3}, 4, 10,
        {applied, applied, applied});
    row("a log that does not adjoin", hive,
        {log_12, new_format_log(s[2], 10).change(s[2], s[3]).bytes()}, 2, 8,
        {applied, log_state::not_adjoining});
    row("a log that begins with numbers of the first", hive,
        {log_12, new_format_log(s[2], 8).change(s[2], s[3]).bytes()}, 2, 8,
        {applied, log_state::not_adjoining});
    row("a log that begins behind the hive's number alone", numbered(s[2], 8, 7), {log_34}, 4, 10,
        {applied});
    row("a log that begins with the hive's second number", numbered(s[0], 9, 7), {log_12}, 2, 8,
        {applied});
    row("a log before the hive's second number", numbered(s[0], 9, 8), {log_12}, 0, 0,
        {log_state::older});
    row("an older log beside one that fits", numbered(s[2], 10, 9), {log_12, log_34}, 4, 10,
        {log_state::older, applied});
    row("an earlier log without a sound entry", numbered(s[2], 8, 7),
        {with_byte_changed(log_12, 512 + 100), log_34}, 4, 10,
        {log_state::no_sound_entry, applied});
    row("a log whose first entry is not the one of its head", hive,
        {with_byte_changed(log_12, 512 + 12)}, 0, 0, {log_state::no_sound_entry});
    row("a log without entries", hive, {new_format_log(s[0], 7).bytes()}, 0, 0,
        {log_state::no_sound_entry});
    row("a gap within a log", hive,
        {new_format_log(s[0], 7)
             .change(s[0], s[1])
             .append(bytes_of_entry({9, quint32(s[2].size()) - 4096, {}}))
             .bytes()},
        1, 7, {applied});
    row("an entry whose content is damaged", hive, {with_byte_changed(log_12, log_12.size() - 1)},
        1, 7, {applied});
    row("a log that continues one with a damaged end", hive,
        {with_byte_changed(log_12, log_12.size() - 1), log_34}, 1, 7,
        {applied, log_state::not_adjoining});
    row("entries of an earlier round behind", hive,
        {new_format_log(s[0], 7)
             .change(s[0], s[1])
             .append(
                 bytes_of_entry({4, quint32(s[3].size()) - 4096, pages_that_differ(s[1], s[3])}))
             .bytes()},
        1, 7, {applied});
    row("anything but an entry behind", hive,
        {new_format_log(s[0], 7).change(s[0], s[1]).append(QByteArray(4096, 'x')).bytes()}, 1, 7,
        {applied});
    row("numbers that wrap within a log", numbered(s[0], near_wrap + 1, near_wrap),
        {new_format_log(s[0], near_wrap)
             .change(s[0], s[1])
             .change(s[1], s[2])
             .change(s[2], s[3])
             .bytes()},
        3, 0, {applied});
    row("numbers that wrap between logs", numbered(s[0], near_wrap + 1, near_wrap),
        {new_format_log(s[2], 0).change(s[2], s[3]).bytes(),
         new_format_log(s[0], near_wrap).change(s[0], s[1]).change(s[1], s[2]).bytes()},
        3, 0, {applied, applied});
    row("an older log across the wrap", numbered(s[0], 2, 1),
        {new_format_log(s[0], near_wrap).change(s[0], s[1]).bytes()}, 0, 0, {log_state::older});
    row("a hive with a wrong checksum takes the later log alone", with_wrong_checksum(hive),
        {new_format_log(s[0], 9).change(s[0], s[4]).bytes(),
         new_format_log(s[0], 7).change(s[0], s[1]).change(s[1], s[2]).bytes()},
        4, 9, {applied, log_state::not_needed});
    row("its numbers do not count", with_wrong_checksum(numbered(s[0], 99, 99)), {log_12}, 2, 8,
        {applied});
    row("a later log without a sound entry does not count", with_wrong_checksum(hive),
        {with_byte_changed(log_34, 600), log_12}, 2, 8, {log_state::no_sound_entry, applied});
    row("the later log by numbers that wrap", with_wrong_checksum(hive),
        {new_format_log(s[0], near_wrap).change(s[0], s[1]).bytes(),
         new_format_log(s[0], 3).change(s[0], s[2]).bytes()},
        2, 3, {log_state::not_needed, applied});
    row("a hive without a base block", QByteArray(4096, '\0') + s[0].mid(4096), {log_12}, 2, 8,
        {applied});
}

void tst_log_replay::applies_what_windows_applies()
{
    QFETCH(const QByteArray, hive);
    QFETCH(const QList<QByteArray>, logs);
    QFETCH(const int, state);
    QFETCH(const quint32, sequence);
    const replayed_hive after = replayed(hive, logs);
    QTEST(after.states(), "states");
    QVERIFY(after.bins() == m_states[state].mid(4096) || !after.report.is_replayed());
    QVERIFY(after.bytes == hive || after.report.is_replayed());
    QCOMPARE(after.report.sequence, sequence);
}

void tst_log_replay::takes_no_log_of_a_clean_hive()
{
    const QByteArray hive = numbered(m_states[0], 7, 7);
    const QByteArray log = new_format_log(hive, 7).change(hive, m_states[1]).bytes();
    const replayed_hive after = replayed(hive, {log});
    QCOMPARE(after.report.condition, hive_condition::clean);
    QCOMPARE(after.states(), QList<log_state>{log_state::not_looked_at});
    QVERIFY(after.bytes == hive);
}

void tst_log_replay::tells_what_is_no_hive_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<hive_condition>("condition");
    const QByteArray hive = numbered(m_states[0], 8, 7);
    QTest::newRow("a hive") << hive << hive_condition::dirty;
    QTest::newRow("nothing") << QByteArray() << hive_condition::no_hive;
    QTest::newRow("a base block without its last byte")
        << hive.first(4095) << hive_condition::no_hive;
    QTest::newRow("a base block alone") << hive.first(4096) << hive_condition::dirty;
    QTest::newRow("other bytes") << QByteArray(8192, 'x') << hive_condition::no_hive;
    QTest::newRow("a damaged signature")
        << with_byte_changed(hive, 0) << hive_condition::damaged_header;
    QTest::newRow("a damaged signature and no bin")
        << with_byte_changed(with_byte_changed(hive, 0), 4096) << hive_condition::no_hive;
    QTest::newRow("a damaged field and no bin")
        << with_byte_changed(with_byte_changed(hive, 40), 4096) << hive_condition::damaged_header;
    QTest::newRow("a log") << new_format_log(hive, 7).change(hive, m_states[1]).bytes()
                           << hive_condition::no_hive;
}

void tst_log_replay::tells_what_is_no_hive()
{
    QFETCH(const QByteArray, bytes);
    QTEST(condition_of_hive(bytes), "condition");
    const QByteArray log = new_format_log(m_states[0], 7).bytes();
    QCOMPARE(replayed(bytes, {log}).bytes, bytes);
}

void tst_log_replay::tells_what_is_no_log_data()
{
    QTest::addColumn<QByteArray>("log");
    QTest::addColumn<log_state>("state");
    const QByteArray log = new_format_log(m_states[0], 7).change(m_states[0], m_states[1]).bytes();
    QByteArray typed = log;
    put_32(typed, regf::base_block::file_type, 3);
    QTest::newRow("no bytes") << QByteArray() << log_state::empty;
    QTest::newRow("zeros") << QByteArray(4096, '\0') << log_state::empty;
    QTest::newRow("three bytes") << QByteArray("log") << log_state::no_log;
    QTest::newRow("a head without its last byte") << log.first(511) << log_state::no_log;
    QTest::newRow("another signature") << "REGF" + log.mid(4) << log_state::no_log;
    QTest::newRow("the hive itself") << m_states[0] << log_state::no_log;
    QTest::newRow("a wrong checksum") << with_byte_changed(log, 60) << log_state::wrong_checksum;
    put_checksum(typed);
    QTest::newRow("a type of its own") << typed << log_state::no_log;
}

void tst_log_replay::tells_what_is_no_log()
{
    QFETCH(const QByteArray, log);
    QFETCH(const log_state, state);
    const QByteArray hive = numbered(m_states[0], 8, 7);
    const replayed_hive after = replayed(hive, {log});
    QCOMPARE(after.states(), QList<log_state>{state});
    QCOMPARE(after.bytes, hive);
}

void tst_log_replay::makes_a_clean_base_block()
{
    QByteArray logged = m_states[1];
    put_32(logged, regf::base_block::root_cell, 0x1234);
    put_32(logged, regf::base_block::minor_version, 6);
    put_64(logged, regf::base_block::last_write, 0x1122334455667788);
    const QByteArray hive = numbered(m_states[0], 8, 7);
    const QByteArray log = new_format_log(logged, 7).change(hive, m_states[1]).bytes();
    const QByteArray after = replayed(hive, {log}).bytes;
    const hive_base_block block(after.first(4096));
    QVERIFY(block.is_of_a_hive() && block.is_checksum_right());
    QCOMPARE(block.primary_sequence(), quint32(7));
    QCOMPARE(block.secondary_sequence(), quint32(7));
    QCOMPARE(block.file_type(), quint32(0));
    QCOMPARE(block.told_length(), after.size());
    QCOMPARE(block.last_written(), quint64(0x1122334455667788));
    QCOMPARE(get_32(after, regf::base_block::root_cell), quint32(0x1234));
    QCOMPARE(get_32(after, regf::base_block::minor_version), quint32(6));
    QCOMPARE(after.mid(512, 4096 - 512), hive.mid(512, 4096 - 512));
}

void tst_log_replay::takes_one_flag_from_the_last_entry()
{
    QByteArray logged = m_states[0];
    put_32(logged, regf::base_block::flags, 0x11);
    const QByteArray hive = numbered(m_states[0], 8, 7);
    const auto flags_after = [&](quint32 flags) {
        const QByteArray log = new_format_log(logged, 7)
                                   .change(m_states[0], m_states[1], ~flags)
                                   .change(m_states[1], m_states[2], flags)
                                   .bytes();
        return hive_base_block(replayed(hive, {log}).bytes.first(4096)).flags();
    };
    QCOMPARE(flags_after(0xff), quint32(0x11));
    QCOMPARE(flags_after(0xfe), quint32(0x10));
}

void tst_log_replay::takes_the_base_block_of_the_last_log()
{
    const QByteArray *s = m_states;
    const QByteArray later = written_at(s[1], 99);
    const QByteArray hive = numbered(s[0], 8, 7);
    const QByteArray first = new_format_log(written_at(s[0], 98), 7).change(s[0], s[1]).bytes();
    const QByteArray second = new_format_log(later, 8).change(s[1], s[2]).bytes();
    const replayed_hive after = replayed(hive, {second, first});
    QCOMPARE(hive_base_block(after.bytes.first(4096)).last_written(), quint64(99));
}

void tst_log_replay::keeps_what_stands_behind_the_bins()
{
    const QByteArray rest = QByteArray(m_states[1].size() - m_states[0].size(), 'r') + "end";
    const QByteArray hive = numbered(m_states[0], 8, 7) + rest;
    const QByteArray log = new_format_log(m_states[0], 7).change(m_states[0], m_states[1]).bytes();
    const QByteArray after = replayed(hive, {log}).bytes;
    QVERIFY(after.mid(4096) == m_states[1].mid(4096) + "end");
}

void tst_log_replay::keeps_the_longest_state_of_a_hive_that_shrinks()
{
    const QByteArray *s = m_states;
    const QByteArray log = new_format_log(s[0], 7).change(s[0], s[2]).change(s[2], s[1]).bytes();
    const QByteArray after = replayed(numbered(s[0], 8, 7), {log}).bytes;
    QCOMPARE(hive_base_block(after.first(4096)).told_length(), s[1].size());
    QVERIFY(after.mid(4096) == s[1].mid(4096) + s[2].mid(s[1].size()));
}

void tst_log_replay::tells_what_it_did()
{
    const QByteArray *s = m_states;
    const QByteArray earlier = bytes_of_entry({3, 4096, {}});
    const QByteArray log =
        new_format_log(s[0], 7).change(s[0], s[1]).change(s[1], s[2]).append(earlier).bytes();
    const replay_report report = replayed(numbered(s[0], 8, 7), {log}).report;
    const log_report &told = report.logs.first();
    const qsizetype pages =
        pages_that_differ(s[0], s[1]).size() + pages_that_differ(s[1], s[2]).size();
    QCOMPARE(told.name, u"1"_s);
    QVERIFY(told.is_new_format);
    QCOMPARE(told.first_sequence, quint32(7));
    QCOMPARE(told.last_sequence, quint32(8));
    QCOMPARE(told.flaw, log_flaw::earlier_round);
    QCOMPARE(told.next_sequence, quint32(3));
    QCOMPARE(told.entries, 2);
    QCOMPARE(told.pages, pages);
    QCOMPARE(told.bytes, pages * 4096);
    QCOMPARE(report.primary_sequence, quint32(8));
    QCOMPARE(report.secondary_sequence, quint32(7));
    QCOMPARE(report.size_before, s[0].size());
    QCOMPARE(report.size_after, s[2].size());
}

TEST_MAIN(tst_log_replay)
#include "tst_log_replay.moc"
