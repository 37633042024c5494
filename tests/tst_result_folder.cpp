#include "files.h"
#include "host_test.h"
#include "result_database.h"
#include "result_file.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>
#include <csignal>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// One run at a time in a result folder, and no results of different sources that nobody asked to
// mix.
class tst_result_folder : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init() { begin_test(); }

    void takes_one_run_at_a_time();
    void waits_for_another_run_when_asked();
    void takes_the_lock_of_a_dead_process_over();
    void tells_how_to_go_on_with_a_lock_of_nobody();
    void leaves_no_lock_behind();

    void refuses_another_source();
    void adds_another_source_with_the_next_number();
    void replaces_whatever_is_there();
    void replaces_a_database_that_is_garbage();
    void refuses_to_add_a_source_twice();
    void adds_a_source_twice_when_forced_data();
    void adds_a_source_twice_when_forced();
    void knows_a_source_by_its_hives();
    void knows_a_source_by_its_place_where_no_hive_tells();
    void knows_another_source_at_the_same_place_data();
    void knows_another_source_at_the_same_place();
    void refuses_results_of_another_version_data();
    void refuses_results_of_another_version();
    void refuses_results_of_an_unknown_source();
    void counts_on_behind_the_sources_of_a_database_without_a_record();
    void takes_a_database_without_rows();
    void clears_nothing_of_a_folder_with_several_sources();
    void fills_a_folder_in_which_a_run_left_no_rows();
    void adds_what_was_read_by_another_version_when_forced();
    void has_no_number_behind_the_last_one();
    void refuses_contradicting_options_data();
    void refuses_contradicting_options();

private:
    QString refusal_of(const QString &what, bool is_source_there = false) const;
    QStringList sources_of(const QString &table) const;
};

namespace {

/// As the small volume, with one more application.
std::unique_ptr<evidence_volume> other_volume()
{
    auto volume = std::make_unique<evidence_volume>();
    fill_software(volume->software());
    volume->software().key(u"Microsoft\\Windows\\CurrentVersion\\Uninstall\\Other"_s);
    volume->write();
    return volume;
}

QString root_of(const evidence_volume &volume)
{
    return QFileInfo(volume.root()).canonicalFilePath() + u'/';
}

/// The first line tells of no plug-in's call.
QString notice_of(const host_result &result)
{
    return result.errors.filter(u"artifact_host: "_s).value(0);
}

} // namespace

QString tst_result_folder::refusal_of(const QString &what, bool is_source_there) const
{
    return u"artifact_host: result folder %1 holds results of %2: %3, --replace makes the database "
           "anew"_s.arg(
               canonical_folder() + "/results"_L1, what,
               is_source_there
                   ? u"--add --force adds the rows of this source, which is among them, once more"_s
                   : u"--add adds the rows of this source to them"_s);
}

/// The names of the sources that rows of a table tell, with their numbers of rows.
QStringList tst_result_folder::sources_of(const QString &table) const
{
    QStringList sources;
    for (const QStringList &row :
         result_database(database_path())
             .query(u"SELECT source_count_name, COUNT(*) FROM %1 GROUP BY 1 "
                    "ORDER BY 1"_s.arg(table)))
        sources.append(row.join(u' '));
    return sources;
}

void tst_result_folder::takes_one_run_at_a_time()
{
    const auto volume = small_volume();
    host_process first;
    first.environment(u"RECORDING_PLUGIN"_s, u"until cancelled"_s);
    first.start(arguments(volume->root(), recorded));
    first.wait_for_error_line(u"call: pub_extract_artifacts()"_s);
    const QStringList before = volume_snapshot(result_path());

    const host_result second = extract(*volume, recorded + QStringList{u"--quiet"_s});
    QVERIFY2(notice_of(second).startsWith(
                 u"artifact_host: another run writes to this result folder: artifact_host, "_s),
             qPrintable(notice_of(second)));
    QVERIFY(!second.errors.contains(u"call: pub_set_essentials()"_s));
    QCOMPARE(second.exit_code, 4);
    QCOMPARE(volume_snapshot(result_path()), before);
    first.send_signal(SIGINT);
    QCOMPARE(first.finish().exit_code, 130);
}

