#include "evidence_guard.h"
#include "evidence_volume.h"
#include "files.h"
#include "output_watch.h"
#include "test_main.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace evidence;

using kind = evidence_relation::kind;

// Whether a place to write to is part of the evidence, with tables of mounts that are made up, so
// that nothing has to be mounted for it.
class tst_evidence_guard : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void recognises_the_source_in_the_table_of_mounts_data();
    void recognises_the_source_in_the_table_of_mounts();
    void recognises_the_source_by_its_own_name_data();
    void recognises_the_source_by_its_own_name();
    void resolves_paths_data();
    void resolves_paths();
    void judges_several_places_by_the_worst();
    void looks_through_the_source_where_the_table_tells_nothing_data();
    void looks_through_the_source_where_the_table_tells_nothing();

    void finds_entries_anywhere_in_the_source_data();
    void finds_entries_anywhere_in_the_source();
    void follows_no_link_out_of_the_source();
    void tells_which_folder_could_not_be_listed();
    void tells_of_folders_below_the_longest_path();

    void notices_what_is_exchanged_data();
    void notices_what_is_exchanged();
    void watches_nothing_that_is_not_there();

private:
    QString place(const QString &relative) const { return m_folder + u'/' + relative; }
    QString source() const { return place(u"src/"_s); }
    mount_table mounts(QByteArray text) const;

    std::unique_ptr<QTemporaryDir> m_temporary;
    QString m_folder;
};

namespace {

file_identity identity_of(const QString &path)
{
    return facts_of(path)->identity;
}

void make_hard_link(const QString &target, const QString &path)
{
    std::filesystem::create_hard_link(target.toStdString(), path.toStdString());
}

} // namespace

void tst_evidence_guard::init()
{
    m_temporary = std::make_unique<QTemporaryDir>();
    m_folder = QFileInfo(m_temporary->path()).canonicalFilePath();
    make_folder(place(u"src/Users/ann"_s));
    make_folder(place(u"src/other"_s));
    make_folder(place(u"out/deep"_s));
    make_folder(place(u"src2"_s));
    write_file(place(u"src/Users/ann/NTUSER.DAT"_s), "hive");
}

/// "HERE" stands for the folder of the test.
mount_table tst_evidence_guard::mounts(QByteArray text) const
{
    return mount_table(text.replace("HERE", QFile::encodeName(m_folder)));
}

