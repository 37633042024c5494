#include "files.h"
#include "hive_damage.h"
#include "host_test.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>
#include <csignal>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What run.json tells of the runs that wrote to a result folder.
class tst_run_record : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init() { begin_test(); }
    void tells_what_was_asked_for_and_by_what();
    void tells_what_was_read();
    void tells_the_state_of_hives_data();
    void tells_the_state_of_hives();
    void tells_how_long_hashing_took();
    void survives_a_full_disk_data();
    void survives_a_full_disk();
    void leaves_hashes_out_when_asked();
    void opens_nothing_that_is_no_regular_file();
    void tells_rows_and_seconds_of_each_tab();
    void keeps_one_entry_a_run();
    void tells_of_evidence_that_changes();
    void is_written_before_the_run();
    void shows_a_run_that_was_killed();
    void escapes_what_could_steer_a_terminal();
    void sets_aside_what_is_no_record_data();
    void sets_aside_what_is_no_record();
    void sets_aside_under_a_name_that_is_free();
    void sets_nothing_aside_for_a_run_that_is_refused();

private:
    QJsonObject file_entry(const QString &path) const;
    QString recorded_record_path() const;
};

namespace {

QString sha256_of(const QString &path)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(read_file(path), QCryptographicHash::Sha256).toHex());
}

QJsonArray tabs_of(const QJsonObject &run)
{
    return run.value("tabs"_L1).toArray();
}

} // namespace

/// What the last run tells of one file.
QJsonObject tst_run_record::file_entry(const QString &path) const
{
    for (const QJsonValue &file : last_run().value("files"_L1).toArray()) {
        if (file.toObject().value("path"_L1) == path)
            return file.toObject();
    }
    return {};
}

/// Where the plug-in that records calls has its results.
QString tst_run_record::recorded_record_path() const
{
    return result_path() + "/Artifacts_Result/Recorded_Calls/run.json"_L1;
}

void tst_run_record::tells_what_was_asked_for_and_by_what()
{
    const auto volume = small_volume();
    const QDateTime before = QDateTime::currentDateTimeUtc();
    const QStringList asked = arguments(
        volume->root(), {u"--quiet"_s, u"--user"_s, u"ann"_s, u"--tab"_s, u"metro_apps"_s});
    QCOMPARE(host_process().run(asked).exit_code, 0);
    const QJsonObject run = last_run();
    QCOMPARE(run.value("outcome"_L1), u"complete"_s);
    QCOMPARE(run.value("exit_code"_L1), 0);
    QCOMPARE(run.value("command_line"_L1).toArray(), QJsonArray::fromStringList(asked));
    QCOMPARE(run.value("options"_L1).toObject().value("tabs"_L1).toArray(),
             QJsonArray{u"metro_apps"_s});
    QCOMPARE(run.value("options"_L1).toObject().value("accounts"_L1).toArray(),
             QJsonArray{u"ann"_s});
    const QJsonObject source = run.value("source"_L1).toObject();
    QCOMPARE(source.value("given"_L1), volume->root());
    QCOMPARE(source.value("volume"_L1), QFileInfo(volume->root()).canonicalFilePath() + u'/');
    QCOMPARE(source.value("number"_L1), 1);

    for (const auto part : {"program"_L1, "library"_L1}) {
        const QJsonObject entry = run.value(part).toObject();
        QCOMPARE(entry.value("version"_L1), u"1.0.0"_s);
        QCOMPARE(entry.value("sha256"_L1), sha256_of(entry.value("file"_L1).toString()));
    }
    const auto time_of = [&run](QLatin1StringView name) {
        return QDateTime::fromString(run.value(name).toString(), Qt::ISODateWithMs);
    };
    QVERIFY(run.value("begin"_L1).toString().endsWith(u'Z'));
    QVERIFY(time_of("begin"_L1) >= before.addMSecs(-1) && time_of("end"_L1) >= time_of("begin"_L1));
    QVERIFY(time_of("end"_L1) <= QDateTime::currentDateTimeUtc());
}

