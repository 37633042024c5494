#include "application_keys.h"
#include "dirty_hive.h"
#include "files.h"
#include "hive_damage.h"
#include "host_test.h"
#include "result_database.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// Runs over volumes whose hives have changes in transaction logs.
class tst_replayed_extraction : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init();
    void reads_the_hive_with_its_logs_applied();
    void reads_the_hive_as_it_lies_when_asked_data();
    void reads_the_hive_as_it_lies_when_asked();
    void names_the_evidence_in_rows_and_reads_the_machines_hive();
    void finds_hive_and_log_in_whatever_letter_case();
    void keeps_the_copy_and_records_it();
    void takes_the_copy_of_an_earlier_run_if_it_is_the_same();
    void tells_of_changes_that_are_left_data();
    void tells_of_changes_that_are_left();
    void reads_a_hive_whose_header_is_damaged();
    void tells_why_no_log_applies();
    void reads_no_log_that_leads_out_of_the_source();
    void checks_the_keys_of_the_copy();
    void leaves_the_evidence_as_it_was();
    void writes_no_copy_into_the_evidence();
    void reads_the_hive_as_it_lies_without_room_for_a_copy();

private:
    void put_hive(const dirty_hive &hive) const;
    QString copy_path() const { return recovered_path(u"Source1/Users/ann/NTUSER.DAT"_s); }
    QString recovered_path(const QString &name) const
    {
        return QFileInfo(database_path()).path() + "/recovered_hives/"_L1 + name;
    }
    host_result run(const QStringList &more = {}) const
    {
        return extract(*m_volume, QStringList{u"--quiet"_s, u"--user"_s, u"ann"_s} + more);
    }
    QStringList programs() const
    {
        return result_database(database_path()).column(u"previously_executed_apps"_s, u"exename"_s);
    }

    std::unique_ptr<evidence_volume> m_volume;
    QByteArray m_before;
    QByteArray m_after;
    dirty_hive m_dirty;
    QString m_warning; ///< of the hive that was replayed
};