void tst_evidence_guard::recognises_the_source_in_the_table_of_mounts_data()
{
    QTest::addColumn<QByteArray>("more_mounts");
    QTest::addColumn<kind>("relation");
    const auto row = [](const char *name, const QByteArray &more_mounts, kind relation) {
        QTest::newRow(name) << more_mounts << relation;
    };
    row("one file system for all", {}, kind::apart);
    row("a bind mount of a folder of the source",
        "2 1 8:1 HERE/src/Users HERE/out rw - ext4 /dev/sda1 rw\n", kind::within);
    row("a bind mount of the source itself", "2 1 8:1 HERE/src HERE/out rw - ext4 /dev/sda1 rw\n",
        kind::within);
    row("a bind mount above the result folder",
        "2 1 8:1 HERE/src HERE/out/deep rw - ext4 /dev/sda1 rw\n", kind::within);
    row("another device mounted below a bind mount of the source",
        "2 1 8:1 HERE/src HERE/out rw - ext4 /dev/sda1 rw\n"
        "3 2 8:5 / HERE/out/deep rw - tmpfs tmpfs rw\n",
        kind::within);
    row("a bind mount of a folder with a longer name",
        "2 1 8:1 HERE/src2 HERE/out rw - ext4 /dev/sda1 rw\n", kind::apart);
    row("a bind mount of a folder above the source",
        "2 1 8:1 HERE HERE/out rw - ext4 /dev/sda1 rw\n", kind::apart);
    row("a folder of this name on another device",
        "2 1 8:2 HERE/src HERE/out rw - ext4 /dev/sdb1 rw\n", kind::apart);
    row("a source on a device of its own", "2 1 8:2 / HERE/src ro - ntfs3 /dev/loop0 ro\n",
        kind::apart);
    row("a second mount of the source's device",
        "2 1 8:2 /volume HERE/src ro - ntfs3 /dev/loop0 ro\n"
        "3 1 8:2 /volume/Users HERE/out rw - ntfs3 /dev/loop0 rw\n",
        kind::within);
    row("a second mount of another part of that",
        "2 1 8:2 /volume HERE/src ro - ntfs3 /dev/loop0 ro\n"
        "3 1 8:2 /results HERE/out rw - ntfs3 /dev/loop0 rw\n",
        kind::apart);
    row("a second mount of what is mounted in the source",
        "2 1 8:3 /data HERE/src/other ro - ext4 /dev/sdc ro\n"
        "3 1 8:3 /data/new HERE/out rw - ext4 /dev/sdc rw\n",
        kind::within);
    row("a second mount that shows more than the source",
        "2 1 8:3 /data HERE/src/other ro - ext4 /dev/sdc ro\n"
        "3 1 8:3 / HERE/out rw - ext4 /dev/sdc rw\n",
        kind::apart);
    // What a table of network mounts leaves open is looked up in the source: there is nothing.
    row("two network mounts of one server",
        "2 1 0:40 / HERE/src ro - nfs4 server:/e ro\n3 1 0:40 / HERE/out rw - nfs4 server:/e rw\n",
        kind::apart);
}

void tst_evidence_guard::recognises_the_source_in_the_table_of_mounts()
{
    QFETCH(const QByteArray, more_mounts);
    const mount_table table = mounts("1 0 8:1 / / rw shared:1 - ext4 /dev/sda1 rw\n" + more_mounts);
    const evidence_guard guard(source(), table);
    QTEST(guard.relation_of({place(u"out/deep/new/x"_s)}).is, "relation");
}

void tst_evidence_guard::recognises_the_source_by_its_own_name_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<kind>("relation");
    QTest::newRow("the source") << u"src"_s << kind::within;
    QTest::newRow("a new folder in the source") << u"src/new/x"_s << kind::within;
    QTest::newRow("a way back into the source") << u"out/../src/x"_s << kind::within;
    QTest::newRow("a link into the source") << u"link/x"_s << kind::within;
    QTest::newRow("a link to nowhere in the source") << u"dangling"_s << kind::within;
    QTest::newRow("a link to such a link") << u"link to dangling"_s << kind::within;
    QTest::newRow("a link to itself") << u"loop"_s << kind::apart;
    QTest::newRow("a folder beside the source") << u"out/x"_s << kind::apart;
    QTest::newRow("the folder above the source") << u""_s << kind::apart;
    QTest::newRow("a way out of the source") << u"src/../out"_s << kind::apart;
}

void tst_evidence_guard::recognises_the_source_by_its_own_name()
{
    QFETCH(const QString, path);
    QVERIFY(QFile::link(place(u"src/Users"_s), place(u"link"_s)));
    QVERIFY(QFile::link(place(u"src/nowhere"_s), place(u"dangling"_s)));
    QVERIFY(QFile::link(u"dangling"_s, place(u"link to dangling"_s)));
    QVERIFY(QFile::link(u"loop"_s, place(u"loop"_s)));
    QTEST(evidence_guard(source()).relation_of({place(path)}).is, "relation");
}

void tst_evidence_guard::resolves_paths_data()
{
    // "HERE" stands for the folder of the test.
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("resolved_path");
    QTest::addColumn<QString>("nearest");
    QTest::newRow("the root folder") << u"/"_s << u"/"_s << u"/"_s;
    QTest::newRow("a folder with a slash") << u"HERE/out/"_s << u"HERE/out"_s << u"HERE/out"_s;
    QTest::newRow("a new folder with a slash")
        << u"HERE/out/new/"_s << u"HERE/out/new"_s << u"HERE/out"_s;
    QTest::newRow("a link") << u"HERE/link/x"_s << u"HERE/out/x"_s << u"HERE/out"_s;
    QTest::newRow("a new folder of the root folder")
        << u"/no such folder/x"_s << u"/no such folder/x"_s << u"/"_s;
}

