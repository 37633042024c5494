#include "base_block.h"
#include "byte_fields.h"
#include "log_format.h"
#include "replayed_hive.h"
#include "test_main.h"
#include "transaction_log.h"

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// Logs whose numbers lie, with hashes made right by whoever forged them.
class tst_hostile_logs : public QObject
{
    Q_OBJECT

private slots:
    void ends_at_an_entry_that_lies_data();
    void ends_at_an_entry_that_lies();
    void grows_by_what_the_pages_fill_data();
    void grows_by_what_the_pages_fill();
    void takes_no_old_log_that_lies_data();
    void takes_no_old_log_that_lies();
    void fills_what_a_hive_lacks_or_leaves_it_data();
    void fills_what_a_hive_lacks_or_leaves_it();
    void reads_each_log_cut_at_each_byte();
    void reads_logs_with_any_byte_changed();
    void keeps_off_logs_that_cannot_be_read();
};

namespace {

constexpr quint32 two_gib = quint32(2) << 30;
constexpr quint32 one_mib = quint32(1) << 20;
const QByteArray page(4096, 'p');

QByteArray dirty_hive()
{
    return numbered(hive_in_state(0), 8, 7);
}

quint32 bins_size_of(const QByteArray &hive)
{
    return quint32(hive.size() - 4096);
}

/// A log whose first entry is this one.
QByteArray log_of(const QByteArray &entry)
{
    return new_format_log(hive_in_state(0), 7).append(entry).bytes();
}

/// An entry with one number altered.
QByteArray altered(qint64 offset, quint32 number)
{
    QByteArray entry = bytes_of_entry({7, bins_size_of(dirty_hive()), {{0, page}}});
    put_32(entry, offset, number);
    return with_right_hashes(entry);
}

} // namespace

void tst_hostile_logs::ends_at_an_entry_that_lies_data()
{
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<log_flaw>("flaw");
    const quint32 size = bins_size_of(dirty_hive());
    const auto sized = quint32(bytes_of_entry({7, size, {{0, page}}}).size());
    const auto row = [](const char *name, const QByteArray &entry, log_flaw flaw) {
        QTest::newRow(name) << entry << flaw;
    };
    using namespace regf;
    row("nothing wrong", altered(log_entry::flags, 0), log_flaw::no_entry);
    row("a size of nothing", altered(log_entry::size, 0), log_flaw::size);
    row("a size below a sector", altered(log_entry::size, 511), log_flaw::size);
    row("a size that is no number of sectors", altered(log_entry::size, sized - 4), log_flaw::size);
    row("a size beyond the log", altered(log_entry::size, sized + 512), log_flaw::size);
    row("the largest size", altered(log_entry::size, 0xfffffe00), log_flaw::size);
    row("bins of nothing", altered(log_entry::bins_size, 0), log_flaw::bins_size);
    row("bins that are no number of pages", altered(log_entry::bins_size, size - 512),
        log_flaw::bins_size);
    row("bins beyond all bounds", altered(log_entry::bins_size, two_gib + 4096),
        log_flaw::bins_size);
    row("bins of 2 GiB", altered(log_entry::bins_size, two_gib), log_flaw::hole);
    row("more pages than there are", altered(log_entry::page_count, 1000), log_flaw::pages);
    row("the largest number of pages", altered(log_entry::page_count, 0xffffffff), log_flaw::pages);
    row("a page beyond the bins", altered(log_entry::references, size), log_flaw::pages);
    row("a page across the end of the bins", altered(log_entry::references, size - 4095),
        log_flaw::pages);
    row("a page at the last offset", altered(log_entry::references, 0xffffffff), log_flaw::pages);
    row("a page longer than the entry", altered(log_entry::references + 4, sized), log_flaw::pages);
    row("the longest page", altered(log_entry::references + 4, 0xffffffff), log_flaw::pages);
    row("another hash of the content",
        altered(log_entry::flags, 0).replace(log_entry::hash_of_content, 1, "?"), log_flaw::hash);
    row("another hash of the head",
        altered(log_entry::flags, 0).replace(log_entry::hash_of_head, 1, "?"), log_flaw::hash);
    row("another number", altered(log_entry::sequence, 8), log_flaw::sequence);
    row("an earlier number", altered(log_entry::sequence, 6), log_flaw::earlier_round);
    row("another signature", altered(log_entry::signature, 0), log_flaw::no_entry);
}