void tst_result_folder::waits_for_another_run_when_asked()
{
    const auto volume = small_volume();
    host_process first;
    first.environment(u"RECORDING_PLUGIN"_s, u"until cancelled"_s);
    first.start(arguments(volume->root(), recorded));
    first.wait_for_error_line(u"call: pub_extract_artifacts()"_s);
    host_process second;
    second.start(arguments(volume->root(), recorded + QStringList{u"--wait"_s, u"600"_s}));
    second.wait_for_error_line(
        u"artifact_host: waiting up to 600 s for another run in this result folder"_s);
    first.send_signal(SIGINT);
    QCOMPARE(first.finish().exit_code, 130);
    QVERIFY(second.finish().errors.contains(u"call: pub_extract_artifacts()"_s));
}

void tst_result_folder::takes_the_lock_of_a_dead_process_over()
{
    const auto volume = small_volume();
    host_process killed;
    killed.environment(u"RECORDING_PLUGIN"_s, u"for ever"_s);
    killed.start(arguments(volume->root(), recorded));
    killed.wait_for_error_line(u"call: pub_extract_artifacts()"_s);
    killed.send_signal(SIGKILL);
    killed.finish();
    QVERIFY(QFileInfo::exists(result_path() + "/Artifacts_Result/Recorded_Calls/run.lock"_L1));
    QVERIFY(extract(*volume, recorded).errors.contains(u"call: pub_extract_artifacts()"_s));
}

void tst_result_folder::tells_how_to_go_on_with_a_lock_of_nobody()
{
    const auto volume = small_volume();
    const QString lock = QFileInfo(database_path()).path() + "/run.lock"_L1;
    make_folder(QFileInfo(lock).path());
    write_file(lock, "\x1b[2J");
    const host_result result = extract(*volume);
    QCOMPARE(result.errors, QStringList{u"artifact_host: another run may be writing to this result "
                                        "folder; if none is, remove %1"_s.arg(lock)});
    QCOMPARE(result.exit_code, 4);
    QVERIFY(QFile::remove(lock));
    QCOMPARE(extract(*volume).exit_code, 0);
}

void tst_result_folder::leaves_no_lock_behind()
{
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    QStringList left = QDir(QFileInfo(database_path()).path())
                           .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    left.sort();
    QCOMPARE(left, (QStringList{u"Windows_Installed_Applications.sqlite"_s, u"run.json"_s}));
}

void tst_result_folder::refuses_another_source()
{
    const auto volume = small_volume();
    const auto other = other_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    const QStringList before = volume_snapshot(QFileInfo(database_path()).path()).mid(1);
    const host_result result = extract(*other);
    QCOMPARE(result.errors.last(), refusal_of(u"another source, %1"_s.arg(root_of(*volume))));
    QCOMPARE(result.output, QStringList());
    QCOMPARE(result.exit_code, 4);
    QCOMPARE(volume_snapshot(QFileInfo(database_path()).path()).mid(1), before);
}

void tst_result_folder::adds_another_source_with_the_next_number()
{
    const auto volume = small_volume();
    const auto other = other_volume();
    QCOMPARE(extract(*volume, {u"--add"_s}).exit_code, 0);
    const host_result result = extract(*other, {u"--quiet"_s, u"--add"_s});
    QCOMPARE(result.exit_code, 0);
    // What the first run wrote is no result of the second.
    QCOMPARE(result.output.value(0), u"install_apps_64                    3"_s);
    QCOMPARE(result.output.value(4), u"metro_apps                         0"_s);
    QCOMPARE(sources_of(u"install_apps_64"_s), (QStringList{u"Source1 2"_s, u"Source2 3"_s}));
    QCOMPARE(sources_of(u"metro_apps"_s), QStringList{u"Source1 2"_s});
    QCOMPARE(last_run().value("source"_L1).toObject().value("number"_L1), 2);
}