void tst_evidence_guard::resolves_paths()
{
    QVERIFY(QFile::link(place(u"out"_s), place(u"link"_s)));
    QFETCH(QString, path);
    QFETCH(QString, resolved_path);
    QFETCH(QString, nearest);
    QCOMPARE(resolved(path.replace("HERE"_L1, m_folder)),
             resolved_path.replace("HERE"_L1, m_folder));
    QCOMPARE(nearest_existing(resolved_path), nearest.replace("HERE"_L1, m_folder));
}

void tst_evidence_guard::judges_several_places_by_the_worst()
{
    const evidence_guard guard(source());
    QCOMPARE(guard.relation_of({place(u"out"_s), place(u"src/x"_s)}).is, kind::within);
    QCOMPARE(guard.relation_of({place(u"src/x"_s), place(u"out"_s)}).is, kind::within);
    QCOMPARE(guard.relation_of({place(u"out"_s), place(u"src2"_s)}).is, kind::apart);
}

void tst_evidence_guard::looks_through_the_source_where_the_table_tells_nothing_data()
{
    QTest::addColumn<QByteArray>("mountinfo");
    QTest::newRow("no table") << QByteArray();
    QTest::newRow("network mounts") << QByteArray("1 0 8:1 / / rw shared:1 - ext4 /dev/sda1 rw\n"
                                                  "2 1 0:40 / HERE/src ro - nfs server:/e ro\n"
                                                  "3 1 0:40 / HERE/out rw - nfs server:/e rw\n");
}

// Only a file can have a second name without a mount.
void tst_evidence_guard::looks_through_the_source_where_the_table_tells_nothing()
{
    QFETCH(const QByteArray, mountinfo);
    make_hard_link(place(u"src/Users/ann/NTUSER.DAT"_s), place(u"out/second"_s));
    write_file(place(u"out/own"_s), "log");
    const evidence_guard guard(source(), mounts(mountinfo));
    QCOMPARE(guard.relation_of({place(u"out/second"_s)}).is, kind::within);
    QCOMPARE(guard.relation_of({place(u"out"_s), place(u"out/second"_s)}).is, kind::within);
    QCOMPARE(guard.relation_of({place(u"out/own"_s)}).is, kind::apart);
    QCOMPARE(guard.relation_of({place(u"out"_s)}).is, kind::apart);
}

void tst_evidence_guard::finds_entries_anywhere_in_the_source_data()
{
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<bool>("files_too");
    QTest::addColumn<kind>("relation");
    QTest::newRow("a folder") << u"src/other"_s << false << kind::within;
    QTest::newRow("a folder further down") << u"src/Users/ann"_s << false << kind::within;
    QTest::newRow("a file") << u"src/Users/ann/NTUSER.DAT"_s << true << kind::within;
    QTest::newRow("a file while folders alone are looked at")
        << u"src/Users/ann/NTUSER.DAT"_s << false << kind::apart;
    QTest::newRow("a folder elsewhere") << u"out/deep"_s << true << kind::apart;
}

void tst_evidence_guard::finds_entries_anywhere_in_the_source()
{
    QFETCH(const QString, wanted);
    QFETCH(const bool, files_too);
    QTEST(look_through(source(), {identity_of(place(wanted))}, files_too).is, "relation");
}

void tst_evidence_guard::follows_no_link_out_of_the_source()
{
    QVERIFY(QFile::link(place(u"out"_s), place(u"src/other/link"_s)));
    QCOMPARE(look_through(source(), {identity_of(place(u"out"_s))}, true).is, kind::apart);
    QCOMPARE(look_through(source(), {identity_of(place(u"out/deep"_s))}, true).is, kind::apart);
}

