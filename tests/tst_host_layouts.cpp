#include "host_test.h"
#include "result_database.h"
#include "test_main.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// Where in a source the program finds the volume, and what it says of a source that is a file.
class tst_host_layouts : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init() { begin_test(); }
    void takes_the_only_volume_that_a_collector_wrote_data();
    void takes_the_only_volume_that_a_collector_wrote();
    void takes_the_source_itself_whatever_lies_below();
    void searches_no_deeper_than_collectors_write();
    void follows_no_link_to_a_volume();
    void lists_several_volumes();
    void reads_the_volume_that_is_named_data();
    void reads_the_volume_that_is_named();
    void knows_no_other_volume();
    void tells_which_folders_it_cannot_search_data();
    void tells_which_folders_it_cannot_search();
    void writes_no_results_beside_the_volume();
    void reads_the_older_layout_data();
    void reads_the_older_layout();
    void says_what_a_file_is_and_how_to_mount_it_data();
    void says_what_a_file_is_and_how_to_mount_it();
    void opens_no_pipe();

private:
    static void add_volume(evidence_volume &source, const QString &folder);
    host_result extract_here(const QStringList &more = {}) const;
};

namespace {

QByteArray bytes_at(qsizetype offset, const QByteArray &bytes)
{
    return QByteArray(2048, '\0').replace(offset, bytes.size(), bytes);
}

} // namespace

void tst_host_layouts::add_volume(evidence_volume &source, const QString &folder)
{
    fill_software(source.hive(folder + u'/' + software_file));
    fill_user(source.hive(folder + "/Users/ann/NTUSER.DAT"_L1));
}

void tst_host_layouts::takes_the_only_volume_that_a_collector_wrote_data()
{
    QTest::addColumn<QString>("folder");
    for (const char *folder : {"C", "c", "C%3A", "C_", "uploads/auto/C%3A", "fs/C:", "[root]",
                               "sysvol", "case 7/host/fs/C:", "Büro\n"})
        QTest::newRow(folder) << QString::fromUtf8(folder);
}

void tst_host_layouts::takes_the_only_volume_that_a_collector_wrote()
{
    QFETCH(const QString, folder);
    evidence_volume source;
    add_volume(source, folder);
    source.file(u"collection.json"_s).folder(u"logs/today"_s).write();
    const host_result result = extract(source, {u"--quiet"_s});
    QString shown = folder;
    QCOMPARE(result.errors.first(), u"artifact_host: the volume is %1 in the source"_s.arg(
                                        shown.replace(u'\n', "\\x0a"_L1)));
    QCOMPARE(total_line(result), u"total                              9"_s);
    QCOMPARE(result_database(database_path()).column(u"registered_apps"_s, u"source_file"_s),
             QStringList{u'/' + software_file});
    QCOMPARE(result.exit_code, 0);
}

void tst_host_layouts::takes_the_source_itself_whatever_lies_below()
{
    const auto volume = small_volume();
    add_volume(*volume, u"Windows.old"_s);
    add_volume(*volume, u"C"_s);
    volume->write();
    const host_result result = extract(*volume, {u"--quiet"_s});
    QCOMPARE(result.errors, QStringList{bob_has_no_hive});
    QCOMPARE(result.output.mid(0, result.output.size() - 1), small_volume_report);
}

void tst_host_layouts::searches_no_deeper_than_collectors_write()
{
    evidence_volume source;
    add_volume(source, u"1/2/3/4/5"_s);
    source.write();
    QCOMPARE(extract(source).exit_code, 3);
}

void tst_host_layouts::follows_no_link_to_a_volume()
{
    const auto outside = small_volume();
    evidence_volume source;
    source.link(u"C"_s, outside->root());
    const host_result result = extract(source);
    QVERIFY(result.errors.last().contains(u"holds nothing to read"_s));
    QCOMPARE(result.exit_code, 3);
    QCOMPARE(extract(source, {u"--volume"_s, u"C"_s}).exit_code, 2);
}

void tst_host_layouts::lists_several_volumes()
{
    evidence_volume source(folder_path(u"%3 case"_s));
    add_volume(source, u"uploads/auto/C%3A"_s);
    add_volume(source, u"D\x1b[2J"_s);
    source.write();
    const host_result result = extract(source);
    QCOMPARE(result.errors,
             QStringList{"artifact_host: source "_L1 + source.root() +
                         " holds 2 volumes: D\\x1b[2J, uploads/auto/C%3A; choose one with "
                         "--volume NAME"_L1});
    QCOMPARE(result.exit_code, 2);
    QVERIFY(!QFileInfo::exists(result_path()));
}

