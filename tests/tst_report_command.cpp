#include "files.h"
#include "host_test.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// The command that writes a report, as a process.
class tst_report_command : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init() { begin_test(); }
    void report_writes_one_file();
    void report_overwrites_nothing_unasked();
    void nothing_is_written_to_the_result_data();
    void nothing_is_written_to_the_result();

private:
    host_result run(const QStringList &arguments) const { return host_process().run(arguments); }
    QString extracted() const;
};

/// The result folder of a run over the small volume.
QString tst_report_command::extracted() const
{
    const auto volume = small_volume();
    extract(*volume, {u"--quiet"_s});
    return result_path();
}

void tst_report_command::report_writes_one_file()
{
    const QString result = extracted();
    const QString file = folder_path(u"new/report.html"_s);
    const host_result told = run({u"report"_s, result, u"-o"_s, file});
    QCOMPARE(told.errors, QStringList());
    QCOMPARE(told.output, QStringList{file});
    QCOMPARE(told.exit_code, 0);
    QCOMPARE(QDir(folder_path(u"new"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList{u"report.html"_s});
    const QByteArray page = read_file(file);
    QVERIFY(page.startsWith("<!DOCTYPE html>"));
    QVERIFY(page.contains("uninstall.exe"));
}

void tst_report_command::report_overwrites_nothing_unasked()
{
    const auto volume = small_volume();
    extract(*volume, {u"--quiet"_s});
    const QString file = folder_path(u"report.html"_s);
    write_file(file, "mine");
    const QStringList arguments{u"report"_s, result_path(), u"--output"_s, file};
    const host_result refused = run(arguments);
    QCOMPARE(refused.errors.last(),
             u"artifact_host: %1 is there already; --replace writes over it"_s.arg(file));
    QCOMPARE(refused.exit_code, 4);
    QCOMPARE(read_file(file), QByteArray("mine"));
    QCOMPARE(run(arguments + QStringList{u"--replace"_s}).exit_code, 0);
    QVERIFY(read_file(file).startsWith("<!DOCTYPE html>"));
    const QStringList before = volume_snapshot(volume->root());
    QCOMPARE(
        run({u"report"_s, result_path(), u"-o"_s, volume->root() + "/report.html"_L1}).exit_code,
        4);
    QCOMPARE(volume_snapshot(volume->root()), before);
    if (QFile::exists(u"/dev/full"_s))
        QCOMPARE(run({u"report"_s, result_path(), u"-o"_s, u"/dev/full"_s}).exit_code, 4);
}

void tst_report_command::nothing_is_written_to_the_result_data()
{
    QTest::addColumn<QString>("file"); // beside the database
    QTest::newRow("database") << u"Windows_Installed_Applications.sqlite"_s;
    QTest::newRow("journal") << u"Windows_Installed_Applications.sqlite-journal"_s;
    QTest::newRow("recovered database") << u"Windows_Installed_Applications_recovered.sqlite"_s;
    QTest::newRow("hive of deleted records") << u"rebuilt_hives/Source1/NTUSER.DAT"_s;
    QTest::newRow("run record") << u"run.json"_s;
    QTest::newRow("copy of a hive") << u"recovered_hives/Source1/NTUSER.DAT"_s;
    QTest::newRow("through a folder") << u"../Windows_Installed_Applications/run.json"_s;
}

void tst_report_command::nothing_is_written_to_the_result()
{
    QFETCH(const QString, file);
    const QString result = extracted();
    const QString path = QFileInfo(record_path()).path() + u'/' + file;
    const QStringList before = volume_snapshot(result);
    const host_result refused = run({u"report"_s, result, u"-o"_s, path, u"--replace"_s});
    QCOMPARE(refused.errors.last(), u"artifact_host: %1 is part of the result itself"_s.arg(path));
    QCOMPARE(refused.exit_code, 4);
    QCOMPARE(volume_snapshot(result), before);
}

TEST_MAIN(tst_report_command)
#include "tst_report_command.moc"
