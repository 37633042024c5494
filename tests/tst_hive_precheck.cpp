#include "hive_precheck.h"

#include "byte_fields.h"
#include "evidence_volume.h"
#include "files.h"
#include "hive_damage.h"
#include "plugin_tabs.h"
#include "test_main.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

const auto out_of_date =
    u"not closed cleanly (sequence numbers 7 and 6), so it may be out of date; %1"_s;

QByteArray hive_bytes()
{
    hive_builder hive;
    hive.key(u"Software\\Microsoft"_s);
    return hive.bytes();
}

QByteArray dirty_hive_bytes()
{
    return hive_damage(hive_bytes()).sequence_numbers(7, 6).bytes();
}

/// The hive with the bytes at `offset` replaced and the checksum left as it was.
QByteArray altered(qsizetype offset, const QByteArray &bytes)
{
    return hive_bytes().replace(offset, bytes.size(), bytes);
}

/// A hive whose fields before the checksum cancel each other out but for `rest`.
QByteArray hive_with_sum(quint32 rest, quint32 stored_sum)
{
    QByteArray base_block(4096, '\0');
    base_block.replace(0, 4, "regf");
    base_block.replace(0x30, 4, "regf");
    const auto put = [&base_block](qsizetype offset, quint32 value) {
        for (int byte = 0; byte < 4; ++byte)
            base_block[offset + byte] = char(value >> (8 * byte));
    };
    put(0x34, rest);
    put(0x1fc, stored_sum);
    return base_block;
}

/// The warnings about the volume, whichever software hive it has.
QStringList warnings_of(const evidence_volume &volume, const QStringList &accounts,
                        const QList<host_tab> &tabs)
{
    const source_volume source(volume.root());
    return texts_of(precheck_warnings(source, software_hive_to_read(source), accounts, tabs));
}

} // namespace

class tst_hive_precheck : public QObject
{
    Q_OBJECT

private slots:
    void tells_what_the_header_shows_data();
    void tells_what_the_header_shows();
    void names_the_logs_beside_a_dirty_hive_data();
    void names_the_logs_beside_a_dirty_hive();
    void tells_what_is_no_file_data();
    void tells_what_is_no_file();
    void looks_only_at_the_hives_that_the_tabs_read_data();
    void looks_only_at_the_hives_that_the_tabs_read();
    void looks_at_no_hive_of_a_user_for_the_machine_alone();
    void looks_at_the_backup_only_when_it_is_needed_data();
    void looks_at_the_backup_only_when_it_is_needed();
};

void tst_hive_precheck::tells_what_the_header_shows_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("warnings");
    QTest::addColumn<bool>("readable");
    const QByteArray hive = hive_bytes();
    const auto damaged =
        QStringList{u"its header is damaged (wrong checksum), so it is not read"_s};
    QTest::newRow("clean hive gives no warning") << hive << QStringList() << true;
    QTest::newRow("more bytes than told give no warning")
        << hive + QByteArray(512, 'x') << QStringList() << true;
    QTest::newRow("empty file is too short")
        << QByteArray() << QStringList{u"too short for a hive (0 bytes), so it is not read"_s}
        << false;
    QTest::newRow("header without its last byte is too short")
        << hive.first(4095)
        << QStringList{u"too short for a hive (4095 bytes), so it is not read"_s} << false;
    QTest::newRow("other signature is no hive")
        << altered(0, "REGF") << QStringList{u"not a registry hive, so it is not read"_s} << false;
    QTest::newRow("checksum of other content is damage") << altered(0x30, "x") << damaged << false;
    QTest::newRow("sum of 0 is stored as 1") << hive_with_sum(0, 1) << QStringList() << true;
    QTest::newRow("sum of 0 is not stored as 0") << hive_with_sum(0, 0) << damaged << false;
    QTest::newRow("sum of -1 is stored as -2")
        << hive_with_sum(0xffffffff, 0xfffffffe) << QStringList() << true;
    QTest::newRow("missing pages are told")
        << hive.first(4096)
        << QStringList{u"cut off: its header tells %1 bytes, the file has 4096; what is missing is not read"_s
                           .arg(hive.size())}
        << true;
    QTest::newRow("largest size told does not overflow")
        << hive_damage(hive).bins_size(0xffffffff).bytes()
        << QStringList{u"cut off: its header tells 4294971391 bytes, the file has %1; what is missing is not read"_s
                           .arg(hive.size())}
        << true;
    QTest::newRow("unequal sequence numbers are told")
        << dirty_hive_bytes()
        << QStringList{out_of_date.arg("no transaction log lies beside it"_L1)} << true;
}

void tst_hive_precheck::tells_what_the_header_shows()
{
    QFETCH(QByteArray, content);
    QFETCH(QStringList, warnings);
    QFETCH(bool, readable);
    const QTemporaryDir folder;
    write_file(folder.filePath(u"NTUSER.DAT"_s), content);
    const hive_findings findings = check_hive_file(folder.filePath(u"NTUSER.DAT"_s));
    QCOMPARE(findings.warnings, warnings);
    QCOMPARE(findings.readable, readable);
}

void tst_hive_precheck::names_the_logs_beside_a_dirty_hive_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("advice");
    QTest::newRow("a single old log")
        << QStringList{u"NTUSER.DAT.LOG"_s} << u"the changes in NTUSER.DAT.LOG are not applied"_s;
    QTest::newRow("both logs in other letter case")
        << QStringList{u"ntuser.dat.LOG1"_s, u"NTUSER.dat.log2"_s}
        << u"the changes in NTUSER.dat.log2, ntuser.dat.LOG1 are not applied"_s;
    QTest::newRow("logs of another hive are not meant")
        << QStringList{u"USRCLASS.DAT.LOG1"_s, u"NTUSER.DAT.LOG3"_s}
        << u"no transaction log lies beside it"_s;
}

