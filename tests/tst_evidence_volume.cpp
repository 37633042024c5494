#include "evidence_volume.h"
#include "files.h"
#include "hive_reader.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

using change = void (*)(evidence_volume &);

class tst_evidence_volume : public QObject
{
    Q_OBJECT

private slots:
    void has_a_root_that_ends_in_a_slash();
    void removes_a_temporary_volume_with_the_object();
    void keeps_a_volume_in_a_given_folder();
    void writes_the_hives_at_their_places();
    void writes_no_hive_that_was_not_asked_for();
    void writes_hives_again_after_a_change();
    void notes_accounts_in_the_order_of_their_first_mention();
    void makes_package_folders_and_files();
    void takes_odd_account_names();
    void sets_modification_times();
    void throws_when_a_file_cannot_be_made();
    void tells_equal_volumes_from_altered_ones_data();
    void tells_equal_volumes_from_altered_ones();
    void describes_each_entry_in_its_line();
    void describes_names_of_invalid_utf8_and_pipes();
    void does_not_follow_links_in_a_snapshot();
};

void tst_evidence_volume::has_a_root_that_ends_in_a_slash()
{
    QVERIFY(evidence_volume().root().endsWith(u'/'));
    QTemporaryDir folder;
    const QString root = folder.path() + u'/';
    QCOMPARE(evidence_volume(folder.path()).root(), root);
    QCOMPARE(evidence_volume(root).root(), root);
}

void tst_evidence_volume::removes_a_temporary_volume_with_the_object()
{
    QString root;
    {
        evidence_volume volume;
        root = volume.root();
        volume.file(u"a/b"_s);
        QVERIFY(QFileInfo::exists(root));
    }
    QVERIFY(!QFileInfo::exists(root));
}

void tst_evidence_volume::keeps_a_volume_in_a_given_folder()
{
    QTemporaryDir folder;
    evidence_volume(folder.filePath(u"new/volume"_s)).file(u"a"_s, "content");
    QCOMPARE(read_file(folder.filePath(u"new/volume/a"_s)), "content"_ba);
}

void tst_evidence_volume::writes_the_hives_at_their_places()
{
    evidence_volume volume;
    volume.software().key(u"soft"_s);
    volume.reg_back_software().key(u"back"_s);
    volume.system().key(u"sys"_s);
    volume.user(u"ann"_s).key(u"user"_s);
    volume.hive(u"Users/ann/other.dat"_s).key(u"other"_s);
    volume.write();

    const auto first_key_of = [&volume](const QString &place) {
        return hive_reader(volume.path(place)).subkeys(u""_s);
    };
    QCOMPARE(first_key_of(u"Windows/System32/config/SOFTWARE"_s), QStringList{u"soft"_s});
    QCOMPARE(first_key_of(u"Windows/System32/config/RegBack/SOFTWARE"_s), QStringList{u"back"_s});
    QCOMPARE(first_key_of(u"Windows/System32/config/SYSTEM"_s), QStringList{u"sys"_s});
    QCOMPARE(first_key_of(u"Users/ann/NTUSER.DAT"_s), QStringList{u"user"_s});
    QCOMPARE(first_key_of(u"Users/ann/other.dat"_s), QStringList{u"other"_s});
    QCOMPARE(volume.software_path(), volume.root() + u"Windows/System32/config/SOFTWARE"_s);
    QCOMPARE(volume.reg_back_path(), volume.root() + u"Windows/System32/config/RegBack/SOFTWARE"_s);
    QCOMPARE(volume.system_path(), volume.root() + u"Windows/System32/config/SYSTEM"_s);
    QCOMPARE(volume.ntuser_path(u"ann"_s), volume.root() + u"Users/ann/NTUSER.DAT"_s);
}

void tst_evidence_volume::writes_no_hive_that_was_not_asked_for()
{
    evidence_volume volume;
    volume.write();
    QVERIFY(QDir(volume.root()).isEmpty());
}

void tst_evidence_volume::writes_hives_again_after_a_change()
{
    evidence_volume volume;
    volume.software().key(u"one"_s);
    volume.write();
    volume.software().key(u"two"_s);
    volume.write();
    QCOMPARE(hive_reader(volume.software_path()).subkeys(u""_s), (QStringList{u"one"_s, u"two"_s}));
}

void tst_evidence_volume::notes_accounts_in_the_order_of_their_first_mention()
{
    evidence_volume volume;
    volume.user(u"zoe"_s);
    volume.package(u"ann"_s, u"App"_s);
    volume.user(u"ann"_s);
    volume.user(u"zoe"_s);
    QCOMPARE(volume.accounts(), (QStringList{u"zoe"_s, u"ann"_s}));
}

void tst_evidence_volume::makes_package_folders_and_files()
{
    evidence_volume volume;
    volume.package(u"ann"_s, u"App_1"_s);
    volume.package(u"bob"_s, {});
    volume.file(u"Users/ann/AppData/Local/Packages/plain.txt"_s, "text");

    const QString packages = volume.packages_path(u"ann"_s);
    QCOMPARE(packages, volume.root() + u"Users/ann/AppData/Local/Packages/"_s);
    QVERIFY(QFileInfo(packages + u"App_1"_s).isDir());
    QCOMPARE(read_file(packages + u"plain.txt"_s), "text"_ba);
    QVERIFY(QDir(volume.packages_path(u"bob"_s)).exists());
    QVERIFY(QDir(volume.packages_path(u"bob"_s)).isEmpty());
}

