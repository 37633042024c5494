#include "files.h"
#include "host_test.h"
#include "result_database.h"
#include "result_file.h"
#include "test_main.h"

#include <QJsonArray>
#include <QStandardPaths>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// A result database that takes no rows is told of when that happens, and in one line.
class tst_database_trouble : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init() { begin_test(); }
    void refuses_a_locked_database_data();
    void refuses_a_locked_database();
    void waits_for_a_locked_database_when_asked();
    void refuses_a_database_of_a_newer_format();
    void ends_after_the_first_table_that_could_not_be_written_data();
    void ends_after_the_first_table_that_could_not_be_written();
    void shows_failures_as_they_come();
    void goes_on_where_a_table_lacks_some_rows();
    void ends_when_a_table_cannot_be_cleared();
    void tells_of_a_full_disk();
    void counts_no_rows_of_an_earlier_run();
};

namespace {

const auto refuse = u"create trigger refusal before insert on %1 begin select raise(abort, "
                    "'refused'); end"_s;
const auto forget = u"create trigger refusal before insert on %1 begin select raise(ignore); end"_s;
constexpr int mount_failed = 77;

} // namespace

void tst_database_trouble::refuses_a_locked_database_data()
{
    QTest::addColumn<QString>("lock");
    QTest::newRow("somebody writes") << u"begin immediate"_s;
    QTest::newRow("somebody keeps all others out") << u"begin exclusive"_s;
    QTest::newRow("somebody reads") << u"begin; select * from metro_apps"_s;
}

void tst_database_trouble::refuses_a_locked_database()
{
    QFETCH(const QString, lock);
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    const QByteArray record = read_file(record_path());
    const sqlite_connection other(database_path());
    for (const QString &statement : lock.split(u"; "_s))
        execute(other.database, statement);
    const host_result result = extract(*volume);
    QCOMPARE(result.errors,
             QStringList{u"artifact_host: the result database %1 is locked by another "
                         "program; --wait SECONDS waits for it"_s.arg(database_path())});
    QCOMPARE(result.exit_code, 4);
    QCOMPARE(read_file(record_path()), record);
}

void tst_database_trouble::waits_for_a_locked_database_when_asked()
{
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    host_process host;
    {
        const sqlite_connection other(database_path());
        execute(other.database, u"begin exclusive"_s);
        host.start(arguments(volume->root(), {u"--wait"_s, u"600"_s}));
        host.wait_for_error_line(
            u"artifact_host: waiting up to 600 s for the result database, which is locked"_s);
    }
    QCOMPARE(host.finish().exit_code, 0);
}

void tst_database_trouble::refuses_a_database_of_a_newer_format()
{
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    make_read_only(database_path());
    const host_result result = extract(*volume);
    QCOMPARE(result.errors.size(), 1);
    QVERIFY(result.errors.first().contains(u" cannot be used: "_s));
    QCOMPARE(result.exit_code, 4);
}

void tst_database_trouble::ends_after_the_first_table_that_could_not_be_written_data()
{
    QTest::addColumn<QString>("statement");
    QTest::addColumn<QString>("reason");
    QTest::newRow("each row fails")
        << refuse.arg("uninstall_apps"_L1) << u"refused Unable to fetch row"_s;
    QTest::newRow("no row stays, and nothing is said")
        << forget.arg("uninstall_apps"_L1) << u"the database took its rows and did not keep them"_s;
}

void tst_database_trouble::ends_after_the_first_table_that_could_not_be_written()
{
    QFETCH(const QString, statement);
    QFETCH(const QString, reason);
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    execute(database_path(), statement);
    const host_result result = extract(*volume, {u"--quiet"_s, u"--user"_s, u"ann"_s});
    QCOMPARE(
        result.errors,
        QStringList{u"artifact_host: the table uninstall_apps could not be written, so the run "
                    "was ended: "_s +
                    reason});
    QCOMPARE(result.exit_code, 1);
    QCOMPARE(result.output.first(3), (QStringList{u"install_apps_64                    2"_s,
                                                  u"install_apps_32                    1"_s,
                                                  u"uninstall_apps                     0"_s}));
    QCOMPARE(total_line(result), u"total                              3"_s);
    QCOMPARE(result_database(database_path()).row_count(u"metro_apps"_s), 0);

    const QJsonObject run = last_run();
    QCOMPARE(run.value("outcome"_L1), u"failed"_s);
    QCOMPARE(run.value("problems"_L1).toArray().size(), 1);
    const QJsonArray tabs = run.value("tabs"_L1).toArray();
    QVERIFY(tabs.at(1).toObject().value("done"_L1).toBool());
    for (int tab = 2; tab < tabs.size(); ++tab)
        QVERIFY(!tabs.at(tab).toObject().value("done"_L1).toBool());
}

