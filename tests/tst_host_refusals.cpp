#include "files.h"
#include "host_double.h"
#include "host_test.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

/// The text with the paths of the source and of the folder in place of their placeholders.
QString filled(QString text, const QString &source, const QString &folder)
{
    return text.replace("%SRC"_L1, source).replace("%TMP"_L1, folder);
}

} // namespace

// What the program refuses to read, to write and to load.
class tst_host_refusals : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init() { begin_test(); }
    void refuses_wrong_use_data();
    void refuses_wrong_use();
    void refuses_a_source_that_cannot_be_read_data();
    void refuses_a_source_that_cannot_be_read();
    void refuses_a_source_without_permission();
    void refuses_results_that_cannot_be_written_data();
    void refuses_results_that_cannot_be_written();
    void refuses_results_without_permission_data();
    void refuses_results_without_permission();
    void refuses_to_remove_the_source_with_the_temporary_folder();
    void refuses_a_library_that_is_no_plug_in_data();
    void refuses_a_library_that_is_no_plug_in();
};

void tst_host_refusals::refuses_wrong_use_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("reason");
    const QStringList right{u"extract"_s, u"%SRC"_s, u"--result"_s, u"%TMP/results"_s};
    const auto no_account =
        u"\"%1\" is no account name: give the name of a folder in SOURCE/Users"_s;
    QTest::newRow("no command") << QStringList() << u"no command given; see artifact_host --help"_s;
    QTest::newRow("unknown command")
        << QStringList{u"frob"_s} << u"unknown command \"frob\"; see artifact_host --help"_s;
    QTest::newRow("no source") << QStringList{u"extract"_s, u"--result"_s, u"%TMP/results"_s}
                               << u"extract takes one SOURCE, but 0 were given"_s;
    QTest::newRow("two sources") << right + QStringList{u"%SRC"_s}
                                 << u"extract takes one SOURCE, but 2 were given"_s;
    QTest::newRow("no result folder")
        << QStringList{u"extract"_s, u"%SRC"_s} << u"extract needs a result folder: --result DIR"_s;
    QTest::newRow("empty result folder") << QStringList{u"extract"_s, u"%SRC"_s, u"--result"_s, {}}
                                         << u"--result was given an empty path"_s;
    QTest::newRow("empty debug log")
        << right + QStringList{u"--debug-log"_s, {}} << u"--debug-log was given an empty path"_s;
    QTest::newRow("empty plug-in")
        << right + QStringList{u"--plugin="_s} << u"--plugin was given an empty path"_s;
    QTest::newRow("unknown option")
        << right + QStringList{u"--frob"_s} << u"Unknown option 'frob'."_s;
    QTest::newRow("option without value")
        << right + QStringList{u"--tab"_s} << u"Missing value after '--tab'."_s;
    QTest::newRow("unknown tab") << right + QStringList{u"--tab"_s, u"Metro_Apps"_s}
                                 << u"unknown tab \"Metro_Apps\"; the tabs are %1"_s.arg(
                                        all_tabs().join(", "_L1));
    QTest::newRow("account without a name")
        << right + QStringList{u"--user="_s} << no_account.arg(QString());
    QTest::newRow("account that is this folder")
        << right + QStringList{u"--user"_s, u"."_s} << no_account.arg("."_L1);
    QTest::newRow("account that is the folder above")
        << right + QStringList{u"--user"_s, u".."_s} << no_account.arg(".."_L1);
    QTest::newRow("account that is a path")
        << right + QStringList{u"--user"_s, u"../ann"_s} << no_account.arg("../ann"_L1);
    QTest::newRow("account with a control character")
        << right + QStringList{u"--user"_s, u"\x1b[2J/"_s} << no_account.arg("\\x1b[2J/"_L1);
}

void tst_host_refusals::refuses_wrong_use()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, reason);
    const auto volume = small_volume();
    for (QString &argument : arguments)
        argument = filled(argument, volume->root(), folder());
    const host_result result = host_process().run(arguments);
    QCOMPARE(result.errors, QStringList{"artifact_host: "_L1 + reason});
    QCOMPARE(result.output, QStringList());
    QCOMPARE(result.exit_code, 2);
    QVERIFY(QDir(folder()).isEmpty());
}