void tst_evidence_volume::takes_odd_account_names()
{
    evidence_volume volume;
    for (const QString &name : {u"Jürgen"_s, u"Ольга П."_s, u" leading"_s, u"a b"_s})
        volume.user(name).key(name);
    volume.write();
    QCOMPARE(hive_reader(volume.ntuser_path(u"Ольга П."_s)).subkeys(u""_s),
             QStringList{u"Ольга П."_s});
}

void tst_evidence_volume::sets_modification_times()
{
    evidence_volume volume;
    volume.file(u"a/b.exe"_s, "MZ", 1234567890);
    QCOMPARE(QFileInfo(volume.path(u"a/b.exe"_s)).lastModified().toSecsSinceEpoch(), 1234567890);
}

void tst_evidence_volume::throws_when_a_file_cannot_be_made()
{
    evidence_volume volume;
    volume.file(u"file"_s);
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, volume.file(u"file/below"_s));
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, volume.folder(u"file/below"_s));
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, volume.link(u"file"_s, u"target"_s));
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, volume.fifo(u"file"_s));
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, volume.raw_folder("no/such/parent"));
}

void tst_evidence_volume::tells_equal_volumes_from_altered_ones_data()
{
    QTest::addColumn<change>("alter");
    QTest::addColumn<int>("changed_lines");
    const auto row = [](const char *name, change alter, int changed_lines) {
        QTest::newRow(name) << alter << changed_lines;
    };
    row(
        "nothing is altered", [](evidence_volume &) {}, 0);
    row(
        "a file is read", [](evidence_volume &volume) { read_file(volume.path(u"a/f"_s)); }, 0);
    row(
        "a byte is altered, the size and time are not",
        [](evidence_volume &volume) { volume.file(u"a/f"_s, "byteS", 1000); }, 1);
    row(
        "a time is altered",
        [](evidence_volume &volume) { set_modification_time(volume.path(u"a/f"_s), 1001); }, 1);
    row(
        "a mode is altered",
        [](evidence_volume &volume) {
            QFile::setPermissions(volume.path(u"a/f"_s), QFile::ReadOwner);
        },
        1);
    row(
        "a file is added with its folder's time",
        [](evidence_volume &volume) { volume.file(u"b/new"_s); }, 2);
    row(
        "a file is renamed with its folder's time",
        [](evidence_volume &volume) {
            QFile::rename(volume.path(u"a/f"_s), volume.path(u"a/g"_s));
        },
        2);
    row(
        "a file is removed with its folder's time",
        [](evidence_volume &volume) { QFile::remove(volume.path(u"a/f"_s)); }, 1);
}

void tst_evidence_volume::tells_equal_volumes_from_altered_ones()
{
    QFETCH(const change, alter);
    QFETCH(const int, changed_lines);
    evidence_volume volume;
    volume.file(u"a/f"_s, "bytes", 1000).folder(u"b"_s).link(u"b/l"_s, u"../a/f"_s);

    const QStringList before = volume_snapshot(volume.root());
    alter(volume);
    const QStringList after = volume_snapshot(volume.root());

    int changed = 0;
    for (const QString &line : after)
        changed += before.contains(line) ? 0 : 1;
    QCOMPARE(changed, changed_lines);
    QCOMPARE(after == before, changed_lines == 0);
}

void tst_evidence_volume::describes_each_entry_in_its_line()
{
    evidence_volume volume;
    volume.file(u"a b%"_s, "abc", 1000).link(u"l"_s, u"to/there"_s);
    QFile::setPermissions(volume.path(u"a b%"_s), QFile::ReadOwner | QFile::WriteOwner);

    const QStringList lines = volume_snapshot(volume.root());
    QCOMPARE(lines.size(), 3);
    QVERIFY(lines.at(0).startsWith(u". 40700 0 "_s));
    QCOMPARE(lines.at(1), u"a%20b%25 100600 3 1000000000000 "
                          "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"_s);
    QVERIFY(lines.at(2).startsWith(u"l 12"_s));
    QVERIFY(lines.at(2).endsWith(u" to/there"_s));
}

void tst_evidence_volume::describes_names_of_invalid_utf8_and_pipes()
{
    evidence_volume volume;
    volume.fifo(u"pipe"_s);
    try {
        volume.raw_folder("bad\xff");
    } catch (const std::runtime_error &) {
        QSKIP("the file system takes no names of invalid UTF-8");
    }
    const QStringList lines = volume_snapshot(volume.root());
    QCOMPARE(lines.size(), 3);
    QVERIFY(lines.at(1).startsWith(u"bad%FF 40"_s));
    QVERIFY(lines.at(2).startsWith(u"pipe 10"_s));
}

void tst_evidence_volume::does_not_follow_links_in_a_snapshot()
{
    evidence_volume outside;
    outside.file(u"secret"_s, "text");
    evidence_volume volume;
    volume.link(u"out"_s, outside.root()).link(u"loop"_s, u"."_s).link(u"dead"_s, u"nowhere"_s);
    QCOMPARE(volume_snapshot(volume.root()).size(), 4);
}

TEST_MAIN(tst_evidence_volume)
#include "tst_evidence_volume.moc"
