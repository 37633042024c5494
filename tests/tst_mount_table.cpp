#include "machine.h"
#include "mount_table.h"
#include "test_main.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

// Where a path lies on its file system, read from a table in the format of the system's own.
class tst_mount_table : public QObject
{
    Q_OBJECT

private slots:
    void tells_where_a_path_lies_data();
    void tells_where_a_path_lies();
    void knows_nothing_without_a_first_mount_data();
    void knows_nothing_without_a_first_mount();
    void begins_at_a_first_mount_that_is_its_own_parent();
    void lists_what_is_mounted_below_a_folder_data();
    void lists_what_is_mounted_below_a_folder();
    void doubts_the_roots_of_network_file_systems_data();
    void doubts_the_roots_of_network_file_systems();
    void tells_a_folder_from_what_lies_beside_it_data();
    void tells_a_folder_from_what_lies_beside_it();
    void reads_the_table_of_this_process();
};

namespace {

const QByteArray table =
    "21 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
    "22 21 8:2 / /mnt/image ro,nosuid shared:2 master:1 - ntfs3 /dev/loop0 ro\n"
    "23 21 8:2 /Users /mnt/bound rw - ntfs3 /dev/loop0 rw\n"
    "24 21 8:2 /Windows/System32/config/SYSTEM /case/debug.log rw - ntfs3 /dev/loop0 rw\n"
    "25 21 8:5 / /hidden/below rw - xfs /dev/sdb rw\n"
    "26 21 8:6 / /hidden rw - xfs /dev/sdc rw\n"
    "27 21 8:7 / /twice rw - tmpfs tmpfs rw\n"
    "28 27 8:8 / /twice rw - tmpfs tmpfs rw\n"
    "29 21 8:9 /a\\040b\\011c\\012d\\134e /m\\040n rw - ext4 /dev/sdd rw\n"
    "30 22 8:3 /data /mnt/image/nested rw - ext4 /dev/sde rw\n"
    "31 31 8:4 / /itself rw - ext4 /dev/sdf rw\n"
    "a line of another kind\n";

QByteArray text_of(const device_place &place)
{
    return place.device + ' ' + place.path;
}

} // namespace

void tst_mount_table::tells_where_a_path_lies_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("place");
    const auto row = [](const char *name, const char *path, const char *place) {
        QTest::newRow(name) << QByteArray(path) << QByteArray(place);
    };
    row("the root folder", "/", "8:1 ");
    row("a folder that nothing is mounted on", "/home/ann", "8:1 /home/ann");
    row("a mount point", "/mnt/image", "8:2 ");
    row("a mount point with a slash", "/mnt/image/", "8:2 ");
    row("a folder of a mounted file system", "/mnt/image/Users/ann", "8:2 /Users/ann");
    row("a folder whose name goes on after a mount point's", "/mnt/image2/x", "8:1 /mnt/image2/x");
    row("a bind mount of a folder", "/mnt/bound", "8:2 /Users");
    row("what lies in a bind mount", "/mnt/bound/ann/x", "8:2 /Users/ann/x");
    row("a bind mount of a file", "/case/debug.log", "8:2 /Windows/System32/config/SYSTEM");
    row("a file beside a bind mount", "/case/debug.log.1", "8:1 /case/debug.log.1");
    row("a mount within a mount", "/mnt/image/nested/x", "8:3 /data/x");
    row("what a later mount hides", "/hidden/below/x", "8:6 /below/x");
    row("a folder that was mounted on twice", "/twice/x", "8:8 /x");
    row("names with odd letters", "/m n/x", "8:9 /a b\tc\nd\\e/x");
    row("a mount that is its own parent", "/itself/x", "8:1 /itself/x");
}

void tst_mount_table::tells_where_a_path_lies()
{
    QFETCH(const QByteArray, path);
    const auto place = mount_table(table).place_of(path);
    QVERIFY(place);
    QTEST(text_of(*place), "place");
}

