#include "host_double.h"
#include "log_capture.h"
#include "result_database.h"
#include "sample_evidence.h"
#include "test_main.h"
#include "volume_snapshot.h"
#include "windows_installed_applications.h"

#include <QDir>
#include <QFileInfo>
#include <optional>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// The examiner cancels from within every signal, and before every operation of the plug-in object.
// What was written is committed, nothing else is written, and the object can be used again.
class tst_faults_cancel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void within_each_signal_data();
    void within_each_signal();
    void before_each_operation_data();
    void before_each_operation();
    void lasts_until_the_essentials_are_set();

private:
    QHash<QString, QList<QStringList>> tables_of(const host_double &host) const;

    evidence_volume m_volume;
    QStringList m_whole_events;
    QHash<QString, QList<QStringList>> m_whole_tables;
};

namespace {

using plugin_operation = void (*)(host_double &);

struct operation_row
{
    const char *name;
    plugin_operation run;
};

/// What a host calls, in its order; a row after "set essentials" leaves the cancellation in force.
constexpr operation_row operations[] = {
    {"engine type",
     [](host_double &host) { host.plugin().pub_set_engine_type(host.settings.engine_type); }},
    {"general info",
     [](host_double &host) { host.plugin().pub_set_general_info(host.settings.general); }},
    {"examiner machine",
     [](host_double &host) { host.plugin().pub_set_examiner_machine_info(host.settings.machine); }},
    {"source info",
     [](host_double &host) { host.plugin().pub_set_source_info(host.settings.source); }},
    {"source count",
     [](host_double &host) { host.plugin().pub_set_source_count(host.settings.source_count); }},
    {"tabs",
     [](host_double &host) {
         host.plugin().pub_set_essential_for_arken_desk_extraction(host.settings.tabs, {});
     }},
    {"result folder",
     [](host_double &host) {
         host.plugin().pub_set_result_directory(host.settings.result_folder);
     }},
    {"creating the tables", [](host_double &host) { host.plugin().pub_create_db_tables(); }},
    {"clearing the tables", [](host_double &host) { host.plugin().pub_set_clear_db(true); }},
    {"finding the files", [](host_double &host) { host.plugin().pub_find_source_file(); }},
    {"extracting", [](host_double &host) { host.plugin().pub_extract_artifacts(); }},
    {"cleaning up", [](host_double &host) { host.plugin().pub_remove_temporary_asthetics(); }},
};

/// The numbers of the files that this process has open.
QStringList open_descriptors()
{
    return QDir(u"/dev/fd"_s).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
}

qint64 signalled_rows(const QString &event)
{
    return event.section(u' ', 1).toLongLong();
}

} // namespace

void tst_faults_cancel::initTestCase()
{
    add_sample_evidence(m_volume);
    m_volume.write();
    host_double host(m_volume, row_progress::every_row);
    host.run();
    m_whole_events = host.events();
    m_whole_tables = tables_of(host);
    QCOMPARE(m_whole_tables.size(), all_tabs().size());
}

QHash<QString, QList<QStringList>> tst_faults_cancel::tables_of(const host_double &host) const
{
    QHash<QString, QList<QStringList>> tables;
    const result_database database(host.database_path());
    for (const QString &table : all_tabs())
        tables[table] = database.rows(table, {u"*"_s});
    return tables;
}

void tst_faults_cancel::within_each_signal_data()
{
    QTest::addColumn<int>("number");
    for (int number = 1; number <= m_whole_events.size(); ++number)
        QTest::addRow("signal %d, %s", number, qPrintable(m_whole_events.at(number - 1))) << number;
}

void tst_faults_cancel::within_each_signal()
{
    QFETCH(const int, number);
    const QStringList before = volume_snapshot(m_volume.root());
    host_double host(m_volume, row_progress::every_row);
    host.cancel_at_event(number);
    const QStringList open_before = open_descriptors();
    host.run();
    QCOMPARE(open_descriptors(), open_before);

    QCOMPARE(host.events().mid(0, number), m_whole_events.mid(0, number));
    QCOMPARE(result_database(host.database_path()).integrity_check(), u"ok"_s);
    qint64 rows = 0;
    const QHash<QString, QList<QStringList>> tables = tables_of(host);
    for (const QString &table : all_tabs()) {
        const QList<QStringList> written = tables.value(table);
        QCOMPARE(written, m_whole_tables.value(table).mid(0, written.size()));
        rows += written.size();
    }
    // The row that was signalled is the last one; a signal of tabs follows one of rows.
    qint64 signalled = 0;
    for (const QString &event : m_whole_events.mid(0, number))
        signalled = event.startsWith(u"records"_s) ? signalled_rows(event) : signalled;
    QCOMPARE(rows, signalled);
    QCOMPARE(signalled_rows(host.events().filter(u"records"_s).last()), signalled);
    QCOMPARE(volume_snapshot(m_volume.root()), before);
}

void tst_faults_cancel::before_each_operation_data()
{
    QTest::addColumn<int>("index");
    for (int index = 0; index < int(std::size(operations)); ++index)
        QTest::addRow("before %s", operations[index].name) << index;
}

void tst_faults_cancel::before_each_operation()
{
    QFETCH(const int, index);
    host_double host(m_volume);
    host.plugin().pub_set_essentials();
    for (int i = 0; i < int(std::size(operations)); ++i) {
        if (i == index)
            host.plugin().pub_cancel_extraction();
        operations[i].run(host);
    }

    const bool is_too_late = operations[index].name == QByteArray("cleaning up");
    const result_database database(host.database_path());
    QCOMPARE(database.tables(), all_tabs());
    QCOMPARE(database.integrity_check(), u"ok"_s);
    QCOMPARE(host.events(), is_too_late ? host.events() : QStringList{u"records 0"_s});
    for (const QString &table : all_tabs())
        QCOMPARE(database.row_count(table), is_too_late ? sample_row_count : 0);
    QVERIFY(!QFileInfo::exists(QFileInfo(host.database_path()).path() + u"/tmp"_s));
}

void tst_faults_cancel::lasts_until_the_essentials_are_set()
{
    host_double host(m_volume, row_progress::every_row);
    host.run();
    host.plugin().pub_cancel_extraction();

    host.clear_events();
    host.extract();
    QCOMPARE(host.events(), QStringList{u"records 0"_s});
    host.plugin().pub_set_clear_db(true);
    QCOMPARE(tables_of(host), m_whole_tables);

    host.settings.clear_tables = true;
    host.clear_events();
    host.run();
    QCOMPARE(host.events(), m_whole_events);
    QCOMPARE(tables_of(host), m_whole_tables);
}

TEST_MAIN(tst_faults_cancel)
#include "tst_faults_cancel.moc"
