#include "dirty_hive.h"
#include "files.h"
#include "hive_builder.h"
#include "host_test.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// The command that applies the logs of one hive.
class tst_recover : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init();
    void writes_a_copy_and_tells_what_it_did();
    void names_the_keys_that_differ();
    void takes_the_logs_beside_the_hive_data();
    void takes_the_logs_beside_the_hive();
    void takes_the_logs_that_are_given();
    void writes_no_copy_without_need_data();
    void writes_no_copy_without_need();
    void refuses_what_is_no_hive_data();
    void refuses_what_is_no_hive();
    void refuses_places_for_the_copy_data();
    void refuses_places_for_the_copy();
    void leaves_the_evidence_as_it_was();
    void waits_for_no_log_that_is_a_pipe();
    void escapes_names_of_the_evidence();
    void refuses_wrong_arguments_data();
    void refuses_wrong_arguments();

private:
    host_result recover(const QStringList &more = {}) const;
    QString hive() const { return folder_path(u"evidence/SYSTEM"_s); }
    QString copy() const { return folder_path(u"out/copy"_s); }

    QByteArray m_before;
    QByteArray m_after;
    dirty_hive m_dirty;
};

void tst_recover::init()
{
    begin_test();
    make_folder(folder_path(u"evidence"_s));
    make_folder(folder_path(u"out"_s));
    hive_builder before;
    before.key(u"Kept"_s);
    before.key(u"Lost"_s).dword(u"Value"_s, 1);
    m_before = before.bytes();
    hive_builder after;
    after.key(u"Kept"_s).dword(u"Value"_s, 2);
    after.key(u"New\\Key"_s).binary(u"Data"_s, QByteArray(6'000, 'd'));
    m_after = after.bytes();
    m_dirty = dirty_hive_of(m_before, m_after);
    write_file(hive(), m_dirty.hive);
    write_file(hive() + ".LOG1"_L1, m_dirty.log);
}

host_result tst_recover::recover(const QStringList &more) const
{
    return host_process().run(QStringList{u"recover"_s, hive(), copy()} + more);
}

void tst_recover::writes_a_copy_and_tells_what_it_did()
{
    const host_result result = recover();
    const QByteArray bytes = read_file(copy());
    QVERIFY(bytes.mid(4096) == m_after.mid(4096));
    const QString hash =
        QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
    const qsizetype pages = pages_that_differ(m_before, m_after).size();
    QCOMPARE(result.output,
             (QStringList{u"hive %1: not closed cleanly (sequence numbers 7 and 6), %2 bytes"_s.arg(
                              hive(), QString::number(m_before.size())),
                          u"log SYSTEM.LOG1: applied: entry 7, %1 pages, %2 bytes"_s.arg(pages).arg(
                              pages * 4096),
                          u"keys: 3 before, 4 after; 2 added, 1 changed, 1 removed"_s,
                          u"copy %1: %2 bytes, sequence number 7, SHA-256 %3"_s.arg(
                              copy(), QString::number(m_after.size()), hash)}));
    QCOMPARE(result.errors, QStringList());
    QCOMPARE(result.exit_code, 0);
    QCOMPARE(QFileInfo(copy()).permissions() & (QFile::ReadGroup | QFile::ReadOther),
             QFile::Permissions());
    QCOMPARE(QDir(folder_path(u"out"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList{u"copy"_s});
}

void tst_recover::names_the_keys_that_differ()
{
    const host_result result = recover({u"--list"_s});
    QStringList lines = result.output.mid(4);
    lines.sort();
    QCOMPARE(lines, (QStringList{u"added    New"_s, u"added    New\\Key"_s, u"changed  Kept"_s,
                                 u"removed  Lost"_s}));
    QCOMPARE(result.exit_code, 0);
}

void tst_recover::takes_the_logs_beside_the_hive_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("exit_code");
    for (const char *name : {"SYSTEM.LOG", "SYSTEM.LOG1", "system.log2", "System.Log1"})
        QTest::newRow(name) << QString::fromLatin1(name) << 0;
    for (const char *name : {"SYSTEM.LOG3", "SOFTWARE.LOG1", "LOG1"})
        QTest::newRow(name) << QString::fromLatin1(name) << 7;
}

void tst_recover::takes_the_logs_beside_the_hive()
{
    QFETCH(const QString, name);
    QVERIFY(QFile::remove(hive() + ".LOG1"_L1));
    write_file(folder_path("evidence/"_L1 + name), m_dirty.log);
    const host_result result = recover();
    QTEST(result.exit_code, "exit_code");
    QCOMPARE(QFileInfo::exists(copy()), result.exit_code == 0);
}

void tst_recover::takes_the_logs_that_are_given()
{
    const QString other = folder_path(u"elsewhere/log"_s);
    make_folder(folder_path(u"elsewhere"_s));
    write_file(other, QByteArray());
    QCOMPARE(recover({u"--log"_s, other}).exit_code, 7);
    write_file(other, m_dirty.log);
    const host_result result = recover({u"--log"_s, other, u"--log"_s, hive() + ".none"_L1});
    QVERIFY(result.output.value(1).startsWith("log log: applied"_L1));
    QCOMPARE(result.output.value(2), u"log SYSTEM.none: cannot be read"_s);
    QCOMPARE(result.exit_code, 0);
}

void tst_recover::writes_no_copy_without_need_data()
{
    QTest::addColumn<QByteArray>("hive");
    QTest::addColumn<QByteArray>("log");
    QTest::addColumn<QString>("said");
    QTest::addColumn<QString>("reason");
    const QByteArray older = numbered(m_dirty.hive, 9, 8);
    const auto none = u"no transaction log applies"_s;
    QTest::newRow("a clean hive") << m_before << m_dirty.log << u"not looked at"_s
                                  << u"the hive was closed cleanly"_s;
    QTest::newRow("an empty log") << m_dirty.hive << QByteArray() << u"empty"_s << none;
    QTest::newRow("an older log") << older << m_dirty.log
                                  << u"older than the hive, it begins with entry 7"_s << none;
    QTest::newRow("another file") << m_dirty.hive << QByteArray("log") << u"no transaction log"_s
                                  << none;
    QTest::newRow("a damaged entry")
        << m_dirty.hive << QByteArray(m_dirty.log).replace(1000, 1, "?")
        << u"no sound entry: entry 7 has a wrong hash, as one that was not written to its end"_s
        << none;
}

void tst_recover::writes_no_copy_without_need()
{
    QFETCH(const QByteArray, log);
    QFETCH(const QString, said);
    QFETCH(const QString, reason);
    QFETCH(const QByteArray, hive);
    write_file(this->hive(), hive);
    write_file(this->hive() + ".LOG1"_L1, log);
    const host_result result = recover();
    QCOMPARE(result.output.value(1), u"log SYSTEM.LOG1: "_s + said);
    QCOMPARE(
        result.errors,
        QStringList{u"artifact_host: nothing to recover: %1; no copy was written"_s.arg(reason)});
    QCOMPARE(result.exit_code, 7);
    QVERIFY(!QFileInfo::exists(copy()));
}

void tst_recover::refuses_what_is_no_hive_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("no bytes") << QByteArray();
    QTest::newRow("other bytes") << QByteArray(8192, 'x');
    QTest::newRow("a log") << m_dirty.log;
}

void tst_recover::refuses_what_is_no_hive()
{
    QFETCH(const QByteArray, content);
    write_file(hive(), content);
    host_result result = recover();
    QCOMPARE(result.errors, QStringList{u"artifact_host: %1 is no registry hive"_s.arg(hive())});
    QCOMPARE(result.exit_code, 3);
    QVERIFY(QFile::remove(hive()));
    QCOMPARE(mkfifo(QFile::encodeName(hive()).constData(), 0600), 0);
    result = recover();
    QCOMPARE(result.errors, QStringList{u"artifact_host: hive %1 cannot be read"_s.arg(hive())});
    QCOMPARE(result.exit_code, 3);
}

void tst_recover::refuses_places_for_the_copy_data()
{
    QTest::addColumn<QString>("place");
    QTest::addColumn<QString>("reason");
    const auto evidence = u"lies in the source, which is never written to"_s;
    QTest::newRow("beside the hive") << u"evidence/copy"_s << evidence;
    QTest::newRow("the hive itself") << u"evidence/SYSTEM"_s << evidence;
    QTest::newRow("elsewhere in the volume") << u"volume/copy"_s << evidence;
    QTest::newRow("through a link into the volume") << u"link/copy"_s << evidence;
    QTest::newRow("beside a log") << u"logs/copy"_s << evidence;
    QTest::newRow("a file that is there")
        << u"out/there"_s << u"is there already and stays as it is"_s;
    QTest::newRow("a link to nowhere")
        << u"out/broken"_s << u"is there already and stays as it is"_s;
    QTest::newRow("a folder that is not there")
        << u"out/none/copy"_s << u"cannot be made: its folder does not exist"_s;
}

void tst_recover::refuses_places_for_the_copy()
{
    QFETCH(const QString, place);
    QFETCH(const QString, reason);
    evidence_volume volume(folder_path(u"volume"_s));
    volume.file(u"Windows/System32/config/SYSTEM"_s, m_dirty.hive);
    volume.file(u"Windows/System32/config/SOFTWARE"_s, m_dirty.hive);
    make_folder(folder_path(u"logs"_s));
    write_file(folder_path(u"logs/log"_s), m_dirty.log);
    write_file(folder_path(u"out/there"_s), "there");
    QVERIFY(QFile::link(u"nowhere"_s, folder_path(u"out/broken"_s)));
    QVERIFY(QFile::link(u"volume/Windows"_s, folder_path(u"link"_s)));
    const bool is_of_folder = place.startsWith("evidence"_L1);
    const QString hive =
        is_of_folder ? this->hive() : volume.path(u"Windows/System32/config/SYSTEM"_s);
    const QStringList before = volume_snapshot(folder());
    const host_result result = host_process().run(
        {u"recover"_s, hive, folder_path(place), u"--log"_s, folder_path(u"logs/log"_s)});
    QCOMPARE(result.errors,
             QStringList{u"artifact_host: copy %1 %2"_s.arg(folder_path(place), reason)});
    QCOMPARE(result.exit_code, 4);
    QCOMPARE(volume_snapshot(folder()), before);
}

void tst_recover::leaves_the_evidence_as_it_was()
{
    const QStringList before = volume_snapshot(folder_path(u"evidence"_s));
    QCOMPARE(recover().exit_code, 0);
    QCOMPARE(volume_snapshot(folder_path(u"evidence"_s)), before);
}

void tst_recover::waits_for_no_log_that_is_a_pipe()
{
    const QString pipe = hive() + ".LOG2"_L1;
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    const host_result result = recover();
    QCOMPARE(result.output.value(2), u"log SYSTEM.LOG2: cannot be read"_s);
    QCOMPARE(result.exit_code, 0);
}

void tst_recover::escapes_names_of_the_evidence()
{
    hive_builder after;
    after.key(u"Kept"_s);
    after.key(u"\x1b[2J\u202eeve"_s);
    const dirty_hive dirty = dirty_hive_of(m_before, after.bytes());
    write_file(hive(), dirty.hive);
    write_file(hive() + ".LOG1"_L1, dirty.log);
    QVERIFY(recover({u"--list"_s}).output.contains(u"added    \\x1b[2J\\u202eeve"_s));
}

void tst_recover::refuses_wrong_arguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("error");
    QTest::newRow("one file") << QStringList{u"a"_s}
                              << u"recover takes HIVE and COPY, but 1 files were given"_s;
    QTest::newRow("three files") << QStringList{u"a"_s, u"b"_s, u"c"_s}
                                 << u"recover takes HIVE and COPY, but 3 files were given"_s;
    QTest::newRow("an empty file")
        << QStringList{u"a"_s, QString()} << u"recover was given an empty path"_s;
    QTest::newRow("an empty log") << QStringList{u"a"_s, u"b"_s, u"--log"_s, QString()}
                                  << u"recover was given an empty path"_s;
    QTest::newRow("an unknown option")
        << QStringList{u"a"_s, u"b"_s, u"--force"_s} << u"Unknown option 'force'."_s;
}

void tst_recover::refuses_wrong_arguments()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QString, error);
    const host_result result = host_process().run(QStringList(u"recover"_s) + arguments);
    QCOMPARE(result.errors, QStringList{"artifact_host: "_L1 + error});
    QCOMPARE(result.exit_code, 2);
}

TEST_MAIN(tst_recover)
#include "tst_recover.moc"