void tst_hostile_logs::ends_at_an_entry_that_lies()
{
    QFETCH(const QByteArray, entry);
    const QByteArray hive = dirty_hive();
    const replayed_hive after = replayed(hive, {log_of(entry)});
    QTEST(after.report.logs.first().flaw, "flaw");
    const bool is_applied = QByteArrayView(QTest::currentDataTag()) == "nothing wrong";
    QCOMPARE(after.report.is_replayed(), is_applied);
    QCOMPARE(after.bytes == hive, !is_applied);
}

void tst_hostile_logs::grows_by_what_the_pages_fill_data()
{
    QTest::addColumn<QList<logged_page>>("pages");
    QTest::addColumn<quint32>("growth");
    QTest::addColumn<bool>("is_applied");
    const qint64 end = bins_size_of(dirty_hive());
    const QByteArray sector(512, 's');
    using pages = QList<logged_page>;
    const auto row = [](const char *name, const pages &given, quint32 growth, bool is_applied) {
        QTest::newRow(name) << given << growth << is_applied;
    };
    row("a page", {{end, page}}, 4096, true);
    row("the first sector of a new bin", {{end, sector}}, 4096, true);
    row("two bins in the wrong order", {{end + 4096, page}, {end, page}}, 8192, true);
    row("a bin of which the first page is there", {{end, page}}, one_mib + 4096, true);
    row("two such bins", {{end, page}, {end + one_mib, page}}, 2 * one_mib, true);
    row("more than a bin behind the last page", {{end, page}}, one_mib + 12288, false);
    row("more than a bin before the first page", {{end + one_mib + 8192, page}}, one_mib + 12288,
        false);
    row("a gigabyte behind a page", {{end, page}}, 1 << 30, false);
}

void tst_hostile_logs::grows_by_what_the_pages_fill()
{
    QFETCH(const QList<logged_page>, pages);
    QFETCH(const quint32, growth);
    QFETCH(const bool, is_applied);
    const QByteArray hive = dirty_hive();
    const quint32 size = bins_size_of(hive) + growth;
    const replayed_hive after = replayed(hive, {log_of(bytes_of_entry({7, size, pages}))});
    QCOMPARE(after.report.is_replayed(), is_applied);
    QCOMPARE(after.bytes.size(), is_applied ? 4096 + qint64(size) : hive.size());
    QByteArray expected = hive.mid(4096).leftJustified(after.bytes.size() - 4096, '\0');
    for (const logged_page &each : is_applied ? pages : QList<logged_page>())
        expected.replace(each.offset, each.bytes.size(), each.bytes);
    QVERIFY(after.bins() == expected);
}

void tst_hostile_logs::takes_no_old_log_that_lies_data()
{
    QTest::addColumn<QByteArray>("log");
    QTest::addColumn<log_flaw>("flaw");
    const QByteArray hive = numbered(dirty_hive(), 8, 8);
    const QByteArray log = old_format_log(hive, {{0, page.first(512)}}, bins_size_of(hive));
    const auto sized = [&log](quint32 size) {
        QByteArray bytes = log;
        put_32(bytes, regf::base_block::bins_size, size);
        put_checksum(bytes);
        return bytes;
    };
    QTest::newRow("bins of nothing") << sized(0) << log_flaw::bins_size;
    QTest::newRow("bins that are no number of pages") << sized(4097) << log_flaw::bins_size;
    QTest::newRow("bins beyond all bounds") << sized(two_gib + 4096) << log_flaw::bins_size;
    QTest::newRow("bins of 2 GiB") << sized(two_gib) << log_flaw::size;
    QTest::newRow("2 GiB and their whole bitmap, without a page")
        << old_format_log(hive, {}, two_gib) << log_flaw::hole;
    QTest::newRow("a bit for each sector")
        << QByteArray(log)
               .replace(516, bins_size_of(hive) / 4096, QByteArray(1000, '\xff'))
               .left(2048)
        << log_flaw::pages;
}

