#include "evidence_volume.h"
#include "files.h"
#include "host_process.h"
#include "machine.h"
#include "result_database.h"
#include "sample_evidence.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <filesystem>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// The reference host writes to no evidence that has a second name: a hard link, a bind mount, or a
// link that somebody puts in the place of its own files while it runs.
class tst_output_guard : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void refuses_files_with_other_names_data();
    void refuses_files_with_other_names();
    void refuses_links_into_the_source_beside_the_database_data();
    void refuses_links_into_the_source_beside_the_database();
    void takes_files_of_an_earlier_run();
    void takes_a_temporary_folder_that_links_lead_out_of();

    void refuses_places_in_a_working_directory_that_is_gone_data();
    void refuses_places_in_a_working_directory_that_is_gone();
    void takes_places_in_the_working_directory();

    void refuses_bind_mounts_of_the_source_data();
    void refuses_bind_mounts_of_the_source();
    void takes_bind_mounts_of_other_folders();

    void tells_of_results_that_are_exchanged_data();
    void tells_of_results_that_are_exchanged();
    void tells_of_a_debug_log_that_is_exchanged();

private:
    QString path(const QString &relative) const { return m_folder + u'/' + relative; }
    QString plugin_path(const QString &name) const;
    QStringList arguments() const;
    host_result run_with_mount(const QString &target, const QString &point) const;
    host_result run_with_exchange(const QString &path, const QString &target) const;

    std::unique_ptr<QTemporaryDir> m_temporary;
    std::unique_ptr<evidence_volume> m_volume;
    QString m_folder;
    QString m_source;
};

namespace {

const auto database_name = u"Windows_Installed_Applications.sqlite"_s;
const auto in_source =
    u"artifact_host: result folder %1 lies in the source, which is never written to"_s;
constexpr int mount_failed = 77;

/// Why nothing can be mounted here, or an empty text.
QString missing_for_mounts(const host_result &result)
{
    const bool is_refused =
        result.exit_code == mount_failed || result.errors.value(0).startsWith("unshare:"_L1);
    return is_refused ? result.errors.value(0) : QString();
}

} // namespace

void tst_output_guard::init()
{
    m_temporary = std::make_unique<QTemporaryDir>();
    m_folder = QFileInfo(m_temporary->path()).canonicalFilePath();
    m_volume = std::make_unique<evidence_volume>(path(u"case/volume"_s));
    add_sample_evidence(*m_volume);
    m_volume->write();
    m_source = path(u"case/volume"_s);
    make_folder(plugin_path(u"."_s));
}

QString tst_output_guard::plugin_path(const QString &name) const
{
    return path(u"results/Artifacts_Result/Windows_Installed_Applications/"_s + name);
}

QStringList tst_output_guard::arguments() const
{
    return {u"extract"_s,       m_source,         u"--quiet"_s,        u"--result"_s,
            path(u"results"_s), u"--debug-log"_s, path(u"debug.log"_s)};
}

void tst_output_guard::refuses_files_with_other_names_data()
{
    QTest::addColumn<QString>("name"); // beside the database, or the debug log
    QTest::newRow("the database") << database_name;
    QTest::newRow("its rollback journal") << database_name + u"-journal"_s;
    QTest::newRow("its write-ahead log") << database_name + u"-wal"_s;
    QTest::newRow("its shared memory") << database_name + u"-shm"_s;
    QTest::newRow("the run record") << u"run.json"_s;
    QTest::newRow("its lock") << u"run.lock"_s;
    QTest::newRow("the debug log") << u"debug.log"_s;
}

void tst_output_guard::refuses_files_with_other_names()
{
    if (const QString missing = missing_process_files(); !missing.isEmpty())
        QSKIP(qPrintable(missing));
    QFETCH(const QString, name);
    const QString place = name == "debug.log"_L1 ? path(name) : plugin_path(name);
    const QString evidence = m_volume->path(u"Users/empty"_s);
    m_volume->file(u"Users/empty"_s);
    std::filesystem::create_hard_link(evidence.toStdString(), place.toStdString());
    const QStringList before = volume_snapshot(m_folder);

    const host_result result = host_process().run(arguments());
    QCOMPARE(result.errors,
             QStringList{u"artifact_host: %1 is not written to: the same file has other names "
                         "(hard links), which may be evidence"_s.arg(place)});
    QCOMPARE(result.exit_code, 4);
    QCOMPARE(volume_snapshot(m_folder), before);

    // With its other name gone, the file is the examiner's own.
    QVERIFY(QFile::remove(evidence));
    if (name == "run.lock"_L1) // an empty one tells of no process
        QVERIFY(QFile::remove(place));
    QCOMPARE(host_process().run(arguments()).exit_code, 0);
}