void tst_run_record::tells_what_was_read()
{
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    QCOMPARE(last_run().value("files"_L1).toArray().size(), 2);
    for (const QString &path : {software_file, u"Users/ann/NTUSER.DAT"_s}) {
        const QJsonObject file = file_entry(path);
        const QFileInfo info(volume->path(path));
        QCOMPARE(file.value("size"_L1).toInteger(), info.size());
        QCOMPARE(file.value("modified"_L1),
                 info.lastModified().toUTC().toString(Qt::ISODateWithMs));
        QCOMPARE(file.value("sha256_before"_L1), sha256_of(info.filePath()));
        QCOMPARE(file.value("sha256_after"_L1), sha256_of(info.filePath()));
        QCOMPARE(file.value("state"_L1), u"clean"_s);
    }
    const QJsonArray folders = last_run().value("package_folders"_L1).toArray();
    QCOMPARE(folders.size(), 2);
    QCOMPARE(folders.at(0).toObject().value("path"_L1), u"Users/ann/AppData/Local/Packages"_s);
    QCOMPARE(folders.at(0).toObject().value("entries"_L1), 1);
    QCOMPARE(last_run().value("remarks"_L1).toArray(),
             QJsonArray{u"Users/bob/NTUSER.DAT: not found"_s});
    QCOMPARE(last_run().value("not_read"_L1).toArray(), QJsonArray());
}

void tst_run_record::tells_the_state_of_hives_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("state");
    QTest::addColumn<QJsonArray>("logs");
    hive_builder hive;
    fill_user(hive);
    const QByteArray dirty = hive_damage(hive.bytes()).sequence_numbers(7, 6).bytes();
    const QJsonArray logs{u"NTUSER.DAT.LOG2"_s};
    QTest::newRow("closed cleanly") << hive.bytes() << u"clean"_s << QJsonArray();
    QTest::newRow("not closed cleanly") << dirty << u"dirty"_s << logs;
    QTest::newRow("cut off") << hive.bytes().first(4096) << u"cut off, clean"_s << QJsonArray();
    QTest::newRow("cut off and not closed cleanly")
        << dirty.first(4096) << u"cut off, dirty"_s << logs;
    QTest::newRow("four bytes") << QByteArray("regf") << u"unreadable"_s << QJsonArray();
}

void tst_run_record::tells_the_state_of_hives()
{
    QFETCH(const QByteArray, content);
    const auto volume = small_volume();
    volume->file(u"Users/eve/NTUSER.DAT"_s, content);
    volume->file(u"Users/eve/NTUSER.DAT.LOG2"_s, "log");
    extract(*volume, {u"--quiet"_s});
    const QJsonObject file = file_entry(u"Users/eve/NTUSER.DAT"_s);
    QTEST(file.value("state"_L1).toString(), "state");
    QTEST(file.value("transaction_logs"_L1).toArray(), "logs");
    QCOMPARE(file.value("size"_L1).toInteger(), content.size());
}

void tst_run_record::survives_a_full_disk_data()
{
    QTest::addColumn<int>("free_pages");
    for (const int pages : {0, 1, 2, 3, 4, 6, 8})
        QTest::addRow("%d free pages", pages) << pages;
}