void tst_result_folder::replaces_whatever_is_there()
{
    const auto volume = small_volume();
    const auto other = other_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    QCOMPARE(extract(*other, {u"--replace"_s, u"--tab"_s, u"install_apps_64"_s}).exit_code, 0);
    QCOMPARE(sources_of(u"install_apps_64"_s), QStringList{u"Source1 3"_s});
    QCOMPARE(sources_of(u"metro_apps"_s), QStringList()); // of the other source, and not selected
    QCOMPARE(recorded_runs().size(), 2);
    QCOMPARE(extract(*other).exit_code, 0); // the first source is out of the folder
    QCOMPARE(extract(*volume).exit_code, 4);
}

void tst_result_folder::replaces_a_database_that_is_garbage()
{
    const auto volume = small_volume();
    make_folder(QFileInfo(database_path()).path());
    write_file(database_path(), QByteArray(8192, 'x'));
    QCOMPARE(extract(*volume, {u"--replace"_s}).exit_code, 0);
    QCOMPARE(sources_of(u"metro_apps"_s), QStringList{u"Source1 2"_s});
}

void tst_result_folder::refuses_to_add_a_source_twice()
{
    const auto volume = small_volume();
    const auto other = other_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    QCOMPARE(extract(*other, {u"--add"_s}).exit_code, 0);
    const host_result result = extract(*other, {u"--add"_s});
    QCOMPARE(
        result.errors.last(),
        u"artifact_host: this source is Source2 of result folder %1 already; --force adds its rows once more"_s
            .arg(canonical_folder() + "/results"_L1));
    QCOMPARE(result.exit_code, 4);
    QCOMPARE(sources_of(u"install_apps_64"_s), (QStringList{u"Source1 2"_s, u"Source2 3"_s}));
}

void tst_result_folder::adds_a_source_twice_when_forced_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("added by force") << QStringList{u"--add"_s, u"--force"_s};
    QTest::newRow("rows kept") << QStringList{u"--keep-rows"_s};
}

void tst_result_folder::adds_a_source_twice_when_forced()
{
    QFETCH(const QStringList, options);
    const auto volume = small_volume();
    const auto other = other_volume();
    QCOMPARE(extract(*volume, options).exit_code, 0);
    QCOMPARE(extract(*other, options).exit_code, 0);
    QCOMPARE(extract(*volume, options).output.value(0), small_volume_report.first());
    QCOMPARE(sources_of(u"install_apps_64"_s), (QStringList{u"Source1 4"_s, u"Source2 3"_s}));
}

// The volume is mounted elsewhere; at its former place another one is mounted.
void tst_result_folder::knows_a_source_by_its_hives()
{
    evidence_volume place(folder_path(u"mnt"_s));
    fill_software(place.software());
    place.write();
    QCOMPARE(extract(place).exit_code, 0);
    QVERIFY(QDir().rename(folder_path(u"mnt"_s), folder_path(u"mnt2"_s)));
    const host_result moved = host_process().run(arguments(folder_path(u"mnt2"_s)));
    QCOMPARE(moved.exit_code, 0);
    QCOMPARE(sources_of(u"install_apps_64"_s), QStringList{u"Source1 2"_s});

    evidence_volume other(folder_path(u"mnt"_s));
    fill_software(other.software());
    other.software().key(u"Other"_s);
    other.write();
    const host_result result = extract(other);
    QCOMPARE(result.errors.last(),
             refusal_of(u"another source, %1/mnt/"_s.arg(canonical_folder())));
    QCOMPARE(result.exit_code, 4);
}

void tst_result_folder::knows_a_source_by_its_place_where_no_hive_tells()
{
    const auto volume = small_volume();
    const auto same = small_volume();
    QCOMPARE(extract(*volume, {u"--no-hashes"_s}).exit_code, 0);
    QCOMPARE(extract(*volume).exit_code, 0);
    QCOMPARE(extract(*same, {u"--no-hashes"_s}).exit_code, 4);
    // Four bytes of garbage are no sign that the source is the same.
    evidence_volume first;
    evidence_volume second;
    for (evidence_volume *each : {&first, &second})
        each->file(software_file, "regf").package(u"ann"_s, u"Weather"_s);
    QCOMPARE(extract(first, {u"--replace"_s}).exit_code, 6);
    QCOMPARE(extract(second).exit_code, 4);
}