void tst_output_guard::refuses_links_into_the_source_beside_the_database_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("the database") << database_name;
    QTest::newRow("its rollback journal") << database_name + u"-journal"_s;
    QTest::newRow("its write-ahead log") << database_name + u"-wal"_s;
    QTest::newRow("its shared memory") << database_name + u"-shm"_s;
    QTest::newRow("the run record") << u"run.json"_s;
    QTest::newRow("its lock") << u"run.lock"_s;
}

void tst_output_guard::refuses_links_into_the_source_beside_the_database()
{
    QFETCH(const QString, name);
    QVERIFY(QFile::link(m_volume->software_path(), plugin_path(name)));
    const QStringList before = volume_snapshot(m_folder);
    const host_result result = host_process().run(arguments());
    QCOMPARE(result.errors, QStringList{in_source.arg(path(u"results"_s))});
    QCOMPARE(result.exit_code, 4);
    QCOMPARE(volume_snapshot(m_folder), before);
}

void tst_output_guard::takes_files_of_an_earlier_run()
{
    QCOMPARE(host_process().run(arguments()).exit_code, 0);
    const host_result result = host_process().run(arguments());
    QCOMPARE(result.errors, QStringList());
    QCOMPARE(result.exit_code, 0);
}

// The links go with the temporary folder, what they lead to stays.
void tst_output_guard::takes_a_temporary_folder_that_links_lead_out_of()
{
    make_folder(plugin_path(u"tmp/deep"_s));
    QVERIFY(QFile::link(m_volume->path(u"Users"_s), plugin_path(u"tmp/deep/link"_s)));
    const QStringList before = volume_snapshot(m_source);
    QCOMPARE(host_process().run(arguments()).exit_code, 0);
    QVERIFY(!QFileInfo::exists(plugin_path(u"tmp"_s)));
    QCOMPARE(volume_snapshot(m_source), before);
}

void tst_output_guard::refuses_places_in_a_working_directory_that_is_gone_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("reason");
    QTest::newRow("the result folder")
        << u"--result"_s
        << u"the result folder cannot be found: the working directory does not exist any more"_s;
    QTest::newRow("the debug log")
        << u"--debug-log"_s
        << u"debug log new/x cannot be found: the working directory does not exist any more"_s;
}

void tst_output_guard::refuses_places_in_a_working_directory_that_is_gone()
{
    QFETCH(const QString, option);
    QFETCH(const QString, reason);
    make_folder(path(u"gone"_s));
    const host_result result =
        host_process()
            .under({u"sh"_s, u"-c"_s, u"cd \"$1\"; rmdir \"$1\"; shift; exec \"$@\""_s, u"sh"_s,
                    path(u"gone"_s)})
            .run(arguments() << option << u"new/x"_s);
    QCOMPARE(result.errors, QStringList{"artifact_host: "_L1 + reason});
    QCOMPARE(result.exit_code, 4);
}

void tst_output_guard::takes_places_in_the_working_directory()
{
    const host_result result =
        host_process()
            .under({u"sh"_s, u"-c"_s, u"cd \"$1\"; shift; exec \"$@\""_s, u"sh"_s, m_folder})
            .run({u"extract"_s, m_source, u"--quiet"_s, u"--result"_s, u"here"_s, u"--debug-log"_s,
                  u"here.log"_s});
    QCOMPARE(result.errors, QStringList());
    QCOMPARE(result.exit_code, 0);
    QVERIFY(QFileInfo::exists(path(u"here/Artifacts_Result"_s)));
    QVERIFY(QFileInfo(path(u"here.log"_s)).size() > 0);
}

/// Runs the host where `target` can also be reached at `point`, which nobody else sees.
host_result tst_output_guard::run_with_mount(const QString &target, const QString &point) const
{
    const QString script =
        u"mount --bind \"$1\" \"$2\" || exit %1; shift 2; exec \"$@\""_s.arg(mount_failed);
    return host_process()
        .under({u"unshare"_s, u"--map-root-user"_s, u"--mount"_s, u"sh"_s, u"-c"_s, script, u"sh"_s,
                target, point})
        .run(arguments());
}

void tst_output_guard::refuses_bind_mounts_of_the_source_data()
{
    // "tmp" stands for the temporary folder of the plug-in.
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("point");
    QTest::addColumn<bool>("is_log");
    QTest::newRow("the result folder shows the source")
        << u"case/volume"_s << u"results"_s << false;
    QTest::newRow("the result folder shows a folder of the source")
        << u"case/volume/Users"_s << u"results"_s << false;
    QTest::newRow("a folder below the result folder does")
        << u"case/volume/Users/ann"_s << u"results/Artifacts_Result"_s << false;
    QTest::newRow("a folder to be removed shows one of the source")
        << u"case/volume/Users"_s << u"tmp/deep"_s << false;
    QTest::newRow("a folder to be removed shows the one above the source")
        << u"case"_s << u"tmp/deep"_s << false;
    QTest::newRow("the debug log shows a hive")
        << u"case/volume/Windows/System32/config/SOFTWARE"_s << u"debug.log"_s << true;
}