// Whatever fits: the record is the old one or a new one, and never a part of one.
void tst_run_record::survives_a_full_disk()
{
    QFETCH(const int, free_pages);
    if (QStandardPaths::findExecutable(u"unshare"_s).isEmpty())
        QSKIP("unshare is not installed, which mounts for one process alone");
    const auto volume = small_volume();
    make_folder(result_path());
    const QString kept = folder_path(u"kept.json"_s);
    constexpr int mount_failed = 77;
    const QString script =
        u"folder=$1; kept=$2; shift 2; mount -t tmpfs -o size=512k none \"$folder\" || exit %1; "
        "\"$@\" >/dev/null 2>&1; \"$@\" >/dev/null 2>&1; "
        "head -c %2 /dev/zero >\"$folder/room\"; cat /dev/zero >\"$folder/fill\" 2>/dev/null; "
        "rm \"$folder/room\"; \"$@\"; status=$?; cat \"$folder\"/*/*/run.json >\"$kept\"; exit $status"_s
            .arg(QString::number(mount_failed), QString::number(free_pages * 4096));
    const host_result result =
        host_process()
            .under({u"unshare"_s, u"--map-root-user"_s, u"--mount"_s, u"sh"_s, u"-c"_s, script,
                    u"sh"_s, result_path(), kept})
            .run(arguments(volume->root(), {u"--quiet"_s, u"--user"_s, u"ann"_s}));
    if (result.exit_code == mount_failed || result.errors.value(0).startsWith("unshare:"_L1))
        QSKIP("This machine does not let the test mount anything");
    const QJsonArray runs =
        QJsonDocument::fromJson(read_file(kept)).object().value("runs"_L1).toArray();
    QVERIFY2(runs.size() == 2 || runs.size() == 3, qPrintable(result.errors.join(u'\n')));
    QCOMPARE(runs.at(1).toObject().value("outcome"_L1), u"complete"_s);
    if (runs.size() == 2)
        QVERIFY(result.exit_code != 0);
}

void tst_run_record::tells_how_long_hashing_took()
{
    const auto volume = small_volume();
    static const QRegularExpression line(
        u"^artifact_host: SHA-256 of what was read, before and after: 4 files hashed in "
        "\\d+\\.\\d s, of which the run waited \\d+\\.\\d s$"_s);
    QVERIFY(line.match(extract(*volume).hashes_line).hasMatch());
}

void tst_run_record::leaves_hashes_out_when_asked()
{
    const auto volume = small_volume();
    const host_result result = extract(*volume, {u"--no-hashes"_s});
    QCOMPARE(result.exit_code, 0);
    QCOMPARE(result.hashes_line, QString());
    const QJsonObject file = file_entry(software_file);
    QCOMPARE(file.value("size"_L1).toInteger(), QFileInfo(volume->software_path()).size());
    QVERIFY(!file.contains("sha256_before"_L1) && !file.contains("sha256_after"_L1));
}

// Opening the pipe would wait for ever; the link leads to a file that is no evidence.
void tst_run_record::opens_nothing_that_is_no_regular_file()
{
    const auto volume = small_volume();
    const QString outside = folder_path(u"outside"_s);
    write_file(outside, "no evidence");
    volume->fifo(u"Users/eve/NTUSER.DAT"_s);
    volume->folder(u"Users/max/NTUSER.DAT"_s);
    volume->link(u"Users/zoe/NTUSER.DAT"_s, outside);
    extract(*volume, {u"--quiet"_s});
    QCOMPARE(file_entry(u"Users/eve/NTUSER.DAT"_s).value("failure"_L1), u"not a regular file"_s);
    QCOMPARE(file_entry(u"Users/max/NTUSER.DAT"_s).value("failure"_L1), u"not a regular file"_s);
    QCOMPARE(file_entry(u"Users/zoe/NTUSER.DAT"_s), QJsonObject());
    QVERIFY(!read_file(record_path()).contains(sha256_of(outside).toLatin1()));
}

void tst_run_record::tells_rows_and_seconds_of_each_tab()
{
    const auto volume = small_volume();
    QCOMPARE(extract(*volume, {u"--keep-rows"_s}).exit_code, 0);
    QCOMPARE(extract(*volume, {u"--keep-rows"_s}).exit_code, 0);
    QStringList told;
    for (const QJsonValue &value : tabs_of(last_run())) {
        const QJsonObject tab = value.toObject();
        told.append(
            u"%1 %2"_s.arg(tab.value("name"_L1).toString()).arg(tab.value("rows"_L1).toInt()));
        QVERIFY(tab.value("done"_L1).toBool());
        QVERIFY(tab.value("seconds"_L1).isDouble());
    }
    QStringList expected = small_volume_report.mid(0, small_volume_report.size() - 1);
    expected.replaceInStrings(QRegularExpression(u" +"_s), u" "_s);
    QCOMPARE(told, expected);
    QCOMPARE(last_run().value("rows"_L1), 11);
    QCOMPARE(last_run().value("rows_kept"_L1), 11);
}