void tst_database_trouble::shows_failures_as_they_come()
{
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    execute(database_path(), refuse.arg("install_apps_32"_L1));
    QCOMPARE(extract(*volume, {u"--user"_s, u"ann"_s}).errors.first(4),
             (QStringList{progress_line(0, 0), progress_line(1, 2),
                          progress_line(1, 2) + ", 1 failures"_L1,
                          progress_line(2, 2) + ", 1 failures"_L1}));
}

void tst_database_trouble::goes_on_where_a_table_lacks_some_rows()
{
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    execute(database_path(),
            u"create trigger refusal before insert on metro_apps when new.filename = 'Weather' "
            "begin select raise(abort, 'refused'); end"_s);
    const host_result result = extract(*volume, {u"--quiet"_s});
    QVERIFY2(result.errors.last().startsWith(
                 u"artifact_host: failures reported by the plug-in: 1, the first: "_s),
             qPrintable(result.errors.last()));
    QVERIFY(result.errors.last().contains(u": refused "_s));
    QCOMPARE(result.exit_code, 1);
    QCOMPARE(result.output.value(4), u"metro_apps                         1"_s);
    QCOMPARE(total_line(result), u"total                             10"_s);
}

void tst_database_trouble::ends_when_a_table_cannot_be_cleared()
{
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    execute(database_path(), u"create trigger refusal before delete on metro_apps begin select "
                             "raise(abort, 'kept'); end"_s);
    const host_result result = extract(*volume, {u"--quiet"_s});
    QCOMPARE(result.errors.last(),
             u"artifact_host: the result tables cannot be cleared: kept Unable to fetch row"_s);
    QCOMPARE(result.output.value(4), u"metro_apps                         0"_s);
    QCOMPARE(total_line(result), u"total                              0"_s);
    QCOMPARE(result.exit_code, 1);
}

void tst_database_trouble::tells_of_a_full_disk()
{
    if (QStandardPaths::findExecutable(u"unshare"_s).isEmpty())
        QSKIP("unshare is not installed, which mounts for one process alone");
    const auto volume = small_volume();
    make_folder(result_path());
    const QString script =
        u"mount -t tmpfs -o size=32k none \"$1\" || exit %1; shift 1; exec \"$@\""_s.arg(
            mount_failed);
    const host_result result =
        host_process()
            .under({u"unshare"_s, u"--map-root-user"_s, u"--mount"_s, u"sh"_s, u"-c"_s, script,
                    u"sh"_s, result_path()})
            .run(arguments(volume->root(), {u"--quiet"_s, u"--user"_s, u"ann"_s}));
    if (result.exit_code == mount_failed || result.errors.value(0).startsWith("unshare:"_L1))
        QSKIP("This machine does not let the test mount anything");
    QCOMPARE(
        result.errors.first(),
        u"artifact_host: the result tables cannot be made: the database stayed empty; the disk "
        "of the result folder is full"_s);
    QCOMPARE(result.exit_code, 1);
}

// The rows of the first source stay where those of the second cannot be written.
void tst_database_trouble::counts_no_rows_of_an_earlier_run()
{
    const auto volume = small_volume();
    evidence_volume other;
    fill_software(other.software());
    other.write();
    QCOMPARE(extract(*volume).exit_code, 0);
    execute(database_path(), refuse.arg("install_apps_64"_L1));
    const host_result result = extract(other, {u"--quiet"_s, u"--add"_s, u"--force"_s});
    QCOMPARE(result.output.value(0), u"install_apps_64                    0"_s);
    QCOMPARE(total_line(result), u"total                              0"_s);
    QCOMPARE(last_run().value("rows_kept"_L1), 11);
    QCOMPARE(result.exit_code, 1);
}

TEST_MAIN(tst_database_trouble)
#include "tst_database_trouble.moc"
