#include "application_keys.h"
#include "files.h"
#include "hive_damage.h"
#include "host_test.h"
#include "machine.h"
#include "test_main.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// The exit code tells whether everything selected was read, and many warnings stay readable.
class tst_host_outcome : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init() { begin_test(); }
    void tells_whether_everything_was_read_data();
    void tells_whether_everything_was_read();
    void tells_of_a_hive_without_permission();
    void shows_twenty_warnings_one_by_one();
    void sums_many_warnings_up_by_kind();
    void sums_up_kinds_that_names_make_up();
    void is_explained_by_the_help();
};

namespace {

QByteArray user_hive()
{
    hive_builder hive;
    fill_user(hive);
    return hive.bytes();
}

QString account(int number)
{
    return u"Users/user%1"_s.arg(number, 4, 10, QChar(u'0'));
}

} // namespace

void tst_host_outcome::tells_whether_everything_was_read_data()
{
    QTest::addColumn<QString>("path"); // of a file that the volume has besides
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("log"); // beside it
    QTest::addColumn<int>("exit_code");
    const QByteArray hive = user_hive();
    const QByteArray dirty = hive_damage(hive).sequence_numbers(7, 6).bytes();
    const auto eve = u"Users/eve/NTUSER.DAT"_s;
    QTest::newRow("an intact hive") << eve << hive << QString() << 0;
    QTest::newRow("an account without a hive")
        << u"Users/eve/AppData/Local/Packages/App/x"_s << QByteArray() << QString() << 0;
    QTest::newRow("a hive of four bytes") << eve << QByteArray("regf") << QString() << 6;
    QTest::newRow("a hive that is cut off") << eve << hive.first(4096) << QString() << 6;
    QTest::newRow("a hive that was not closed cleanly") << eve << dirty << QString() << 0;
    QTest::newRow("a hive whose transaction log is not applied")
        << eve << dirty << u"NTUSER.DAT.LOG1"_s << 6;
    QTest::newRow("a software hive that is garbage")
        << software_file << QByteArray(8192, 'x') << QString() << 6;
}

void tst_host_outcome::tells_whether_everything_was_read()
{
    QFETCH(const QString, path);
    QFETCH(const QByteArray, content);
    QFETCH(const QString, log);
    QFETCH(const int, exit_code);
    const auto volume = small_volume();
    volume->file(path, content);
    if (!log.isEmpty())
        volume->file(QFileInfo(path).path() + u'/' + log, "log");
    const host_result result = extract(*volume, {u"--quiet"_s});
    QCOMPARE(result.exit_code, exit_code);
    QCOMPARE(result.output.last(), database_path());
}

void tst_host_outcome::tells_of_a_hive_without_permission()
{
    if (const QString missing = missing_process_files(); !missing.isEmpty())
        QSKIP(qPrintable(missing));
    const auto volume = small_volume();
    QVERIFY(QFile::setPermissions(folder(), QFile::Permissions(0x7777)));
    QVERIFY(QFile::setPermissions(volume->ntuser_path(u"ann"_s), {}));
    const host_result result =
        host_process().without_privileges().run(arguments(volume->root(), {u"--quiet"_s}));
    QCOMPARE(result.errors.first(),
             u"artifact_host: warning: Users/ann/NTUSER.DAT: cannot be read: Permission denied"_s);
    QCOMPARE(result.exit_code, 6);
}

void tst_host_outcome::shows_twenty_warnings_one_by_one()
{
    evidence_volume volume;
    fill_software(volume.software());
    volume.write();
    for (int number = 0; number < 20; ++number)
        volume.file(account(number) + "/NTUSER.DAT"_L1, "none");
    QCOMPARE(extract(volume, {u"--quiet"_s}).errors.size(), 20);
}

void tst_host_outcome::sums_many_warnings_up_by_kind()
{
    evidence_volume volume;
    fill_software(volume.software());
    volume.write();
    for (int number = 0; number < 500; ++number)
        volume.file(account(number) + "/NTUSER.DAT"_L1, number % 100 == 99 ? "" : "none");
    const host_result result = extract(volume, {u"--quiet"_s});
    QStringList expected;
    for (const int number : {0, 1, 2})
        expected.append(account(number) +
                        "/NTUSER.DAT: too short for a hive (4 bytes), so it is not read"_L1);
    expected += {u"497 more: too short for a hive"_s, u"500 in all"_s};
    expected.replaceInStrings(QRegularExpression(u"^"_s), u"artifact_host: warning: "_s);
    QCOMPARE(result.errors, expected);
    QCOMPARE(result.exit_code, 6);

    const QJsonArray told = last_run().value("not_read"_L1).toArray();
    QCOMPARE(told.size(), 500);
    QCOMPARE(told.at(99).toString(),
             account(99) + "/NTUSER.DAT: too short for a hive (0 bytes), so it is not read"_L1);
}

// Names of the evidence may look like the words of a warning; they escape in the summary too.
void tst_host_outcome::sums_up_kinds_that_names_make_up()
{
    evidence_volume volume;
    fill_software(volume.software());
    volume.write();
    for (int number = 0; number < 30; ++number)
        volume.file(u"Users/a: \x1b[2J%1/NTUSER.DAT"_s.arg(number), "none");
    const host_result result = extract(volume, {u"--quiet"_s});
    QVERIFY2(result.errors.size() <= 20, qPrintable(result.errors.join(u'\n')));
    QCOMPARE(result.errors.last(), u"artifact_host: warning: 30 in all"_s);
    QVERIFY(result.errors.contains(u"artifact_host: warning: 22 more of other kinds"_s));
    for (const QString &line : result.errors)
        QVERIFY(!line.contains(u'\x1b'));
}

void tst_host_outcome::is_explained_by_the_help()
{
    const QStringList help = host_process().run({u"extract"_s, u"--help"_s}).output;
    QVERIFY(help.contains(
        u"  6    the run is complete but for what the warnings list: something of the"_s));
    for (const auto *option : {"--add", "--replace", "--force", "--wait SECONDS", "--no-hashes"})
        QVERIFY2(help.join(u'\n').contains(u"\n  %1 "_s.arg(QLatin1StringView(option))), option);
}

TEST_MAIN(tst_host_outcome)
#include "tst_host_outcome.moc"