void tst_run_record::keeps_one_entry_a_run()
{
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    const QJsonObject first = last_run();
    volume->file(u"Users/eve/NTUSER.DAT"_s, "regf");
    QCOMPARE(extract(*volume).exit_code, 6);
    QCOMPARE(recorded_runs().size(), 2);
    QCOMPARE(recorded_runs().first(), first);
    QCOMPARE(last_run().value("outcome"_L1), u"incomplete"_s);
    QCOMPARE(last_run().value("mode"_L1), u"again"_s);
}

void tst_run_record::tells_of_evidence_that_changes()
{
    const auto volume = small_volume();
    const host_result result =
        host_process()
            .environment(u"RECORDING_PLUGIN_EXCHANGES"_s, volume->ntuser_path(u"ann"_s))
            .environment(u"RECORDING_PLUGIN_TARGET"_s, volume->software_path())
            .run(arguments(volume->root(), recorded));
    QVERIFY(result.errors.contains(u"artifact_host: warning: Users/ann/NTUSER.DAT: was changed by "
                                   "somebody else during the run"_s));
    const QByteArray record = read_file(recorded_record_path());
    QVERIFY(record.contains("Users/ann/NTUSER.DAT: was changed by somebody else during the run"));
}

void tst_run_record::is_written_before_the_run()
{
    const auto volume = small_volume();
    host_process host;
    host.environment(u"RECORDING_PLUGIN"_s, u"until cancelled"_s);
    host.start(arguments(volume->root(), recorded));
    host.wait_for_error_line(u"call: pub_extract_artifacts()"_s);
    const QByteArray begun = read_file(recorded_record_path());
    QVERIFY(begun.contains("\"outcome\": \"running\""));
    QVERIFY(begun.contains("\"path\": \"Users/ann/NTUSER.DAT\""));
    host.send_signal(SIGINT);
    QCOMPARE(host.finish().exit_code, 130);
    QVERIFY(read_file(recorded_record_path()).contains("\"outcome\": \"cancelled\""));
}

void tst_run_record::shows_a_run_that_was_killed()
{
    const auto volume = small_volume();
    host_process host;
    host.environment(u"RECORDING_PLUGIN"_s, u"for ever"_s);
    host.start(arguments(volume->root(), recorded));
    host.wait_for_error_line(u"call: pub_extract_artifacts()"_s);
    host.send_signal(SIGKILL);
    host.finish();
    QVERIFY(read_file(recorded_record_path()).contains("\"outcome\": \"running\""));
    extract(*volume, recorded);
    const QByteArray record = read_file(recorded_record_path());
    QCOMPARE(record.count("\"outcome\": "), 2);
    QVERIFY(record.contains("\"outcome\": \"killed\""));
    QVERIFY(record.contains("\"outcome\": \"failed\"")); // this plug-in makes no database
}

void tst_run_record::escapes_what_could_steer_a_terminal()
{
    const auto volume = small_volume();
    const auto name = u"\x1b[2J\u202e\u009b\u2028\U000E0041\U0001F600eve\n\"}"_s;
    volume->file(u"Users/%1/NTUSER.DAT"_s.arg(name), "regf");
    QCOMPARE(extract(*volume, {u"--quiet"_s}).exit_code, 6);
    const QString text = QString::fromUtf8(read_file(record_path()));
    for (const QChar character : {u'\x1b', u'\u202e', u'\u009b', u'\u2028'})
        QVERIFY(!text.contains(character));
    QVERIFY(text.contains(u"\\u202e"_s));
    QVERIFY(text.contains(u"\\udb40\\udc41\U0001F600"_s));
    QCOMPARE(file_entry(u"Users/%1/NTUSER.DAT"_s.arg(name)).value("size"_L1), 4);
}