void tst_host_layouts::reads_the_volume_that_is_named_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("by its path") << u"fs/C:"_s;
    QTest::newRow("by its path in other letters") << u"FS/c:"_s;
    QTest::newRow("by its path as a shell completes it") << u"fs/C:/"_s;
    QTest::newRow("by its path from here") << u"./fs//C:"_s;
    QTest::newRow("by the last part as a shell completes it") << u"C:/"_s;
    QTest::newRow("by the last part") << u"C:"_s;
    QTest::newRow("by the last part in other letters") << u"c:"_s;
}

void tst_host_layouts::reads_the_volume_that_is_named()
{
    QFETCH(const QString, name);
    evidence_volume source;
    add_volume(source, u"fs/C:"_s);
    source.hive(u"fs/D:/Users/bob/NTUSER.DAT"_s);
    source.write();
    const host_result result = extract(source, {u"--quiet"_s, u"--volume"_s, name});
    QCOMPARE(result.errors, QStringList{u"artifact_host: the volume is fs/C: in the source"_s});
    QCOMPARE(total_line(result), u"total                              9"_s);
}

void tst_host_layouts::knows_no_other_volume()
{
    evidence_volume source;
    add_volume(source, u"C"_s);
    add_volume(source, u"old/C"_s);
    source.write();
    const auto unknown =
        u"artifact_host: no volume \"%1\" in source %2; the volumes are C, old/C"_s;
    for (const QString &name : {u"D"_s, u"../C"_s, u"/C"_s, u"old"_s}) {
        const host_result result = extract(source, {u"--volume"_s, name});
        QCOMPARE(result.errors, QStringList{unknown.arg(name, source.root())});
        QCOMPARE(result.exit_code, 2);
    }
    QCOMPARE(extract(source, {u"--volume="_s}).errors,
             QStringList{u"artifact_host: --volume was given an empty path"_s});
}

void tst_host_layouts::tells_which_folders_it_cannot_search_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("exit_code");
    QTest::newRow("any volume") << QStringList() << 6;
    QTest::newRow("the volume that is named") << QStringList{u"--volume"_s, u"C"_s} << 0;
}

