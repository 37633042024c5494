#include "host_test.h"
#include "result_database.h"
#include "test_main.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QTest>
#include <csignal>

using namespace Qt::StringLiterals;
using namespace test_support;

// A run that is cancelled by a signal.
class tst_host_cancellation : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init() { begin_test(); }
    void keeps_the_rows_of_a_cancelled_run();
    void turns_a_signal_into_a_cancellation_data();
    void turns_a_signal_into_a_cancellation();
    void ends_at_once_on_a_second_signal();
    void keeps_ignoring_an_ignored_interrupt();
    void gives_hashing_up();
};

void tst_host_cancellation::keeps_the_rows_of_a_cancelled_run()
{
    const auto volume = small_volume();
    const host_result result = extract(*volume, {u"--quiet"_s, u"--user"_s, u"ann"_s, u"--plugin"_s,
                                                 QStringLiteral(INTERRUPTED_PLUGIN)});
    QCOMPARE(result.errors,
             QStringList{u"artifact_host: cancelled when %1 were done; the rows written so far are "
                         "kept"_s.arg(of_all_tabs(1))});
    QCOMPARE(result.exit_code, 130);
    QCOMPARE(result.output.value(0), u"install_apps_64                    2"_s);
    QCOMPARE(total_line(result), u"total                              2"_s);
    QCOMPARE(result.output.last(), database_path());
    QCOMPARE(result_database(database_path()).integrity_check(), u"ok"_s);
    QVERIFY(!QFileInfo::exists(QFileInfo(database_path()).path() + "/tmp"_L1));
}

void tst_host_cancellation::turns_a_signal_into_a_cancellation_data()
{
    QTest::addColumn<int>("signal_number");
    QTest::newRow("Ctrl-C") << SIGINT;
    QTest::newRow("termination") << SIGTERM;
}

void tst_host_cancellation::turns_a_signal_into_a_cancellation()
{
    QFETCH(int, signal_number);
    const auto volume = small_volume();
    host_process host;
    host.environment(u"RECORDING_PLUGIN"_s, u"until cancelled"_s);
    host.start(arguments(volume->root(), recorded));
    host.wait_for_error_line(u"call: pub_extract_artifacts()"_s);
    host.send_signal(signal_number);
    const host_result result = host.finish();
    QCOMPARE(result.errors.filter(u"call: "_s).mid(12),
             (QStringList{u"call: pub_extract_artifacts()"_s, u"call: pub_cancel_extraction()"_s,
                          u"call: pub_remove_temporary_asthetics()"_s, u"call: delete()"_s}));
    QCOMPARE(result.exit_code, 130);
}

void tst_host_cancellation::ends_at_once_on_a_second_signal()
{
    const auto volume = small_volume();
    host_process host;
    host.environment(u"RECORDING_PLUGIN"_s, u"for ever"_s);
    host.start(arguments(volume->root(), recorded));
    host.wait_for_error_line(u"call: pub_extract_artifacts()"_s);
    host.send_signal(SIGINT);
    host.wait_for_error_line(u"call: pub_cancel_extraction()"_s);
    host.send_signal(SIGINT);
    QCOMPARE(host.finish().signal_number, SIGINT);
}

void tst_host_cancellation::keeps_ignoring_an_ignored_interrupt()
{
    const auto volume = small_volume();
    host_process host;
    host.environment(u"RECORDING_PLUGIN"_s, u"for ever"_s).ignoring_interrupts();
    host.start(arguments(volume->root(), recorded));
    host.wait_for_error_line(u"call: pub_extract_artifacts()"_s);
    // Had the first not been ignored, the second would end the program.
    host.send_signal(SIGINT);
    host.send_signal(SIGTERM);
    host.wait_for_error_line(u"call: pub_cancel_extraction()"_s);
    host.send_signal(SIGKILL);
    QCOMPARE(host.finish().signal_number, SIGKILL);
}

// The header is that of a hive, behind which 64 GiB follow that take minutes to hash.
void tst_host_cancellation::gives_hashing_up()
{
    const auto volume = small_volume();
    QFile hive(volume->ntuser_path(u"ann"_s));
    QVERIFY(hive.open(QIODevice::ReadWrite) && hive.resize(qint64(64) << 30));
    hive.close();
    host_process host;
    host.start(arguments(volume->root(), {u"--quiet"_s, u"--user"_s, u"ann"_s}));
    host.wait_for_error_line(
        u"artifact_host: waiting for the SHA-256 of what was read; Ctrl-C gives it up"_s);
    host.send_signal(SIGINT);
    const host_result result = host.finish();
    QCOMPARE(result.exit_code, 130);
    QVERIFY(result.hashes_line.endsWith(u"; the others have none"_s));
    const QJsonObject run = last_run();
    QCOMPARE(run.value("outcome"_L1), u"cancelled"_s);
    for (const QJsonValue &file : run.value("files"_L1).toArray())
        QVERIFY(!file.toObject().contains("sha256_after"_L1));
}

TEST_MAIN(tst_host_cancellation)
#include "tst_host_cancellation.moc"
