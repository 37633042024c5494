#include "host_double.h"
#include "log_capture.h"
#include "result_database.h"
#include "sample_evidence.h"
#include "tab_rows.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QFile>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// Something stands where a hive should that is no regular file. Opening it could wait for ever;
// instead it is a hive that cannot be opened.
class tst_special_files : public QObject
{
    Q_OBJECT

private slots:
    void in_place_of_the_software_hive_data();
    void in_place_of_the_software_hive();
    void in_place_of_its_backup_copy_data();
    void in_place_of_its_backup_copy();
    void in_place_of_a_users_hive_data();
    void in_place_of_a_users_hive();
    void among_the_packages();
};

namespace {

using maker = void (*)(evidence_volume &, const QString &);

const QString software = u"Windows/System32/config/SOFTWARE"_s;
const QString backup = u"Windows/System32/config/RegBack/SOFTWARE"_s;

/// Bound under a short name and moved into place: socket addresses hold short paths only.
void make_socket(evidence_volume &volume, const QString &path)
{
    volume.file(path);
    QVERIFY(QFile::remove(volume.path(path)));
    const QTemporaryDir folder(u"/tmp/s-XXXXXX"_s);
    const QByteArray place = QFile::encodeName(folder.filePath(u"s"_s));
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    QVERIFY(size_t(place.size()) < sizeof address.sun_path);
    std::copy(place.cbegin(), place.cend(), address.sun_path);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    QCOMPARE(bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    close(descriptor);
    QCOMPARE(rename(place.constData(), QFile::encodeName(volume.path(path)).constData()), 0);
}

void add_maker_rows()
{
    QTest::addColumn<maker>("make");
    const auto add = [](const char *name, maker make) { QTest::newRow(name) << make; };
    add("a FIFO", [](evidence_volume &volume, const QString &path) { volume.fifo(path); });
    add("a socket", make_socket);
    add("a folder", [](evidence_volume &volume, const QString &path) { volume.folder(path); });
    add("a link to a device that never ends",
        [](evidence_volume &volume, const QString &path) { volume.link(path, u"/dev/zero"_s); });
    add("a link to a terminal",
        [](evidence_volume &volume, const QString &path) { volume.link(path, u"/dev/tty"_s); });
    add("a link to a FIFO", [](evidence_volume &volume, const QString &path) {
        volume.fifo(path + u".fifo"_s);
        volume.link(path, volume.path(path + u".fifo"_s));
    });
    add("a link to itself",
        [](evidence_volume &volume, const QString &path) { volume.link(path, volume.path(path)); });
    add("an empty file", [](evidence_volume &volume, const QString &path) { volume.file(path); });
}

/// The tables that got no rows, and that the volume stayed as it was.
void check_empty_tables(const evidence_volume &volume, const QStringList &empty_tables,
                        qint64 rows_elsewhere)
{
    const QStringList before = volume_snapshot(volume.root());
    const log_capture log;
    host_double host(volume);
    host.settings.general = log.general_info();
    host.run();

    const result_database database(host.database_path());
    for (const QString &table : all_tabs())
        QCOMPARE(database.row_count(table), empty_tables.contains(table) ? 0 : rows_elsewhere);
    QCOMPARE(log.messages().filter(u"FAILED"_s), QStringList());
    QCOMPARE(log.messages().last(), u"[pub_extract_artifacts] - END"_s);
    QCOMPARE(volume_snapshot(volume.root()), before);
}

QStringList software_tables()
{
    return tabs_read_from(artifact_input::software_hive);
}

/// The sample evidence without the hive at the path, in whose place something is made.
void write_all_but(evidence_volume &volume, const QString &path, maker make)
{
    volume.write();
    QFile::remove(volume.path(path));
    make(volume, path);
}

} // namespace

Q_DECLARE_METATYPE(maker)

void tst_special_files::in_place_of_the_software_hive_data()
{
    add_maker_rows();
}

void tst_special_files::in_place_of_the_software_hive()
{
    QFETCH(const maker, make);
    evidence_volume volume;
    add_sample_evidence(volume);
    write_all_but(volume, software, make);
    check_empty_tables(volume, software_tables(), sample_row_count);
}

// The hive itself is missing, so that the copy is tried.
void tst_special_files::in_place_of_its_backup_copy_data()
{
    add_maker_rows();
}

void tst_special_files::in_place_of_its_backup_copy()
{
    QFETCH(const maker, make);
    evidence_volume volume;
    add_sample_evidence(volume);
    write_all_but(volume, software, make);
    make(volume, backup);
    check_empty_tables(volume, software_tables(), sample_row_count);
}

void tst_special_files::in_place_of_a_users_hive_data()
{
    add_maker_rows();
}

// The other user's rows are there.
void tst_special_files::in_place_of_a_users_hive()
{
    QFETCH(const maker, make);
    evidence_volume volume;
    add_sample_evidence(volume);
    write_all_but(volume, u"Users/ann/NTUSER.DAT"_s, make);
    host_double host(volume);
    host.run();
    const result_database database(host.database_path());
    for (const QString &table : tabs_read_from(artifact_input::user_hives))
        QCOMPARE(database.column(table, u"system_account"_s), QStringList{u"bob"_s});
}

// Nothing is opened or followed; what is no file, folder or link to one gives no row.
void tst_special_files::among_the_packages()
{
    evidence_volume volume;
    const QString folder = u"Users/ann/AppData/Local/Packages/"_s;
    volume.package(u"ann"_s, u"App"_s);
    volume.fifo(folder + u"fifo"_s);
    volume.link(folder + u"loop"_s, volume.path(folder + u"loop"_s));
    volume.link(folder + u"up"_s, volume.root());
    make_socket(volume, folder + u"socket"_s);
    host_double host(volume);
    host.run();
    QStringList names =
        result_database(host.database_path()).column(u"metro_apps"_s, u"filename"_s);
    names.sort();
    QCOMPARE(names, (QStringList{u"App"_s, u"up"_s}));
}

TEST_MAIN(tst_special_files)
#include "tst_special_files.moc"