void tst_host_refusals::refuses_a_source_that_cannot_be_read_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no such folder") << u"%SRCnone"_s << u"source %SRCnone does not exist"_s;
    QTest::newRow("empty path") << QString() << u"source  does not exist"_s;
    QTest::newRow("hive instead of its volume")
        << u"%SRC%1"_s.arg(software_file)
        << u"source %SRC%1 is no folder: it is a registry hive; give the folder of the volume that it belongs to"_s
               .arg(software_file);
    QTest::newRow("folder that is no Windows volume")
        << u"%SRCUsers"_s
        << u"source %SRCUsers/ holds nothing to read: no %1 and no account in Users"_s.arg(
               software_file);
}

void tst_host_refusals::refuses_a_source_that_cannot_be_read()
{
    QFETCH(QString, source);
    QFETCH(QString, reason);
    const auto volume = small_volume();
    const QString root = QFileInfo(volume->root()).canonicalFilePath() + u'/';
    const host_result result = host_process().run(arguments(filled(source, root, folder())));
    QCOMPARE(result.errors.last(), "artifact_host: "_L1 + filled(reason, root, folder()));
    QCOMPARE(result.exit_code, 3);
    QVERIFY(QDir(folder()).isEmpty());
}

void tst_host_refusals::refuses_a_source_without_permission()
{
    const auto volume = small_volume();
    const QString closed = volume->path(u"Users/ann"_s);
    QVERIFY(QFile::setPermissions(closed, {}));
    const host_result result = host_process().without_privileges().run(arguments(closed));
    QVERIFY(QFile::setPermissions(closed, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QCOMPARE(result.errors, QStringList{u"artifact_host: source %1 cannot be read"_s.arg(closed)});
    QCOMPARE(result.exit_code, 3);
}

void tst_host_refusals::refuses_results_that_cannot_be_written_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("reason");
    const auto in_source = u"result folder %1 lies in the source, which is never written to"_s;
    const auto result = [](const QString &path) { return QStringList{u"--result"_s, path}; };
    const auto log = [](const QString &path) {
        return QStringList{u"--result"_s, u"%TMP/ended"_s, u"--debug-log"_s, path};
    };
    QTest::newRow("the source itself") << result(u"%SRC"_s) << in_source.arg("%SRC"_L1);
    QTest::newRow("a folder of the source")
        << result(u"%SRC/Users"_s) << in_source.arg("%SRC/Users"_L1);
    QTest::newRow("a new folder in the source")
        << result(u"%SRC/new/deep"_s) << in_source.arg("%SRC/new/deep"_L1);
    QTest::newRow("a way back into the source")
        << result(u"%SRC/../new/..%BASE/x"_s) << in_source.arg("%SRC/x"_L1);
    QTest::newRow("a link into the source")
        << result(u"%TMP/link/x"_s) << in_source.arg("%SRC/Users/x"_L1);
    QTest::newRow("a link into the source below the result folder")
        << result(u"%TMP/linked"_s) << in_source.arg("%TMP/linked"_L1);
    QTest::newRow("a temporary folder that is a link into the source")
        << result(u"%TMP/temporary"_s) << in_source.arg("%TMP/temporary"_L1);
    QTest::newRow("a file") << result(u"%TMP/file"_s)
                            << u"result folder %TMP/file cannot be made: %TMP/file is no folder"_s;
    QTest::newRow("a folder below a file")
        << result(u"%TMP/file/x"_s)
        << u"result folder %TMP/file/x cannot be made: %TMP/file is no folder"_s;
    QTest::newRow("a database that is a folder")
        << result(u"%TMP/taken"_s)
        << u"result folder %TMP/taken cannot be written to: %TMP/taken/%DB is not writable"_s;
    QTest::newRow("a database that is a link to nowhere")
        << result(u"%TMP/dangling"_s)
        << u"result folder %TMP/dangling cannot be written to: %TMP/dangling/%DB is not writable"_s;
    QTest::newRow("a debug log in the source")
        << log(u"%SRC/debug.log"_s)
        << u"debug log %SRC/debug.log lies in the source, which is never written to"_s;
    QTest::newRow("a debug log that is a hive")
        << log(u"%SRC/%1"_s.arg(software_file))
        << u"debug log %SRC/%1 lies in the source, which is never written to"_s.arg(software_file);
    QTest::newRow("a debug log in a folder that does not exist")
        << log(u"%TMP/none/debug.log"_s)
        << u"debug log %TMP/none/debug.log cannot be made: its folder does not exist"_s;
    QTest::newRow("a debug log that is the database")
        << log(u"%TMP/ended/%DB"_s) << u"debug log %TMP/ended/%DB is the result database"_s;
    QTest::newRow("a debug log that is the database's journal")
        << log(u"%TMP/ended/%DB-journal"_s)
        << u"debug log %TMP/ended/%DB-journal is the result database"_s;
    QTest::newRow("a debug log that is the run record")
        << log(u"%TMP/ended/%RECORD"_s)
        << u"debug log %TMP/ended/%RECORD is the run record or its lock"_s;
    QTest::newRow("a debug log that is a link to the database")
        << log(u"%TMP/ended/log"_s) << u"debug log %TMP/ended/log is the result database"_s;
    QTest::newRow("a debug log in the temporary folder")
        << log(u"%TMP/ended/Artifacts_Result/Windows_Installed_Applications/tmp/log"_s)
        << u"debug log %TMP/ended/Artifacts_Result/Windows_Installed_Applications/tmp/log lies in a folder that is removed at the end"_s;
    QTest::newRow("a debug log that is a folder")
        << log(u"%TMP/taken"_s) << u"debug log %TMP/taken cannot be written"_s;
}

void tst_host_refusals::refuses_results_that_cannot_be_written()
{
    QFETCH(QStringList, options);
    QFETCH(QString, reason);
    const auto volume = small_volume();
    const QString root = QFileInfo(volume->root()).canonicalFilePath();
    const QString folder = canonical_folder();
    const auto database = u"Artifacts_Result/Windows_Installed_Applications/"
                          "Windows_Installed_Applications.sqlite"_s;
    const auto record = u"Artifacts_Result/Windows_Installed_Applications/run.json"_s;
    evidence_volume places(folder);
    places.file(u"file"_s).folder(u"taken/"_s + database);
    places.link(u"link"_s, volume->path(u"Users"_s));
    places.link(u"linked/Artifacts_Result"_s, volume->path(u"Users"_s));
    places.link(u"temporary/Artifacts_Result/Windows_Installed_Applications/tmp"_s, root);
    places.link(u"dangling/"_s + database, u"nowhere"_s);
    places.file(u"ended/"_s + database).link(u"ended/log"_s, database);
    const QStringList before = volume_snapshot(folder);
    const QStringList evidence_before = volume_snapshot(root);

    for (QString &option : options)
        option = filled(option, root, folder)
                     .replace("%BASE"_L1, u'/' + QFileInfo(root).fileName())
                     .replace("%RECORD"_L1, record)
                     .replace("%DB"_L1, database);
    const host_result result = host_process().run(QStringList{u"extract"_s, root} + options);
    reason.replace("%RECORD"_L1, record).replace("%DB"_L1, database);
    QCOMPARE(result.errors, QStringList{"artifact_host: "_L1 + filled(reason, root, folder)});
    QCOMPARE(result.exit_code, 4);
    QCOMPARE(volume_snapshot(folder), before);
    QCOMPARE(volume_snapshot(root), evidence_before);
}

void tst_host_refusals::refuses_results_without_permission_data()
{
    QTest::addColumn<QString>("closed");
    QTest::addColumn<QString>("reason");
    const auto not_writable =
        u"result folder %TMP/results cannot be written to: %1 is not writable"_s;
    QTest::newRow("result folder") << u"results"_s << not_writable.arg("%TMP/results"_L1);
    QTest::newRow("folder above the result folder") << u"."_s << not_writable.arg("%TMP"_L1);
    QTest::newRow("database of an earlier run")
        << u"results/Artifacts_Result/Windows_Installed_Applications/Windows_Installed_Applications.sqlite"_s
        << not_writable.arg(
               "%TMP/results/Artifacts_Result/Windows_Installed_Applications/Windows_Installed_Applications.sqlite"_L1);
    QTest::newRow("debug log") << u"debug.log"_s << u"debug log %TMP/debug.log cannot be written"_s;
}

void tst_host_refusals::refuses_results_without_permission()
{
    QFETCH(QString, closed);
    QFETCH(QString, reason);
    const auto volume = small_volume();
    const QString folder = canonical_folder();
    const QString path = folder + u'/' + closed;
    const QStringList options{u"--debug-log"_s, folder + "/debug.log"_L1};
    if (closed != "."_L1)
        QCOMPARE(extract(*volume, options).exit_code, 0);
    if (closed == "results"_L1)
        QVERIFY(QDir(path + "/Artifacts_Result"_L1).removeRecursively());
    const auto permissions = QFile::permissions(path);
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner));
    const host_result result =
        host_process().without_privileges().run(arguments(volume->root(), options));
    QVERIFY(QFile::setPermissions(path, permissions));
    QCOMPARE(result.errors, QStringList{"artifact_host: "_L1 + filled(reason, {}, folder)});
    QCOMPARE(result.exit_code, 4);
}