void tst_result_folder::knows_another_source_at_the_same_place_data()
{
    QTest::addColumn<QStringList>("options"); // of both runs
    QTest::addColumn<QString>("package");     // of the other volume
    QTest::addColumn<QString>("account");
    const QStringList one_tab{u"--tab"_s, u"metro_apps"_s};
    QTest::newRow("hives without hashes")
        << QStringList{u"--no-hashes"_s} << u"Weather"_s << u"ann"_s;
    QTest::newRow("hives without hashes, then other tabs")
        << QStringList{u"--no-hashes"_s, u"--tab"_s, u"install_apps_64"_s} << u"Weather"_s
        << u"ann"_s;
    QTest::newRow("as many packages") << one_tab << u"Other"_s << u"ann"_s;
    QTest::newRow("the packages of another account") << one_tab << u"Weather"_s << u"eve"_s;
}

// A volume that is unmounted leaves its place to the next one.
void tst_result_folder::knows_another_source_at_the_same_place()
{
    QFETCH(const QStringList, options);
    QFETCH(const QString, package);
    QFETCH(const QString, account);
    const auto fill = [](evidence_volume &volume, const QString &name, const QString &packages) {
        fill_software(volume.software());
        volume.package(name, packages);
        volume.write();
    };
    evidence_volume first(folder_path(u"mnt"_s));
    fill(first, u"ann"_s, u"Weather"_s);
    QCOMPARE(extract(first, options).exit_code, 0);
    QCOMPARE(extract(first, options).exit_code, 0);
    QVERIFY(QDir().rename(folder_path(u"mnt"_s), folder_path(u"unmounted"_s)));

    evidence_volume second(folder_path(u"mnt"_s));
    fill(second, account, package);
    const host_result result = extract(second, options);
    QCOMPARE(result.errors.last(),
             refusal_of(u"another source, %1/mnt/"_s.arg(canonical_folder())));
    QCOMPARE(result.exit_code, 4);
    QCOMPARE(extract(second, {u"--tab"_s, u"metro_apps"_s}).exit_code, 4);
}

void tst_result_folder::refuses_results_of_another_version_data()
{
    QTest::addColumn<QByteArray>("before"); // where the version stands in the record
    QTest::addColumn<QString>("told");
    QTest::newRow("of the program")
        << QByteArray("artifact_host\",") << u"another version (program 0.9.0, library 1.0.0)"_s;
    QTest::newRow("of the library") << QByteArray("windows_installed_applications.so\",")
                                    << u"another version (program 1.0.0, library 0.9.0)"_s;
}

void tst_result_folder::refuses_results_of_another_version()
{
    QFETCH(QByteArray, before);
    QFETCH(const QString, told);
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
#ifdef Q_OS_MACOS
    before.replace(".so", ".dylib");
#endif
    QByteArray record = read_file(record_path());
    const qsizetype version = record.indexOf("1.0.0", record.indexOf(before));
    write_file(record_path(), record.replace(version, 5, "0.9.0"));
    const host_result result = extract(*volume);
    QCOMPARE(result.errors.last(), refusal_of(told, true));
    QCOMPARE(result.exit_code, 4);
    QCOMPARE(extract(*volume, {u"--replace"_s}).exit_code, 0);
}

void tst_result_folder::refuses_results_of_an_unknown_source()
{
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    QVERIFY(QFile::remove(record_path()));
    const host_result result = extract(*volume);
    QCOMPARE(result.errors.last(), refusal_of(u"an unknown source (no run record tells of it)"_s));
    QCOMPARE(result.exit_code, 4);
}

void tst_result_folder::counts_on_behind_the_sources_of_a_database_without_a_record()
{
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    QVERIFY(QFile::remove(record_path()));
    execute(database_path(), u"UPDATE uninstall_apps SET source_count_name = 'Source7'"_s);
    execute(database_path(), u"UPDATE metro_apps SET source_count_name = 'Source99999999999'"_s);
    QCOMPARE(extract(*volume, {u"--add"_s, u"--tab"_s, u"install_apps_64"_s}).exit_code, 0);
    QCOMPARE(sources_of(u"install_apps_64"_s), (QStringList{u"Source1 2"_s, u"Source8 2"_s}));
}