namespace {

const auto user_hive = u"Users/ann/NTUSER.DAT"_s;
const auto as_it_lies =
    u"artifact_host: warning: Users/ann/NTUSER.DAT: not closed cleanly (sequence numbers 7 and 6), "
    "so it may be out of date; the changes in NTUSER.DAT.LOG1 are not applied"_s;
const auto no_log_applies =
    u"artifact_host: warning: Users/ann/NTUSER.DAT: none of its transaction logs applies; "
    "NTUSER.DAT.LOG1: %1"_s;

/// A user's hive with these entries of UserAssist, whose names are rotated by 13 letters.
QByteArray hive_of(const QStringList &entries)
{
    hive_builder hive;
    hive_key &count = hive.key(user_assist_key + "\\{CEBFF5CD}\\Count"_L1);
    for (const QString &entry : entries)
        count.binary(entry, QByteArray(72, '\0'));
    return hive.bytes();
}

QString sha256_of(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

} // namespace

void tst_replayed_extraction::init()
{
    begin_test();
    m_volume = small_volume();
    m_before = hive_of({u"byq.rkr"_s});
    m_after = hive_of({u"byq.rkr"_s, u"arj.rkr"_s});
    m_dirty = dirty_hive_of(m_before, m_after);
    put_hive(m_dirty);
    const qsizetype pages = pages_that_differ(m_before, m_after).size();
    m_warning =
        u"artifact_host: warning: %1: read from a copy with its transaction logs applied (not "
        "closed cleanly (sequence numbers 7 and 6)); keys: 9 before, 9 after; 0 added, 1 changed, "
        "0 removed; NTUSER.DAT.LOG1: applied: entry 7, %2 pages, %3 bytes"_s.arg(user_hive)
            .arg(pages)
            .arg(pages * 4096);
}

void tst_replayed_extraction::put_hive(const dirty_hive &hive) const
{
    m_volume->file(user_hive, hive.hive);
    m_volume->file(user_hive + ".LOG1"_L1, hive.log);
}

void tst_replayed_extraction::reads_the_hive_with_its_logs_applied()
{
    const host_result result = run();
    QCOMPARE(result.errors, QStringList{m_warning});
    QCOMPARE(programs(), (QStringList{u"old.exe"_s, u"new.exe"_s}));
    QCOMPARE(result.exit_code, 0);
}

void tst_replayed_extraction::reads_the_hive_as_it_lies_when_asked_data()
{
    QTest::addColumn<QString>("option");
    QTest::newRow("without replay") << u"--no-replay"_s;
    QTest::newRow("like the suite") << u"--like-the-suite"_s;
}

void tst_replayed_extraction::reads_the_hive_as_it_lies_when_asked()
{
    QFETCH(const QString, option);
    const host_result result = run({option});
    QCOMPARE(result.errors, QStringList{as_it_lies});
    QCOMPARE(programs(), QStringList{u"old.exe"_s});
    QCOMPARE(result.exit_code, 6);
    QVERIFY(!QFileInfo::exists(recovered_path(QString())));
    QVERIFY(!result.options_line.contains("transaction logs"_L1));
    QCOMPARE(last_run().value("replayed_hives"_L1).toArray(), QJsonArray());
}

void tst_replayed_extraction::names_the_evidence_in_rows_and_reads_the_machines_hive()
{
    const QByteArray before = read_file(m_volume->software_path());
    hive_builder after;
    fill_software(after);
    after.key(uninstall_key).key(u"Late"_s).text(u"DisplayName"_s, u"Late"_s);
    const dirty_hive dirty = dirty_hive_of(before, after.bytes());
    m_volume->file(software_file, dirty.hive);
    m_volume->file(software_file + ".LOG2"_L1, dirty.log);
    QCOMPARE(run().exit_code, 0);
    const result_database database(database_path());
    QVERIFY(database.column(u"install_apps_64"_s, u"display_name"_s).contains(u"Late"_s));
    QCOMPARE(database.column(u"install_apps_64"_s, u"source_file"_s).first(),
             u"/"_s + software_file);
    QCOMPARE(database.column(u"previously_executed_apps"_s, u"source_file"_s).first(),
             u"/"_s + user_hive);
    QVERIFY(QFileInfo::exists(recovered_path("Source1/"_L1 + software_file)));
}

void tst_replayed_extraction::finds_hive_and_log_in_whatever_letter_case()
{
#ifdef Q_OS_MACOS
    QSKIP("the file system ignores letter case");
#endif
    QVERIFY(QFile::rename(m_volume->path(user_hive), m_volume->path(u"Users/ann/ntuser.dat"_s)));
    const host_result result = run();
    QCOMPARE(result.errors.size(), 1);
    QVERIFY(result.errors.first().contains("Users/ann/ntuser.dat: read from a copy"_L1));
    QCOMPARE(programs(), (QStringList{u"old.exe"_s, u"new.exe"_s}));
    QVERIFY(QFileInfo::exists(recovered_path(u"Source1/Users/ann/ntuser.dat"_s)));
}

void tst_replayed_extraction::keeps_the_copy_and_records_it()
{
    run();
    const QByteArray copy = read_file(copy_path());
    QVERIFY(copy.mid(4096) == m_after.mid(4096));
    const QJsonArray replayed = last_run().value("replayed_hives"_L1).toArray();
    QCOMPARE(replayed.size(), 1);
    const QJsonObject entry = replayed.first().toObject();
    QCOMPARE(entry.value("path"_L1), user_hive);
    QCOMPARE(entry.value("copy"_L1), copy_path());
    QCOMPARE(entry.value("copy_sha256"_L1), sha256_of(copy));
    QCOMPARE(entry.value("sequence"_L1), 7);
    QCOMPARE(entry.value("keys"_L1).toObject().value("changed"_L1), 1);
    const QJsonObject log = entry.value("logs"_L1).toArray().first().toObject();
    QCOMPARE(log.value("name"_L1), u"NTUSER.DAT.LOG1"_s);
    QCOMPARE(log.value("sha256"_L1), sha256_of(m_dirty.log));
    QVERIFY(log.value("result"_L1).toString().startsWith("applied: entry 7"_L1));
    const QJsonArray files = last_run().value("files"_L1).toArray();
    QCOMPARE(files.last().toObject().value("state"_L1), u"dirty"_s);
    QCOMPARE(files.last().toObject().value("sha256_after"_L1), sha256_of(m_dirty.hive));
    QVERIFY(last_run().value("options"_L1).toObject().value("replays_logs"_L1).toBool());
}

void tst_replayed_extraction::takes_the_copy_of_an_earlier_run_if_it_is_the_same()
{
    run();
    run();
    const QDir folder = QFileInfo(copy_path()).dir();
    QCOMPARE(folder.entryList(QDir::Files), QStringList{u"NTUSER.DAT"_s});
    write_file(copy_path(), "another file");
    QCOMPARE(run().errors, QStringList{m_warning});
    QCOMPARE(folder.entryList(QDir::Files), (QStringList{u"NTUSER.DAT"_s, u"NTUSER.DAT-2"_s}));
    QCOMPARE(read_file(copy_path()), QByteArray("another file"));
    QCOMPARE(programs(), (QStringList{u"old.exe"_s, u"new.exe"_s}));
}

void tst_replayed_extraction::tells_of_changes_that_are_left_data()
{
    QTest::addColumn<QByteArray>("behind");
    QTest::addColumn<QString>("told");
    QTest::addColumn<int>("exit_code");
    const QByteArray entry = bytes_of_entry({8, 4096, {}});
    QTest::newRow("an entry that was not written to its end")
        << QByteArray(entry).replace(200, 1, "?")
        << u"; not applied from entry 8 on, which has a wrong hash, as one that was not written to "
           "its end"_s
        << 6;
    QTest::newRow("an entry before which one is missing")
        << bytes_of_entry({9, 4096, {}})
        << u"; not applied from entry 9 on, before which entries are missing"_s << 6;
    QTest::newRow("an entry of an earlier round")
        << bytes_of_entry({5, 4096, {}}) << u"; entries of an earlier round follow"_s << 0;
}

void tst_replayed_extraction::tells_of_changes_that_are_left()
{
    QFETCH(const QByteArray, behind);
    QFETCH(const QString, told);
    put_hive({m_dirty.hive, m_dirty.log + behind});
    const host_result result = run();
    QCOMPARE(result.errors, QStringList{m_warning + told});
    QTEST(result.exit_code, "exit_code");
}

void tst_replayed_extraction::reads_a_hive_whose_header_is_damaged()
{
    put_hive({QByteArray(m_dirty.hive).replace(4, 1, "?"), m_dirty.log});
    const host_result result = run();
    QCOMPARE(result.errors.size(), 1);
    QVERIFY(result.errors.first().contains("applied (its header is damaged); keys: 9"_L1));
    QCOMPARE(programs(), (QStringList{u"old.exe"_s, u"new.exe"_s}));
    QCOMPARE(result.exit_code, 0);
}

void tst_replayed_extraction::tells_why_no_log_applies()
{
    put_hive({m_dirty.hive, QByteArray()});
    const host_result result = run();
    QCOMPARE(result.errors, (QStringList{as_it_lies, no_log_applies.arg("empty"_L1)}));
    QCOMPARE(programs(), QStringList{u"old.exe"_s});
    QCOMPARE(result.exit_code, 6);
}

void tst_replayed_extraction::reads_no_log_that_leads_out_of_the_source()
{
    const QString outside = folder_path(u"outside"_s);
    QVERIFY(QFile::rename(m_volume->path(user_hive + ".LOG1"_L1), outside));
    m_volume->link(user_hive + ".LOG1"_L1, outside);
    QCOMPARE(run().errors, (QStringList{as_it_lies, no_log_applies.arg("cannot be read"_L1)}));
    QCOMPARE(programs(), QStringList{u"old.exe"_s});
}

void tst_replayed_extraction::checks_the_keys_of_the_copy()
{
    hive_builder after;
    hive_key &damaged =
        after.key(user_assist_key + "\\{DA3A6E5D}\\Count"_L1).binary(u"lost"_s, "data");
    const QByteArray bytes = after.bytes();
    put_hive(
        dirty_hive_of(m_before, hive_damage(bytes).value_count(damaged.cells().key, 999).bytes()));
    const host_result result = run();
    QCOMPARE(result.errors.size(), 2);
    QCOMPARE(result.errors.last(),
             u"artifact_host: warning: %1: the content of %2\\{DA3A6E5D}\\Count cannot be listed, "
             "so it is not read"_s.arg(user_hive, user_assist_key));
    QCOMPARE(result.exit_code, 6);
}

void tst_replayed_extraction::leaves_the_evidence_as_it_was()
{
    const QStringList before = volume_snapshot(m_volume->root());
    QCOMPARE(run().exit_code, 0);
    QCOMPARE(volume_snapshot(m_volume->root()), before);
}

void tst_replayed_extraction::writes_no_copy_into_the_evidence()
{
    make_folder(QFileInfo(database_path()).path());
    const QStringList before = volume_snapshot(m_volume->root());
    QVERIFY(QFile::link(m_volume->root(), recovered_path(QString()).chopped(1)));
    const host_result result = run();
    QCOMPARE(result.errors.size(), 1);
    QVERIFY(result.errors.first().endsWith("lies in the source, which is never written to"_L1));
    QCOMPARE(result.exit_code, 4);

    QVERIFY(QFile::remove(recovered_path(QString()).chopped(1)));
    make_folder(recovered_path(QString()));
    QVERIFY(QFile::link(m_volume->root(), recovered_path(u"Source1"_s)));
    QCOMPARE(run({u"--replace"_s}).errors.value(0), as_it_lies);
    QCOMPARE(last_run().value("outcome"_L1), u"incomplete"_s);
    QCOMPARE(volume_snapshot(m_volume->root()), before);
}

void tst_replayed_extraction::reads_the_hive_as_it_lies_without_room_for_a_copy()
{
    make_folder(QFileInfo(database_path()).path());
    write_file(recovered_path(QString()).chopped(1), "a file");
    const host_result result = run();
    QCOMPARE(result.errors.value(0), as_it_lies);
    QVERIFY(result.errors.value(1).startsWith(
        "artifact_host: warning: Users/ann/NTUSER.DAT: its transaction logs are not applied: "_L1));
    QCOMPARE(result.errors.size(), 2);
    QCOMPARE(programs(), QStringList{u"old.exe"_s});
    QCOMPARE(result.exit_code, 6);
}

TEST_MAIN(tst_replayed_extraction)
#include "tst_replayed_extraction.moc"
