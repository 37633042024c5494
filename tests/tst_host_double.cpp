#include "host_double.h"
#include "log_capture.h"
#include "plugin_static_function.h"
#include "result_database.h"
#include "test_main.h"
#include "windows_installed_applications.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

class tst_host_double : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void runs_all_tabs_and_notes_their_signals();
    void notes_every_row_when_told();
    void both_kinds_of_progress_write_the_same_rows();
    void hands_over_the_settings();
    void logs_through_a_capture();
    void clears_the_tables_when_told();
    void cancels_at_an_event();
    void cancels_at_a_row();
    void acts_from_within_a_signal();
    void cleans_up_the_temporary_folder();
    void puts_the_run_context_back();

private:
    std::unique_ptr<evidence_volume> m_volume;
};

// Three applications and one user with one package.
void tst_host_double::init()
{
    m_volume = std::make_unique<evidence_volume>();
    hive_key &uninstall =
        m_volume->software().key(u"Microsoft\\Windows\\CurrentVersion\\Uninstall"_s);
    for (const QString &name : {u"a"_s, u"b"_s, u"c"_s})
        uninstall.add_key(name).text(u"DisplayName"_s, name.toUpper());
    m_volume->user(u"ann"_s);
    m_volume->package(u"ann"_s, u"App"_s);
    m_volume->write();
}

void tst_host_double::runs_all_tabs_and_notes_their_signals()
{
    host_double host(*m_volume);
    host.run();
    QStringList expected{u"records 0"_s};
    const QStringList tabs = all_tabs();
    for (qsizetype tab = 0; tab < tabs.size(); ++tab)
        expected << (tab < tabs.indexOf(u"metro_apps"_s) ? u"records 3"_s : u"records 4"_s)
                 << u"tabs %1"_s.arg(tab + 1);
    expected << u"records 4"_s << u"records 4"_s;
    QCOMPARE(host.events(), expected);

    const result_database database(host.database_path());
    QCOMPARE(database.column(u"install_apps_64"_s, u"display_name"_s),
             (QStringList{u"A"_s, u"B"_s, u"C"_s}));
    QCOMPARE(database.column(u"metro_apps"_s, u"system_account"_s), QStringList{u"ann"_s});
}

void tst_host_double::notes_every_row_when_told()
{
    host_double host(*m_volume, row_progress::every_row);
    host.settings.tabs = QStringList{u"install_apps_64"_s};
    host.run();
    QCOMPARE(host.events(),
             (QStringList{u"records 0"_s, u"records 1"_s, u"records 2"_s, u"records 3"_s,
                          u"records 3"_s, u"tabs 1"_s, u"records 3"_s, u"records 3"_s}));
}

void tst_host_double::both_kinds_of_progress_write_the_same_rows()
{
    host_double throttled(*m_volume);
    host_double every_row(*m_volume, row_progress::every_row);
    throttled.run();
    every_row.run();
    const result_database first(throttled.database_path());
    const result_database second(every_row.database_path());
    const QStringList tables = all_tabs();
    for (const QString &table : tables)
        QCOMPARE(second.rows(table, {u"*"_s}), first.rows(table, {u"*"_s}));
}

void tst_host_double::hands_over_the_settings()
{
    host_double host(*m_volume);
    host.settings.source_count = 4;
    host.settings.engine_type = 2;
    host.settings.machine.examiner_machine_timezone_offset = 3600;
    host.settings.source.os_scheme_display = u"Windows 11"_s;
    host.run();

    QCOMPARE(plugin_static_function::type_engine_int, 2);
    QCOMPARE(plugin_static_function::examiner_machine_timezone_offset_qint64, 3600);
    const result_database database(host.database_path());
    QCOMPARE(database.rows(u"metro_apps"_s, {u"os_scheme_display"_s, u"source_count_name"_s}),
             (QList<QStringList>{{u"Windows 11"_s, u"Source4"_s}}));
}

void tst_host_double::logs_through_a_capture()
{
    const log_capture log;
    host_double host(*m_volume);
    host.settings.general = log.general_info();
    host.settings.tabs.clear();
    host.set_up();
    log.clear();
    host.extract();
    QCOMPARE(log.messages().first(), u"[find_source_file]---STARTS---"_s);
    QCOMPARE(log.messages().last(), u"[pub_extract_artifacts] - END"_s);
}

void tst_host_double::clears_the_tables_when_told()
{
    host_double host(*m_volume);
    host.run();
    host.run();
    QCOMPARE(result_database(host.database_path()).row_count(u"install_apps_64"_s), 6);
    host.settings.clear_tables = true;
    host.run();
    QCOMPARE(result_database(host.database_path()).row_count(u"install_apps_64"_s), 3);
}

void tst_host_double::cancels_at_an_event()
{
    host_double host(*m_volume, row_progress::every_row);
    host.cancel_at_event(3);
    host.run();
    QCOMPARE(host.events().mid(0, 3),
             (QStringList{u"records 0"_s, u"records 1"_s, u"records 2"_s}));
    const result_database database(host.database_path());
    QCOMPARE(database.row_count(u"install_apps_64"_s), 2);
    QCOMPARE(database.row_count(u"metro_apps"_s), 0);
}

void tst_host_double::cancels_at_a_row()
{
    host_double host(*m_volume, row_progress::every_row);
    host.cancel_at_row(2);
    host.run();
    QCOMPARE(result_database(host.database_path()).column(u"install_apps_64"_s, u"display_name"_s),
             (QStringList{u"A"_s, u"B"_s}));
}

void tst_host_double::acts_from_within_a_signal()
{
    host_double host(*m_volume);
    QStringList seen;
    host.on_event([&seen](const QString &event) { seen.append(event); });
    host.run();
    QCOMPARE(seen, host.events());
    QVERIFY(!seen.isEmpty());
    host.clear_events();
    QCOMPARE(host.events(), QStringList());
}

void tst_host_double::cleans_up_the_temporary_folder()
{
    host_double host(*m_volume);
    host.set_up();
    const QString temporary = QFileInfo(host.database_path()).path() + u"/tmp"_s;
    QVERIFY(QFileInfo::exists(temporary));
    host.clean_up();
    QVERIFY(!QFileInfo::exists(temporary));
    QVERIFY(QFileInfo::exists(host.database_path()));
}

void tst_host_double::puts_the_run_context_back()
{
    plugin_static_function::set_essentials();
    {
        host_double host(*m_volume);
        host.run();
        QCOMPARE(plugin_static_function::get_source_count_name(), u"Source1"_s);
    }
    QCOMPARE(plugin_static_function::get_source_count_name(), u"Source-1"_s);
}

TEST_MAIN(tst_host_double)
#include "tst_host_double.moc"
