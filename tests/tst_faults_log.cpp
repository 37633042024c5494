#include "files.h"
#include "host_double.h"
#include "log_capture.h"
#include "reference_run.h"
#include "result_database.h"
#include "test_main.h"

#include <QDir>
#include <QFileInfo>
#include <functional>
#include <optional>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// The debug log cannot be written. No row depends on it.
class tst_faults_log : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cannot_be_written_data();
    void cannot_be_written();
    void goes_away_in_the_middle();
    void may_not_be_written_by_this_user();

private:
    QString missing_rows(const QString &database_path) const;

    std::optional<reference_run> m_reference;
};

namespace {

QStringList caught_messages;

/// What went to Qt's message channel meanwhile.
QStringList messages_during(const std::function<void()> &action)
{
    caught_messages.clear();
    const QtMessageHandler usual =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
            caught_messages += text;
        });
    action();
    qInstallMessageHandler(usual);
    return caught_messages;
}

} // namespace

void tst_faults_log::initTestCase()
{
    m_reference.emplace();
}

/// The first table that is not whole; empty when all are.
QString tst_faults_log::missing_rows(const QString &database_path) const
{
    for (const QString &table : all_tabs()) {
        if (rows_in(database_path, table) != m_reference->rows_of(table))
            return table;
    }
    return {};
}

void tst_faults_log::cannot_be_written_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("message"); // what Qt's channel gets for each line
    QTest::newRow("no path") << QString() << QString();
    QTest::newRow("a file that does not exist") << u"absent.log"_s << QString();
    QTest::newRow("a folder") << u"folder"_s
                              << u"Debug File Open ----- FAILED-------   Error - Is a directory"_s;
    QTest::newRow("a folder that does not exist") << u"absent/debug.log"_s << QString();
    QTest::newRow("below a file") << u"file/debug.log"_s << QString();
    QTest::newRow("a name that is too long") << QString(300, u'x') << QString();
#ifdef Q_OS_LINUX // elsewhere nothing stands for such a disk
    QTest::newRow("a disk that is always full")
        << u"/dev/full"_s
        << u"QIODevice::seek (QFile, \"/dev/full\"): Cannot call seek on a sequential device"_s;
#endif
}

void tst_faults_log::cannot_be_written()
{
    QFETCH(const QString, path);
    QFETCH(const QString, message);
    if (path.startsWith("/dev/"_L1) && !QFile::exists(path))
        QSKIP(qPrintable("This machine has no "_L1 + path));
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir(u"folder"_s));
    write_file(folder.filePath(u"file"_s), "content");
    const QStringList before = QDir(folder.path()).entryList(QDir::AllEntries | QDir::System);

    host_double host(m_reference->volume());
    host.settings.general.debug_mode_status = true;
    host.settings.general.debug_print_in_file = true;
    host.settings.general.debug_file_path =
        path.isEmpty() ? path : QDir(folder.path()).filePath(path);
    QStringList messages = messages_during([&host] { host.run(); });
    messages.removeDuplicates();

    QCOMPARE(messages.join(u'\n'), message);
    QCOMPARE(missing_rows(host.database_path()), QString());
    QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::System), before);
    QCOMPARE(read_file(folder.filePath(u"file"_s)), QByteArray("content"));
}

void tst_faults_log::goes_away_in_the_middle()
{
    const log_capture log;
    host_double host(m_reference->volume());
    host.settings.general = log.general_info();
    host.on_event([&log](const QString &event) {
        if (event == u"tabs 3"_s)
            QVERIFY(QFile::remove(log.path()));
    });
    host.run();
    QCOMPARE(missing_rows(host.database_path()), QString());
    QVERIFY(!QFileInfo::exists(log.path()));
    log.clear();
}

void tst_faults_log::may_not_be_written_by_this_user()
{
    const QTemporaryDir logs;
    const QString log = make_log_file(logs.path());
    QVERIFY(QFile::setPermissions(log, QFileDevice::ReadOwner));
    const QString folder = m_reference->fresh_folder();
    const extraction_outcome outcome =
        m_reference->process(folder).log(log).without_privileges().run();
    QVERIFY(outcome.completed);
    QCOMPARE(missing_rows(database_in(folder)), QString());
    QCOMPARE(read_file(log), QByteArray());
    QVERIFY(
        outcome.errors.contains("Debug File Open ----- FAILED-------   Error - Permission denied"));
}

TEST_MAIN(tst_faults_log)
#include "tst_faults_log.moc"