void tst_result_folder::takes_a_database_without_rows()
{
    const auto volume = small_volume();
    QCOMPARE(extract(*volume, {u"--tab"_s, u"metro_apps"_s}).exit_code, 0);
    QVERIFY(QFile::remove(record_path()));
    execute(database_path(), u"DELETE FROM metro_apps"_s);
    QCOMPARE(extract(*volume).exit_code, 0);
}

// Clearing the tabs would take the rows of the other source along.
void tst_result_folder::clears_nothing_of_a_folder_with_several_sources()
{
    const auto volume = small_volume();
    const auto other = other_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    QCOMPARE(extract(*other, {u"--add"_s}).exit_code, 0);
    for (const auto *each : {&volume, &other}) {
        const host_result result = extract(**each);
        const auto &stranger = each == &volume ? other : volume;
        QCOMPARE(result.errors.last(),
                 refusal_of(u"another source, %1"_s.arg(root_of(*stranger)), true));
        QCOMPARE(result.exit_code, 4);
        QCOMPARE(sources_of(u"install_apps_64"_s), (QStringList{u"Source1 2"_s, u"Source2 3"_s}));
    }
}

// As a failed or killed run of the wrong volume leaves it.
void tst_result_folder::fills_a_folder_in_which_a_run_left_no_rows()
{
    const auto volume = small_volume();
    const auto other = other_volume();
    QCOMPARE(extract(*volume, {u"--tab"_s, u"metro_apps"_s}).exit_code, 0);
    execute(database_path(), u"DELETE FROM metro_apps"_s);
    QCOMPARE(extract(*other).exit_code, 0);
    QCOMPARE(sources_of(u"install_apps_64"_s), QStringList{u"Source1 3"_s});
    QCOMPARE(last_run().value("mode"_L1), u"first"_s);
    QCOMPARE(extract(*volume).exit_code, 4);
}

void tst_result_folder::adds_what_was_read_by_another_version_when_forced()
{
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    write_file(record_path(), read_file(record_path()).replace("1.0.0", "0.9.0"));
    QCOMPARE(extract(*volume, {u"--add"_s}).exit_code, 4);
    QCOMPARE(extract(*volume, {u"--add"_s, u"--force"_s}).exit_code, 0);
    QCOMPARE(sources_of(u"install_apps_64"_s), QStringList{u"Source1 4"_s});
}

// Only somebody who forges a record or a database tells such a number.
void tst_result_folder::has_no_number_behind_the_last_one()
{
    const auto volume = small_volume();
    const auto other = other_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    execute(database_path(), u"UPDATE metro_apps SET source_count_name = 'Source1000000'"_s);
    const host_result result = extract(*other, {u"--add"_s});
    QVERIFY2(result.errors.last().contains(u" has no number left for another source"_s),
             qPrintable(result.errors.last()));
    QCOMPARE(result.exit_code, 4);
}

void tst_result_folder::refuses_contradicting_options_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("reason");
    const auto contradiction =
        u"--replace gives up the rows that --add and --keep-rows keep: give one of them"_s;
    const auto seconds = u"--wait takes whole seconds, up to 86400"_s;
    QTest::newRow("replace and add") << QStringList{u"--replace"_s, u"--add"_s} << contradiction;
    QTest::newRow("replace and keep")
        << QStringList{u"--replace"_s, u"--keep-rows"_s} << contradiction;
    QTest::newRow("force alone") << QStringList{u"--force"_s}
                                 << u"--force means nothing without --add"_s;
    QTest::newRow("a wait of no number") << QStringList{u"--wait"_s, u"long"_s} << seconds;
    QTest::newRow("a wait below 0") << QStringList{u"--wait=-1"_s} << seconds;
    QTest::newRow("a wait of years") << QStringList{u"--wait"_s, u"99999999"_s} << seconds;
}

void tst_result_folder::refuses_contradicting_options()
{
    QFETCH(const QStringList, options);
    QFETCH(const QString, reason);
    const auto volume = small_volume();
    const host_result result = extract(*volume, options);
    QCOMPARE(result.errors, QStringList{"artifact_host: "_L1 + reason});
    QCOMPARE(result.exit_code, 2);
    QVERIFY(!QFileInfo::exists(result_path()));
}

TEST_MAIN(tst_result_folder)
#include "tst_result_folder.moc"
