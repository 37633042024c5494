#include "files.h"
#include "hive_damage.h"
#include "host_test.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QFileInfo>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// The list of what a run would read.
class tst_host_volumes : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init() { begin_test(); }
    void lists_hives_accounts_and_packages();
    void lists_each_volume_of_a_source();
    void lists_what_a_run_like_the_suite_would_read();
    void lists_the_backup_that_is_read_instead();
    void tells_no_time_that_a_header_lacks();
    void escapes_names_of_the_evidence();
    void refuses_wrong_use_data();
    void refuses_wrong_use();
    void finds_no_volume();
};

namespace {

constexpr qint64 some_time = 1'700'000'000; // 2023-11-14T22:13:20Z

host_result listed(const QString &source, const QStringList &more = {})
{
    return host_process().run(QStringList{u"volumes"_s, source} + more);
}

QString true_path(const evidence_volume &volume, const QString &folder = {})
{
    return QFileInfo(volume.path(folder)).canonicalFilePath() + u'/';
}

/// What the list tells of a hive that was made with the builder's own times.
QString facts_of(const QString &file, const QString &state)
{
    return u"%1 bytes, changed %2, written by Windows 2023-11-14T22:13:20Z, %3"_s.arg(
        QString::number(QFileInfo(file).size()),
        QFileInfo(file).lastModified().toUTC().toString(Qt::ISODate), state);
}

} // namespace

void tst_host_volumes::lists_hives_accounts_and_packages()
{
    const auto volume = small_volume();
    const QString hive = volume->ntuser_path(u"ann"_s);
    write_file(hive, hive_damage(read_file(hive)).sequence_numbers(7, 6).bytes());
    const QStringList before = volume_snapshot(volume->root());
    const host_result result = listed(volume->root());
    const auto dirty = u"not closed cleanly (sequence numbers 7 and 6), so it may be out of date; "
                       "no transaction log lies beside it"_s;
    QCOMPARE(result.output,
             (QStringList{
                 u"volume .: "_s + true_path(*volume),
                 u"  hive %1: %2"_s.arg(software_file,
                                        facts_of(volume->software_path(), u"closed cleanly"_s)),
                 u"  account ann"_s,
                 u"    hive Users/ann/NTUSER.DAT: "_s + facts_of(hive, dirty),
                 u"    packages Users/ann/AppData/Local/Packages: 1"_s,
                 u"  account bob"_s,
                 u"    hive Users/bob/NTUSER.DAT: not found"_s,
                 u"    packages Users/bob/AppData/Local/Packages: 1"_s,
             }));
    QCOMPARE(result.errors, QStringList());
    QCOMPARE(result.exit_code, 0);
    QCOMPARE(volume_snapshot(volume->root()), before);
}

void tst_host_volumes::lists_each_volume_of_a_source()
{
    evidence_volume source;
    source.folder(u"fs/D:/Users/bob/AppData/Local/Packages"_s);
    source.folder(u"C/Users/ann/AppData/Local/Packages"_s);
    const QStringList first{u"volume C: "_s + true_path(source, u"C"_s),
                            u"  hive %1: not found"_s.arg(software_file), u"  account ann"_s,
                            u"    hive Users/ann/NTUSER.DAT: not found"_s,
                            u"    packages Users/ann/AppData/Local/Packages: 0"_s};
    const QStringList second{u"volume fs/D:: "_s + true_path(source, u"fs/D:"_s),
                             u"  hive %1: not found"_s.arg(software_file), u"  account bob"_s,
                             u"    hive Users/bob/NTUSER.DAT: not found"_s,
                             u"    packages Users/bob/AppData/Local/Packages: 0"_s};
    QCOMPARE(listed(source.root()).output, first + second);
    QCOMPARE(listed(source.root(), {u"--volume"_s, u"d:"_s}).output, second);
    const host_result unknown = listed(source.root(), {u"--volume"_s, u"x"_s});
    QCOMPARE(
        unknown.errors,
        QStringList{u"artifact_host: no volume \"x\" in source %1; the volumes are C, fs/D:"_s.arg(
            source.root())});
    QCOMPARE(unknown.exit_code, 2);
}

void tst_host_volumes::lists_what_a_run_like_the_suite_would_read()
{
#ifdef Q_OS_MACOS
    QSKIP("the file system ignores letter case");
#endif
    evidence_volume volume;
    volume.software();
    volume.hive(u"Users/ann/ntuser.dat"_s);
    volume.write();
    QCOMPARE(listed(volume.root()).output.value(2), u"  account ann"_s);
    const host_result result = listed(volume.root(), {u"--like-the-suite"_s});
    QCOMPARE(result.output.size(), 2);
    QCOMPARE(result.errors,
             QStringList{u"artifact_host: warning: Users/ann/ntuser.dat: is not read: its letter "
                         "case differs from Users/ann/NTUSER.DAT"_s});
}

void tst_host_volumes::lists_the_backup_that_is_read_instead()
{
    evidence_volume volume;
    volume.file(software_file, QByteArray(8192, 'x'), some_time);
    volume.reg_back_software();
    volume.write();
    QCOMPARE(
        listed(volume.root()).output.mid(1),
        (QStringList{u"  hive %1: 8192 bytes, changed 2023-11-14T22:13:20Z, written by Windows "
                     "unknown, not a registry hive, so it is not read"_s.arg(software_file),
                     u"  hive %1: %2"_s.arg(
                         backup_file, facts_of(volume.reg_back_path(), u"closed cleanly"_s))}));
}

void tst_host_volumes::tells_no_time_that_a_header_lacks()
{
    const auto volume = small_volume();
    constexpr qsizetype last_written = 0x0c;
    QByteArray bytes = read_file(volume->software_path());
    bytes.replace(last_written, 8, QByteArray(8, '\0'));
    write_file(volume->software_path(), hive_damage(bytes).bytes()); // with the right checksum
    QVERIFY(listed(volume->root())
                .output.value(1)
                .endsWith(u", written by Windows unknown, closed cleanly"_s));
}

void tst_host_volumes::escapes_names_of_the_evidence()
{
    evidence_volume volume;
    volume.folder(u"Users/\x1b[2J\neve/AppData/Local/Packages"_s);
    QVERIFY(listed(volume.root()).output.contains(u"  account \\x1b[2J\\x0aeve"_s));
}

void tst_host_volumes::refuses_wrong_use_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no source") << QStringList() << u"volumes takes one SOURCE, but 0 were given"_s;
    QTest::newRow("two sources") << QStringList{u"a"_s, u"b"_s}
                                 << u"volumes takes one SOURCE, but 2 were given"_s;
    QTest::newRow("unknown option") << QStringList{u"--frob"_s} << u"Unknown option 'frob'."_s;
    QTest::newRow("empty name") << QStringList{u"a"_s, u"--volume="_s}
                                << u"--volume was given an empty path"_s;
}

void tst_host_volumes::refuses_wrong_use()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QString, reason);
    const host_result result = host_process().run(QStringList{u"volumes"_s} + arguments);
    QCOMPARE(result.errors, QStringList{"artifact_host: "_L1 + reason});
    QCOMPARE(result.exit_code, 2);
}

void tst_host_volumes::finds_no_volume()
{
    const host_result nothing = listed(folder());
    QCOMPARE(nothing.errors,
             QStringList{u"artifact_host: source %1 holds no Windows volume"_s.arg(folder())});
    QCOMPARE(nothing.exit_code, 3);
    QCOMPARE(listed(folder_path(u"none"_s)).exit_code, 3);
}

TEST_MAIN(tst_host_volumes)
#include "tst_host_volumes.moc"