void tst_evidence_guard::tells_which_folder_could_not_be_listed()
{
    const QString file = place(u"src/Users/ann/NTUSER.DAT"_s);
    const evidence_relation relation = look_through(file, {}, false);
    QCOMPARE(relation.is, kind::unknown);
    QCOMPARE(relation.hidden_folder, file);

    const evidence_guard guard(place(u"none/"_s), mount_table({}));
    QCOMPARE(guard.relation_of({place(u"out"_s)}).is, kind::unknown);
}

namespace {

/// Makes folders within folders until no path reaches the last one.
void make_folders_beyond_the_longest_path(const QString &path)
{
    const QByteArray name(200, 'd');
    int folder = open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY);
    for (int level = 0; level < 30; ++level) {
        QCOMPARE(mkdirat(folder, name.constData(), 0700), 0);
        const int next = openat(folder, name.constData(), O_RDONLY | O_DIRECTORY);
        close(folder);
        folder = next;
    }
    close(folder);
}

} // namespace

void tst_evidence_guard::tells_of_folders_below_the_longest_path()
{
    make_folders_beyond_the_longest_path(place(u"src/other"_s));
    const evidence_relation relation = look_through(source(), {}, false);
    QCOMPARE(relation.is, kind::unknown);
    QVERIFY(relation.hidden_folder.startsWith(place(u"src/other/ddd"_s)));
    // What was found before that still counts.
    QCOMPARE(look_through(source(), {identity_of(place(u"src/Users/ann"_s))}, false).is,
             kind::within);
    std::filesystem::remove_all(place(u"src/other"_s).toStdString());
}

void tst_evidence_guard::notices_what_is_exchanged_data()
{
    QTest::addColumn<QString>("exchanged");
    QTest::addColumn<QString>("by"); // "" removes it, "itself" puts it back
    QTest::addColumn<bool>("is_noticed");
    QTest::newRow("nothing") << u""_s << u""_s << false;
    QTest::newRow("a file by a link") << u"out/file"_s << u"src/Users/ann/NTUSER.DAT"_s << true;
    QTest::newRow("a file that is removed") << u"out/file"_s << u""_s << true;
    QTest::newRow("a file by a link to itself") << u"out/file"_s << u"itself"_s << false;
    QTest::newRow("the folder by a link") << u"out"_s << u"src/Users"_s << true;
    QTest::newRow("the folder by a link to itself") << u"out"_s << u"itself"_s << false;
}

void tst_evidence_guard::notices_what_is_exchanged()
{
    QFETCH(const QString, exchanged);
    QFETCH(const QString, by);
    write_file(place(u"out/file"_s), "rows");
    output_watch watch;
    watch.note(u"thing"_s, place(u"out/file"_s));
    const QString earlier = place(u"earlier"_s);
    if (!exchanged.isEmpty())
        QVERIFY(QFile::rename(place(exchanged), earlier));
    if (!by.isEmpty())
        QVERIFY(QFile::link(by == "itself"_L1 ? earlier : place(by), place(exchanged)));
    QFETCH(const bool, is_noticed);
    QCOMPARE(watch.problems(), is_noticed
                                   ? QStringList{u"thing %1 was exchanged or removed during the "
                                                 "run, so what was written may have gone "
                                                 "elsewhere"_s.arg(place(u"out/file"_s))}
                                   : QStringList());
}

void tst_evidence_guard::watches_nothing_that_is_not_there()
{
    output_watch watch;
    watch.note(u"thing"_s, place(u"out/file"_s));
    watch.note(u"no path"_s, QString());
    write_file(place(u"out/file"_s), "rows");
    QCOMPARE(watch.problems(), QStringList());
}

TEST_MAIN(tst_evidence_guard)

#include "tst_evidence_guard.moc"