void tst_host_layouts::tells_which_folders_it_cannot_search()
{
    QFETCH(const QStringList, options);
    QFETCH(const int, exit_code);
    evidence_volume source;
    add_volume(source, u"C"_s);
    source.folder(u"closed"_s).write();
#ifndef Q_OS_MACOS // whose file system refuses names that are not UTF-8
    source.raw_folder("b\xe9la");
#endif
    QVERIFY(QFile::setPermissions(folder(), QFile::Permissions(0x7777)));
    QVERIFY(QFile::setPermissions(source.path(u"closed"_s), {}));
    const host_result result =
        host_process().without_privileges().run(arguments(source.root(), options));
    QVERIFY(QFile::setPermissions(source.path(u"closed"_s),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    const auto warning = u"artifact_host: warning: %1"_s;
    QVERIFY(result.errors.contains(
        warning.arg("closed: cannot be searched for volumes: Permission denied"_L1)));
#ifndef Q_OS_MACOS
    QVERIFY(result.errors.contains(
        warning.arg(u"b\ufffdla: its name is not valid UTF-8, so no volume is searched there"_s)));
#endif
    QCOMPARE(result.exit_code, exit_code);
}

// All that the examiner calls the source is evidence.
void tst_host_layouts::writes_no_results_beside_the_volume()
{
    evidence_volume source;
    add_volume(source, u"C"_s);
    source.write();
    const QString beside = source.path(u"results"_s);
    const host_result result =
        host_process().run({u"extract"_s, source.root(), u"--result"_s, beside});
    QCOMPARE(result.errors.last(),
             u"artifact_host: result folder %1 lies in the source, which is never written to"_s.arg(
                 QFileInfo(source.root()).canonicalFilePath() + "/results"_L1));
    QCOMPARE(result.exit_code, 4);
    QVERIFY(!QFileInfo::exists(beside));
}

void tst_host_layouts::reads_the_older_layout_data()
{
    QTest::addColumn<QString>("windows");
    QTest::newRow("Windows 2000") << u"WINNT/system32/config/software"_s;
    QTest::newRow("Windows XP") << u"WINDOWS/system32/config/software"_s;
}

void tst_host_layouts::reads_the_older_layout()
{
    QFETCH(const QString, windows);
    const auto hive = u"Documents and Settings/ann/NTUSER.DAT"_s;
    evidence_volume volume;
    fill_software(volume.hive(windows));
    fill_user(volume.hive(hive));
    volume.write();
    const host_result result = extract(volume, {u"--quiet"_s, u"--user"_s, u"Ann"_s});
    QCOMPARE(result.errors, QStringList());
    QCOMPARE(total_line(result), u"total                              9"_s);
    const result_database database(database_path());
    QCOMPARE(database.rows(u"uninstall_apps"_s, {u"system_account"_s, u"source_file"_s}),
             (QList<QStringList>{{u"ann"_s, u'/' + hive}}));
    QCOMPARE(database.column(u"registered_apps"_s, u"source_file"_s), QStringList{u'/' + windows});
}

void tst_host_layouts::says_what_a_file_is_and_how_to_mount_it_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("program");
    const auto row = [](const char *name, const QByteArray &content, const QString &program) {
        QTest::newRow(name) << content << QString::fromUtf8(name) << program;
    };
    row("an EWF image (E01)", bytes_at(0, "EVF\x09\x0d\x0a\xff"), u"ewfmount"_s);
    row("an EWF image (Ex01)", bytes_at(0, "EVF2\x0d\x0a\x81"), u"ewfmount"_s);
    row("a VHDX disk", bytes_at(0, "vhdxfile"), u"guestmount --ro"_s);
    row("a VHD disk", bytes_at(0, "conectix"), u"guestmount --ro"_s);
    row("a VMDK disk", bytes_at(0, "KDMV"), u"guestmount --ro"_s);
    row("a QCOW disk", bytes_at(0, "QFI\xfb"), u"guestmount --ro"_s);
    row("a ZIP archive", "PK\x03\x04", u"fuse-zip -r"_s);
    row("an empty ZIP archive", "PK\x05\x06", u"fuse-zip -r"_s);
    row("a 7-Zip archive", "7z\xbc\xaf\x27\x1c", u"archivemount -o readonly"_s);
    row("a tar archive", bytes_at(257, "ustar"), u"archivemount -o readonly"_s);
    row("the image of an NTFS volume", bytes_at(3, "NTFS    ").replace(510, 2, "\x55\xaa"),
        u"mount -o ro,loop"_s);
    const auto with_boot_mark = [](qsizetype offset, const QByteArray &mark) {
        return bytes_at(offset, mark).replace(510, 2, "\x55\xaa");
    };
    row("the image of an exFAT volume", with_boot_mark(3, "EXFAT   "), u"mount -o ro,loop"_s);
    row("the image of a FAT32 volume", with_boot_mark(82, "FAT32   "), u"mount -o ro,loop"_s);
    row("the image of a BitLocker volume", with_boot_mark(3, "-FVE-FS-"),
        u"cryptsetup open --type bitlk --readonly"_s);
    row("a gzip archive", with_boot_mark(0, "\x1f\x8b"), u"gunzip --keep"_s);
    row("an AFF image", with_boot_mark(0, QByteArray("AFF10\r\n\0", 8)), u"affuse"_s);
    row("the image of a disk (GPT)", bytes_at(512, "EFI PART").replace(510, 2, "\x55\xaa"),
        u"losetup --read-only"_s);
    row("the image of a disk (MBR)", bytes_at(510, "\x55\xaa"), u"losetup --read-only"_s);
}

void tst_host_layouts::says_what_a_file_is_and_how_to_mount_it()
{
    QFETCH(const QByteArray, content);
    QFETCH(const QString, kind);
    QFETCH(const QString, program);
    evidence_volume files;
    files.file(u"disk"_s, content);
    const QString file = files.path(u"disk"_s);
    const host_result result = host_process().run(arguments(file));
    QCOMPARE(result.errors.size(), 1);
    QVERIFY(result.errors.first().startsWith(
        u"artifact_host: source %1 is no folder: it is %2; "_s.arg(file, kind)));
    QVERIFY(result.errors.first().contains(u", for example by \"%1"_s.arg(program)));
    QCOMPARE(result.exit_code, 3);
    QVERIFY(QDir(folder()).isEmpty());
}

void tst_host_layouts::opens_no_pipe()
{
    evidence_volume files;
    files.fifo(u"pipe"_s).file(u"text"_s, "text").file(u"empty"_s);
    for (const QString &name : {u"pipe"_s, u"text"_s, u"empty"_s}) {
        const QString file = files.path(name);
        QCOMPARE(
            host_process().run(arguments(file)).errors,
            QStringList{
                u"artifact_host: source %1 is no folder: mount or extract the volume first"_s.arg(
                    file)});
    }
}

TEST_MAIN(tst_host_layouts)
#include "tst_host_layouts.moc"