void tst_hostile_logs::takes_no_old_log_that_lies()
{
    QFETCH(const QByteArray, log);
    const QByteArray hive = dirty_hive();
    const replayed_hive after = replayed(hive, {log});
    QCOMPARE(after.states(), QList<log_state>{log_state::unsound_pages});
    QTEST(after.report.logs.first().flaw, "flaw");
    QVERIFY(after.bytes == hive);
}

void tst_hostile_logs::fills_what_a_hive_lacks_or_leaves_it_data()
{
    QTest::addColumn<qint64>("first_page");
    QTest::addColumn<bool>("is_applied");
    const qint64 pages = bins_size_of(dirty_hive()) / 4096;
    QTest::newRow("the log has what is missing") << pages - 1 << true;
    QTest::newRow("the log has more than that") << pages - 2 << true;
    QTest::newRow("the log has none of it") << pages << false;
}

/// The hive is cut off by one page.
void tst_hostile_logs::fills_what_a_hive_lacks_or_leaves_it()
{
    QFETCH(const qint64, first_page);
    QFETCH(const bool, is_applied);
    const QByteArray whole = dirty_hive();
    const QByteArray hive = whole.chopped(4096);
    QList<logged_page> pages;
    for (qint64 offset = first_page * 4096; offset < whole.size() - 4096; offset += 4096)
        pages.append({offset, whole.mid(4096 + offset, 4096)});
    const QByteArray entry = bytes_of_entry({7, bins_size_of(whole), pages});
    const replayed_hive after = replayed(hive, {log_of(entry)});
    QCOMPARE(after.report.is_replayed(), is_applied);
    QVERIFY(after.bins() == (is_applied ? whole : hive).mid(4096));
}

void tst_hostile_logs::reads_each_log_cut_at_each_byte()
{
    const QByteArray before = hive_in_state(0);
    const QByteArray after = hive_in_state(1);
    const QByteArray hive = numbered(written_at(before, 1), 8, 7);
    const QByteArray log = new_format_log(before, 7).change(before, after).bytes();
    const QByteArray old_log = old_format_log(before, numbered(written_at(after, 1), 8, 8));
    for (const QByteArray &whole : {log, old_log}) {
        QVERIFY(replayed(hive, {whole}).report.is_replayed());
        for (qsizetype size = 0; size < whole.size(); ++size)
            QVERIFY(!replayed(hive, {whole.first(size)}).report.is_replayed());
    }
}

void tst_hostile_logs::reads_logs_with_any_byte_changed()
{
    const QByteArray before = hive_in_state(0);
    const QByteArray hive = dirty_hive();
    const QByteArray log = new_format_log(before, 7).change(before, hive_in_state(1)).bytes();
    for (qsizetype offset = 0; offset < log.size(); ++offset) {
        QByteArray changed = log;
        changed[offset] = static_cast<char>(changed.at(offset) ^ 0x81);
        QVERIFY2(!replayed(hive, {changed}).report.is_replayed(),
                 QByteArray::number(offset).constData());
    }
}

void tst_hostile_logs::keeps_off_logs_that_cannot_be_read()
{
    int readings = 0;
    const QByteArray log = new_format_log(hive_in_state(0), 7).pages({}, 4096).bytes();
    const log_input never{u"a"_s, [] { return std::optional<QByteArray>(); }};
    const log_input once{u"b"_s,
                         [&] { return ++readings == 1 ? std::optional(log) : std::nullopt; }};
    QByteArray hive = dirty_hive();
    const replay_report report = replay_logs(hive, {never, once});
    QCOMPARE(report.logs.at(0).state, log_state::unreadable);
    QCOMPARE(report.logs.at(1).state, log_state::unreadable);
    QVERIFY(hive == dirty_hive());
}

TEST_MAIN(tst_hostile_logs)
#include "tst_hostile_logs.moc"