void tst_hive_precheck::names_the_logs_beside_a_dirty_hive()
{
    QFETCH(QStringList, files);
    QFETCH(QString, advice);
    const QTemporaryDir folder;
    write_file(folder.filePath(u"NTUSER.DAT"_s), dirty_hive_bytes());
    for (const QString &file : std::as_const(files))
        write_file(folder.filePath(file), "log");
    QCOMPARE(check_hive_file(folder.filePath(u"NTUSER.DAT"_s)).warnings,
             QStringList{out_of_date.arg(advice)});
}

void tst_hive_precheck::tells_what_is_no_file_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("warning");
    const auto not_regular = u"not a regular file, so it is not read"_s;
    QTest::newRow("absent file") << u"Users/none/NTUSER.DAT"_s << u"not found"_s;
    QTest::newRow("file in other letter case")
        << u"Users/ann/NTUSER.DAT"_s
        << u"not found, and Ntuser.dat beside it is not read: its letter case differs"_s;
    QTest::newRow("link to nowhere") << u"link"_s << u"not found: a link leads nowhere"_s;
    QTest::newRow("folder") << u"Users"_s << not_regular;
    QTest::newRow("named pipe") << u"pipe"_s << not_regular;
}

void tst_hive_precheck::tells_what_is_no_file()
{
    QFETCH(QString, path);
    QFETCH(QString, warning);
    evidence_volume volume;
    volume.file(u"Users/ann/Ntuser.dat"_s).link(u"link"_s, u"nowhere"_s).fifo(u"pipe"_s);
#ifdef Q_OS_MACOS
    if (path.contains("ann"_L1))
        QSKIP("the file system ignores letter case");
#endif
    const hive_findings findings = check_hive_file(volume.path(path));
    QCOMPARE(findings.warnings, QStringList{warning});
    QVERIFY(!findings.readable);
}

void tst_hive_precheck::looks_only_at_the_hives_that_the_tabs_read_data()
{
    QTest::addColumn<QStringList>("tabs");
    QTest::addColumn<QStringList>("warnings");
    const auto software = QStringList{u"Windows/System32/config/SOFTWARE: not found"_s,
                                      u"Windows/System32/config/RegBack/SOFTWARE: not found"_s};
    const auto users =
        QStringList{u"Users/ann/NTUSER.DAT: not found"_s, u"Users/bob/NTUSER.DAT: not found"_s};
    QTest::newRow("installed applications need all hives")
        << QStringList{u"install_apps_32"_s} << software + users;
    QTest::newRow("registered applications need the software hive")
        << QStringList{u"registered_apps"_s} << software;
    QTest::newRow("user assist entries need the users' hives")
        << QStringList{u"uninstall_apps"_s} << users;
    QTest::newRow("packages need no hive") << QStringList{u"metro_apps"_s} << QStringList();
    QTest::newRow("all tabs need all hives") << names_of(plugin_tabs()) << software + users;
}

void tst_hive_precheck::looks_only_at_the_hives_that_the_tabs_read()
{
    QFETCH(QStringList, tabs);
    QFETCH(QStringList, warnings);
    const evidence_volume volume;
    QCOMPARE(warnings_of(volume, {u"ann"_s, u"bob"_s}, tabs_named(plugin_tabs(), tabs)), warnings);
}

void tst_hive_precheck::looks_at_no_hive_of_a_user_for_the_machine_alone()
{
    const evidence_volume volume;
    const auto tabs =
        without_installations_of_users(tabs_named(plugin_tabs(), {u"install_apps_32"_s}));
    QCOMPARE(warnings_of(volume, {u"ann"_s}, tabs),
             (QStringList{u"Windows/System32/config/SOFTWARE: not found"_s,
                          u"Windows/System32/config/RegBack/SOFTWARE: not found"_s}));
}

void tst_hive_precheck::looks_at_the_backup_only_when_it_is_needed_data()
{
    QTest::addColumn<QByteArray>("software");
    QTest::addColumn<QByteArray>("backup");
    QTest::addColumn<QStringList>("warnings");
    const QByteArray hive = hive_bytes();
    // A good header, and no bin where the first one should be.
    const QByteArray hollow = altered(4096, "xxxx");
    const auto used = u"Windows/System32/config/RegBack/SOFTWARE: is read in place of the software "
                      "hive, which cannot be opened"_s;
    QTest::newRow("empty backup of a good hive is not mentioned")
        << hive << QByteArray() << QStringList();
    QTest::newRow("good backup of a good hive is not mentioned") << hive << hive << QStringList();
    QTest::newRow("backup of a hive that does not open is used")
        << hollow << hive << QStringList{used};
    QTest::newRow("empty backup of an empty hive is mentioned")
        << QByteArray() << QByteArray()
        << QStringList{
               u"Windows/System32/config/SOFTWARE: too short for a hive (0 bytes), so it is not read"_s,
               u"Windows/System32/config/RegBack/SOFTWARE: too short for a hive (0 bytes), so it is not read"_s};
}

void tst_hive_precheck::looks_at_the_backup_only_when_it_is_needed()
{
    QFETCH(QByteArray, software);
    QFETCH(QByteArray, backup);
    QFETCH(QStringList, warnings);
    evidence_volume volume;
    volume.file(u"Windows/System32/config/SOFTWARE"_s, software);
    volume.file(u"Windows/System32/config/RegBack/SOFTWARE"_s, backup);
    QCOMPARE(warnings_of(volume, {}, plugin_tabs()), warnings);
}

TEST_MAIN(tst_hive_precheck)

#include "tst_hive_precheck.moc"