void tst_mount_table::knows_nothing_without_a_first_mount_data()
{
    QTest::addColumn<QByteArray>("mountinfo");
    QTest::newRow("no table") << QByteArray();
    QTest::newRow("a table without the root folder")
        << QByteArray("22 21 8:2 / /mnt/image ro - ntfs3 /dev/loop0 ro\n");
    QTest::newRow("a table of another kind") << QByteArray("/dev/sda1 / ext4 rw 0 0\n");
    QTest::newRow("a line that ends early") << QByteArray("21 1 8:1 / / rw\n");
}

void tst_mount_table::knows_nothing_without_a_first_mount()
{
    QFETCH(const QByteArray, mountinfo);
    QVERIFY(!mount_table(mountinfo).place_of("/mnt/image/x"));
}

void tst_mount_table::begins_at_a_first_mount_that_is_its_own_parent()
{
    const mount_table mounts("1 1 0:2 / / rw - rootfs rootfs rw\n"
                             "2 1 8:1 / / rw - ext4 /dev/sda1 rw\n");
    const auto place = mounts.place_of("/x");
    QVERIFY(place);
    QCOMPARE(text_of(*place), QByteArray("8:1 /x"));
}

void tst_mount_table::lists_what_is_mounted_below_a_folder_data()
{
    QTest::addColumn<QByteArray>("folder");
    QTest::addColumn<QByteArray>("places");
    QTest::newRow("a folder with mounts")
        << QByteArray("/mnt") << QByteArray("8:2 , 8:2 /Users, 8:3 /data");
    QTest::newRow("a mount point with a slash")
        << QByteArray("/mnt/image/") << QByteArray("8:3 /data");
    QTest::newRow("a folder without mounts") << QByteArray("/home") << QByteArray();
    QTest::newRow("a folder whose name begins a mount point's")
        << QByteArray("/mnt/im") << QByteArray();
}

void tst_mount_table::lists_what_is_mounted_below_a_folder()
{
    QFETCH(const QByteArray, folder);
    QByteArrayList places;
    for (const device_place &place : mount_table(table).places_mounted_below(folder))
        places.append(text_of(place));
    QTEST(places.join(", "), "places");
}

void tst_mount_table::doubts_the_roots_of_network_file_systems_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<bool>("is_certain");
    QTest::newRow("NFS") << QByteArray("nfs") << false;
    QTest::newRow("NFS of version 4") << QByteArray("nfs4") << false;
    QTest::newRow("a disk") << QByteArray("ext4") << true;
    QTest::newRow("a file system of a program") << QByteArray("fuseblk") << true;
}

void tst_mount_table::doubts_the_roots_of_network_file_systems()
{
    QFETCH(const QByteArray, type);
    const mount_table mounts("1 0 0:40 / / rw shared:1 - " + type + " server:/export rw\n");
    QTEST(mounts.place_of("/x")->is_certain, "is_certain");
}

void tst_mount_table::tells_a_folder_from_what_lies_beside_it_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<bool>("is_inside");
    QTest::newRow("the folder itself") << QByteArray("/a/b") << true;
    QTest::newRow("a folder in it") << QByteArray("/a/b/c") << true;
    QTest::newRow("a folder whose name goes on") << QByteArray("/a/bc") << false;
    QTest::newRow("the folder above") << QByteArray("/a") << false;
    QTest::newRow("the root folder") << QByteArray("") << false;
}

void tst_mount_table::tells_a_folder_from_what_lies_beside_it()
{
    QFETCH(const QByteArray, path);
    QTEST(is_at_or_below(path, "/a/b"), "is_inside");
    QVERIFY(is_at_or_below(path, ""));
}

void tst_mount_table::reads_the_table_of_this_process()
{
#ifdef Q_OS_LINUX
    if (const QString missing = test_support::missing_process_files(); !missing.isEmpty())
        QSKIP(qPrintable(missing));
    const QByteArray path = QFile::encodeName(QDir::temp().canonicalPath());
    const auto place = mount_table::of_this_process().place_of(path);
    QVERIFY(place);
    QVERIFY(place->device.contains(':'));
    QVERIFY(path.endsWith(place->path) || place->path.endsWith(path));
#else
    QVERIFY(!mount_table::of_this_process().place_of("/"));
#endif
}

TEST_MAIN(tst_mount_table)

#include "tst_mount_table.moc"