void tst_run_record::sets_aside_what_is_no_record_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no JSON") << QByteArray("\x1b[2J\0runs", 9);
    QTest::newRow("a record that was cut off") << QByteArray("{\"format\": 1, \"runs\": [{\"out");
    QTest::newRow("a list") << QByteArray("[]");
    QTest::newRow("another format") << QByteArray("{\"format\": 2, \"runs\": []}");
    QTest::newRow("no runs") << QByteArray("{\"format\": 1}");
    QTest::newRow("runs that are none") << QByteArray("{\"format\": 1, \"runs\": [{}, 7]}");
    QTest::newRow("lists without end") << QByteArray(100000, '[');
    const auto numbered = [](const QByteArray &number) {
        return "{\"format\": 1, \"runs\": [{\"source\": {\"number\": " + number + "}}]}";
    };
    for (const char *number : {"2000000000", "1000001", "0", "-7", "2.5", "1e300", "\"1\""})
        QTest::addRow("a source with the number %s", number) << numbered(number);
}

void tst_run_record::sets_aside_what_is_no_record()
{
    QFETCH(const QByteArray, content);
    const auto volume = small_volume();
    make_folder(QFileInfo(record_path()).path());
    write_file(record_path(), content);
    const host_result result = extract(*volume, {u"--quiet"_s, u"--user"_s, u"ann"_s});
    const QString aside = record_path() + ".damaged-1"_L1;
    QCOMPARE(
        result.errors,
        QStringList{u"artifact_host: the earlier run record cannot be continued (%1), and "
                    "is now %2"_s.arg(content.contains("number") ? u"it tells an impossible "
                                                                   "number of a source"_s
                                                                 : u"it is no record of runs"_s,
                                      aside)});
    QCOMPARE(result.exit_code, 0);
    QCOMPARE(read_file(aside), content);
    QCOMPARE(recorded_runs().size(), 1);
}

// A link, a pipe and a folder are set aside as they are: nothing of them is read.
void tst_run_record::sets_aside_under_a_name_that_is_free()
{
    const auto volume = small_volume();
    evidence_volume results(QFileInfo(record_path()).path());
    results.fifo(u"run.json"_s);
    QCOMPARE(extract(*volume).exit_code, 0);
    QVERIFY(QFile::remove(record_path()));
    results.folder(u"run.json"_s);
    QCOMPARE(extract(*volume, {u"--replace"_s}).exit_code, 0);
    QVERIFY(QFile::remove(record_path()));
    results.link(u"run.json"_s, u"elsewhere"_s);
    QCOMPARE(extract(*volume, {u"--replace"_s}).exit_code, 0);
    QVERIFY(!QFileInfo::exists(results.path(u"elsewhere"_s)));
    QVERIFY(QFileInfo(results.path(u"run.json.damaged-2"_s)).isDir());
    QVERIFY(QFileInfo(results.path(u"run.json.damaged-3"_s)).isSymLink());
    QCOMPARE(recorded_runs().size(), 1);
}

void tst_run_record::sets_nothing_aside_for_a_run_that_is_refused()
{
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    write_file(record_path(), "no record");
    const QStringList before = volume_snapshot(result_path());
    const host_result result = extract(*volume);
    QCOMPARE(result.exit_code, 4);
    QVERIFY(result.errors.last().contains(
        u"an unknown source (the run record cannot be read: it is no record of runs)"_s));
    QStringList after = volume_snapshot(result_path());
    // The lock has come and gone in the folder.
    QCOMPARE(after.filter(u"run"_s), before.filter(u"run"_s));
    QCOMPARE(after.size(), before.size());
}

TEST_MAIN(tst_run_record)
#include "tst_run_record.moc"