void tst_host_refusals::refuses_to_remove_the_source_with_the_temporary_folder()
{
    const QString temporary =
        canonical_folder() + "/results/Artifacts_Result/Windows_Installed_Applications/tmp"_L1;
    evidence_volume volume(temporary + "/volume"_L1);
    fill_software(volume.software());
    volume.write();
    const host_result result = extract(volume);
    QCOMPARE(result.errors.last(),
             u"artifact_host: the source lies in %1, which is removed at the end"_s.arg(temporary));
    QCOMPARE(result.exit_code, 4);
    QVERIFY(QFileInfo::exists(volume.software_path()));
}

void tst_host_refusals::refuses_a_library_that_is_no_plug_in_data()
{
    QTest::addColumn<QString>("library");
    QTest::addColumn<QString>("behaviour");
    QTest::addColumn<QString>("reason");
    const auto recording = QStringLiteral(RECORDING_PLUGIN);
    QTest::newRow("no such file") << u"%TMP/none.so"_s << QString()
                                  << u"plug-in %TMP/none.so does not exist"_s;
    QTest::newRow("folder") << u"%TMP"_s << QString() << u"plug-in %TMP does not exist"_s;
    QTest::newRow("text file") << u"%TMP/text"_s << QString()
                               << u"plug-in %TMP/text cannot be loaded: "_s;
    QTest::newRow("library without a factory")
        << QStringLiteral(NO_PLUGIN) << QString()
        << u"%1 is no plug-in: it exports no create_object"_s.arg(QStringLiteral(NO_PLUGIN));
    QTest::newRow("factory that makes nothing")
        << recording << u"no object"_s
        << u"%1 is no plug-in for this program: its object is of another kind"_s.arg(recording);
    QTest::newRow("factory that makes another object")
        << recording << u"plain frame"_s
        << u"%1 is no plug-in for this program: its object is of another kind"_s.arg(recording);
}

void tst_host_refusals::refuses_a_library_that_is_no_plug_in()
{
    QFETCH(QString, library);
    QFETCH(QString, behaviour);
    QFETCH(QString, reason);
    const auto volume = small_volume();
    write_file(folder_path(u"text"_s), "no library");
    const host_result result =
        host_process()
            .environment(u"RECORDING_PLUGIN"_s, behaviour)
            .run(arguments(volume->root(), {u"--plugin"_s, filled(library, {}, folder())}));
    QCOMPARE(result.errors.size(), 1);
    // The loader's own words follow.
    const QString expected = "artifact_host: "_L1 + filled(reason, {}, folder());
    QCOMPARE(result.errors.first().left(expected.size()), expected);
    QCOMPARE(result.exit_code, 5);
    QVERIFY(!QFileInfo::exists(result_path()));
}

TEST_MAIN(tst_host_refusals)
#include "tst_host_refusals.moc"