void tst_output_guard::refuses_bind_mounts_of_the_source()
{
    if (QStandardPaths::findExecutable(u"unshare"_s).isEmpty())
        QSKIP("unshare is not installed, which mounts for one process alone");
    QFETCH(const QString, target);
    QFETCH(QString, point);
    QFETCH(const bool, is_log);
    point = point.startsWith("tmp"_L1) ? plugin_path(point) : path(point);
    write_file(path(u"debug.log"_s), {});
    make_folder(plugin_path(u"tmp/deep"_s));
    const QStringList before = volume_snapshot(m_source);

    const host_result result = run_with_mount(path(target), point);
    QCOMPARE(volume_snapshot(m_source), before);
    if (const QString missing = missing_for_mounts(result); !missing.isEmpty())
        QSKIP(qPrintable("This machine does not let the test mount anything: "_L1 + missing));
    const QString log_in_source =
        u"artifact_host: debug log %1 lies in the source, which is never written to"_s;
    QCOMPARE(result.errors,
             QStringList{is_log ? log_in_source.arg(point) : in_source.arg(path(u"results"_s))});
    QCOMPARE(result.exit_code, 4);
}

void tst_output_guard::takes_bind_mounts_of_other_folders()
{
    if (QStandardPaths::findExecutable(u"unshare"_s).isEmpty())
        QSKIP("unshare is not installed, which mounts for one process alone");
    make_folder(path(u"case/volume2"_s));
    const host_result result = run_with_mount(path(u"case/volume2"_s), path(u"results"_s));
    if (const QString missing = missing_for_mounts(result); !missing.isEmpty())
        QSKIP(qPrintable("This machine does not let the test mount anything: "_L1 + missing));
    QCOMPARE(result.errors, QStringList());
    QCOMPARE(result.exit_code, 0);
    QVERIFY(QFileInfo::exists(path(u"case/volume2/Artifacts_Result"_s)));
}

/// Runs the host with a plug-in that moves `path` away while it extracts and puts a link to
/// `target` in its place.
host_result tst_output_guard::run_with_exchange(const QString &path, const QString &target) const
{
    return host_process()
        .environment(u"RECORDING_PLUGIN_EXCHANGES"_s, path)
        .environment(u"RECORDING_PLUGIN_TARGET"_s, target)
        .run(arguments() << u"--plugin"_s << QStringLiteral(RECORDING_PLUGIN));
}

void tst_output_guard::tells_of_results_that_are_exchanged_data()
{
    QTest::addColumn<QString>("exchanged");
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("is_folder_noticed");
    QTest::newRow("the database by a link into the source")
        << u"results/Artifacts_Result/Recorded_Calls/Recorded_Calls.sqlite"_s
        << u"case/volume/Users/empty"_s << false;
    QTest::newRow("the database is removed")
        << u"results/Artifacts_Result/Recorded_Calls/Recorded_Calls.sqlite"_s << QString() << false;
    QTest::newRow("the folder by a link into the source")
        << u"results/Artifacts_Result/Recorded_Calls"_s << u"case/volume/Users"_s << true;
    QTest::newRow("the folder above by a link into the source")
        << u"results"_s << u"case/volume/Users"_s << true;
}

void tst_output_guard::tells_of_results_that_are_exchanged()
{
    QFETCH(const QString, exchanged);
    QFETCH(const QString, target);
    QFETCH(const bool, is_folder_noticed);
    m_volume->file(u"Users/empty"_s);
    const QString folder = path(u"results/Artifacts_Result/Recorded_Calls"_s);
    const host_result result =
        run_with_exchange(path(exchanged), target.isEmpty() ? target : path(target));
    const auto line = u"artifact_host: %1 %2 was exchanged or removed during the run, so what was "
                      "written may have gone elsewhere"_s;
    const QString noticed =
        is_folder_noticed ? line.arg(u"result folder"_s, folder)
                          : line.arg(u"result database"_s, folder + u"/Recorded_Calls.sqlite"_s);
    QCOMPARE(result.errors.filter(u"artifact_host: "_s), QStringList{noticed});
    QCOMPARE(result.output, QStringList());
    QCOMPARE(result.exit_code, 1);
}

void tst_output_guard::tells_of_a_debug_log_that_is_exchanged()
{
    const QString log = path(u"debug.log"_s);
    const host_result result = run_with_exchange(log, m_volume->software_path());
    QVERIFY(
        result.errors.contains(u"artifact_host: debug log %1 was exchanged or removed during "
                               "the run, so what was written may have gone elsewhere"_s.arg(log)));
    QCOMPARE(result.exit_code, 1);
}

TEST_MAIN(tst_output_guard)

#include "tst_output_guard.moc"
