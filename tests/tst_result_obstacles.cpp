#include "files.h"
#include "host_test.h"
#include "result_file.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QTest>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What lies in the result folder and can neither be written nor replaced.
class tst_result_obstacles : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init() { begin_test(); }
    void refuses_what_is_no_file_data();
    void refuses_what_is_no_file();
    void leaves_the_database_of_somebody_else_alone_data();
    void leaves_the_database_of_somebody_else_alone();
    void records_a_replacement_that_fails();
};

void tst_result_obstacles::refuses_what_is_no_file_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("is_pipe");
    const auto database = u"Windows_Installed_Applications.sqlite"_s;
    for (const auto end : {"-journal"_L1, "-wal"_L1, "-shm"_L1}) {
        QTest::addRow("a pipe for SQLite: %s", end.data()) << database + end << true;
        QTest::addRow("a folder for SQLite: %s", end.data()) << database + end << false;
    }
    for (const auto *lock : {"run.lock", "run.lock.rmlock"}) {
        QTest::addRow("a pipe as %s", lock) << QString::fromLatin1(lock) << true;
        QTest::addRow("a folder as %s", lock) << QString::fromLatin1(lock) << false;
    }
}

// A pipe would be waited for; with a folder in the way, half of the database would be removed.
void tst_result_obstacles::refuses_what_is_no_file()
{
    QFETCH(const QString, name);
    QFETCH(const bool, is_pipe);
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    evidence_volume results(QFileInfo(database_path()).path());
    is_pipe ? results.fifo(name) : results.folder(name);
    const QStringList before = volume_snapshot(result_path());
    const host_result result = extract(*volume, {u"--replace"_s});
    QCOMPARE(
        result.errors,
        QStringList{u"artifact_host: result folder %1/results cannot be written to: %2/%3 is "
                    "no regular file"_s.arg(
                        canonical_folder(),
                        QFileInfo(QFileInfo(database_path()).path()).canonicalFilePath(), name)});
    QCOMPARE(result.exit_code, 4);
    QCOMPARE(volume_snapshot(result_path()), before);
}

void tst_result_obstacles::leaves_the_database_of_somebody_else_alone_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("without an option") << QStringList();
    QTest::newRow("added to") << QStringList{u"--add"_s};
    QTest::newRow("replaced") << QStringList{u"--replace"_s};
}

void tst_result_obstacles::leaves_the_database_of_somebody_else_alone()
{
    QFETCH(const QStringList, options);
    const auto volume = small_volume();
    make_folder(QFileInfo(database_path()).path());
    execute(database_path(), u"CREATE TABLE notes(text)"_s);
    const QByteArray before = read_file(database_path());
    const host_result result = extract(*volume, options);
    QVERIFY2(result.errors.last().endsWith(
                 u" holds tables that no run makes, so it is neither filled nor replaced: notes"_s),
             qPrintable(result.errors.last()));
    QCOMPARE(result.exit_code, 4);
    QCOMPARE(read_file(database_path()), before);
    QVERIFY(!QFileInfo::exists(record_path()));
}

// In a folder where everybody may make files, nobody may remove those of others.
void tst_result_obstacles::records_a_replacement_that_fails()
{
#ifndef Q_OS_LINUX
    QSKIP("only on Linux can a superuser's right to remove be taken away");
#endif
    const auto volume = small_volume();
    QCOMPARE(extract(*volume).exit_code, 0);
    const QByteArray database = QFile::encodeName(database_path());
    const QByteArray place = QFile::encodeName(QFileInfo(database_path()).path());
    constexpr uid_t somebody = 12345;
    if (chown(database.constData(), somebody, gid_t(-1)) != 0 ||
        chown(place.constData(), somebody, gid_t(-1)) != 0)
        QSKIP("only a superuser gives files to somebody else");
    QCOMPARE(chmod(database.constData(), 0666), 0);
    QCOMPARE(chmod(place.constData(), 01777), 0);
    const QByteArray before = read_file(database_path());
    const host_result result =
        host_process().without_privileges().run(arguments(volume->root(), {u"--replace"_s}));
    QVERIFY2(result.errors.last().contains(u" cannot be removed: "_s),
             qPrintable(result.errors.last()));
    QCOMPARE(result.exit_code, 4);
    QCOMPARE(read_file(database_path()), before);
    QCOMPARE(last_run().value("outcome"_L1), u"failed"_s);
    QCOMPARE(last_run().value("exit_code"_L1), 4);
    QVERIFY(last_run().contains("end"_L1));
    QVERIFY(result.errors.last().endsWith(
        last_run().value("problems"_L1).toArray().first().toString()));
}

TEST_MAIN(tst_result_obstacles)
#include "tst_result_obstacles.moc"
