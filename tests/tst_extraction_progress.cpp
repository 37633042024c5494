#include "log_line.h"
#include "log_line_hook.h"
#include "sample_fixture.h"
#include "tab_rows.h"
#include "test_main.h"
#include "worker_fixture.h"

#include <QRegularExpression>
#include <QSqlDatabase>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// When an extraction reports its progress, and where it stops when it is cancelled, over evidence
// that gives each table three rows.

namespace {

bool comes_from_users(const result_tab &tab)
{
    return QString(tab.insert_statement).contains("system_account"_L1);
}

/// Runs the tabs and returns the log's messages and the signals, "records TOTAL" and "tabs TOTAL",
/// in the order in which they came.
QStringList story_of_run(worker_fixture &fixture, const QStringList &tabs)
{
    QStringList story;
    const auto note = [&story](const QString &what, qint64 total) {
        story.append(what + QString::number(total));
    };
    QObject::connect(&fixture.worker, &winos_probe::signal_extracted_records_of_plugin_winos,
                     [&](qint64 total) { note(u"records "_s, total); });
    QObject::connect(&fixture.worker, &winos_probe::signal_total_tabs_processed_winos,
                     [&](int total) { note(u"tabs "_s, total); });
    const log_line_hook hook(
        [&](const QString &line) { story.append(message_of(line).trimmed()); });
    fixture.worker.winos_set_essential_for_arken_desk_extraction(tabs);
    fixture.worker.winos_extract_artifacts();
    return story;
}

} // namespace

class tst_extraction_progress : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void signals_no_progress_within_a_second_data() { add_tab_rows(); }
    void signals_no_progress_within_a_second();
    void signals_the_running_total_after_more_than_a_second_data() { add_tab_rows(); }
    void signals_the_running_total_after_more_than_a_second();
    void signals_once_when_a_second_passes_once();
    void measures_the_time_since_the_timer_was_started();
    void logs_and_signals_in_one_order();
    void signals_the_rows_of_a_tab_before_its_last_line();

    void stops_when_cancelled_data();
    void stops_when_cancelled();
    void stops_within_the_last_user_when_cancelled_data() { add_tab_rows(); }
    void stops_within_the_last_user_when_cancelled();
    void stops_before_a_user_without_records_when_cancelled_data();
    void stops_before_a_user_without_records_when_cancelled();
};

void tst_extraction_progress::signals_no_progress_within_a_second()
{
    sample_fixture fixture;
    fixture.worker.milliseconds = 1000;
    fixture.extract(current_tab().name);
    QCOMPARE(fixture.signalled_totals(), QList<qint64>());
    QVERIFY(!fixture.worker.elapsed_timer.isValid());
}

void tst_extraction_progress::signals_the_running_total_after_more_than_a_second()
{
    sample_fixture fixture;
    fixture.worker.milliseconds = 1001;
    fixture.worker.record_count = 100;
    fixture.extract(current_tab().name);
    QCOMPARE(fixture.signalled_totals(), (QList<qint64>{101, 102, 103}));
    QVERIFY(fixture.worker.elapsed_timer.isValid());
}

void tst_extraction_progress::signals_once_when_a_second_passes_once()
{
    sample_fixture fixture;
    fixture.on_row([&](qint64) { fixture.worker.milliseconds = 0; });
    fixture.extract(u"metro_apps"_s);
    QCOMPARE(fixture.signalled_totals(), QList<qint64>{1});
}

void tst_extraction_progress::measures_the_time_since_the_timer_was_started()
{
    winos_probe worker;
    worker.elapsed_timer.start();
    const qint64 before = worker.elapsed_timer.elapsed();
    const qint64 measured = worker.real_milliseconds();
    QVERIFY(before <= measured);
    QVERIFY(measured <= worker.elapsed_timer.elapsed());
}

// A tab's two signals come after its last line and before the first line of the next tab.
void tst_extraction_progress::logs_and_signals_in_one_order()
{
    sample_fixture fixture;
    fixture.worker.milliseconds = 1000;
    QCOMPARE(story_of_run(fixture, {u"registered_apps"_s, u"metro_apps"_s, u"install_apps_64"_s}),
             (QStringList{u"[extract_plugins_artifacts]---STARTS---"_s,
                          u"[extract_installed_applications]---ENDS---"_s,
                          u"[extract_installed_applications]---ENDS---"_s, u"records 3"_s,
                          u"tabs 1"_s, u"[extract_registered_apps]---STARTS---"_s,
                          u"[extract_registered_apps]---ENDS---"_s, u"records 6"_s, u"tabs 2"_s,
                          u"[extract_metro_apps]---STARTS---"_s,
                          u"[extract_metro_apps]---ENDS---"_s, u"records 9"_s, u"tabs 3"_s,
                          u"[extract_plugins_artifacts]---ENDS---"_s, u"records 9"_s}));
}

// More than a second after the last signal a row is signalled as soon as it is counted.
void tst_extraction_progress::signals_the_rows_of_a_tab_before_its_last_line()
{
    sample_fixture fixture;
    fixture.on_row([&](qint64 total) { fixture.worker.milliseconds = total == 2 ? 1000 : 1001; });
    QCOMPARE(story_of_run(fixture, {u"uninstall_apps"_s, u"hidden_desktop_icons_app"_s}),
             (QStringList{
                 u"[extract_plugins_artifacts]---STARTS---"_s,
                 u"[extract_uninstall_applications]---STARTS---"_s, u"records 1"_s, u"records 2"_s,
                 u"[extract_uninstall_applications]---ENDS---"_s, u"records 3"_s, u"tabs 1"_s,
                 u"[extract_hidden_desktop_icons]---STARTS---"_s, u"records 4"_s, u"records 5"_s,
                 u"records 6"_s, u"[extract_hidden_desktop_icons]---ENDS---"_s, u"records 6"_s,
                 u"tabs 2"_s, u"[extract_plugins_artifacts]---ENDS---"_s, u"records 6"_s}));
}

void tst_extraction_progress::stops_when_cancelled_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<qint64>("rows_before");
    for (const QString &tab : all_tabs()) {
        for (qint64 rows = 0; rows <= sample_row_count; ++rows)
            QTest::addRow("%s after %lld rows", qUtf8Printable(tab), static_cast<long long>(rows))
                << tab << rows;
    }
}

void tst_extraction_progress::stops_when_cancelled()
{
    QFETCH(const QString, tab);
    QFETCH(const qint64, rows_before);
    sample_fixture fixture;
    const auto cancel_at = [&](qint64 total) {
        if (total == rows_before)
            fixture.worker.winos_cancel_extraction();
    };
    cancel_at(0);
    fixture.on_row(cancel_at);
    fixture.extract(tab);

    QCOMPARE(fixture.database().row_count(tab), rows_before);
    QCOMPARE(fixture.worker.record_count, rows_before);
    QVERIFY(!QSqlDatabase::database(tab_named(tab).signature, false).isOpen());
    // Nobody looks at the flag once the last row is written.
    QStringList expected_log = {tab_named(tab).log_line(tab_named(tab).opening)};
    if (rows_before == sample_row_count)
        expected_log += end_line(tab_named(tab));
    QCOMPARE(fixture.log.messages(), expected_log);
}

// No other user follows before whom the flag would be seen.
void tst_extraction_progress::stops_within_the_last_user_when_cancelled()
{
    const result_tab &tab = current_tab();
    sample_fixture fixture;
    fixture.set_source(fixture.volume.root(), {u"ann"_s});
    fixture.worker.find_source_file();
    fixture.log.clear();
    fixture.on_row([&](qint64) { fixture.worker.winos_cancel_extraction(); });
    fixture.extract(tab.name);
    QCOMPARE(fixture.database().row_count(tab.name), 1);
    QCOMPARE(fixture.log.messages(), QStringList{tab.log_line(tab.opening)});
}

void tst_extraction_progress::stops_before_a_user_without_records_when_cancelled_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<qint64>("rows_before");
    for (const QString &tab : all_tabs()) {
        if (!comes_from_users(tab_named(tab)))
            continue;
        QTest::addRow("%s before the first user", qUtf8Printable(tab)) << tab << qint64(0);
        QTest::addRow("%s before the last user", qUtf8Printable(tab)) << tab << sample_row_count;
    }
}

// A user without records offers no record before which the flag could be seen.
void tst_extraction_progress::stops_before_a_user_without_records_when_cancelled()
{
    QFETCH(const QString, tab);
    QFETCH(const qint64, rows_before);
    worker_fixture fixture;
    if (rows_before > 0)
        add_sample_evidence(fixture.volume);
    fixture.volume.user(u"zoe"_s);
    fixture.volume.package(u"zoe"_s, u""_s);
    fixture.find_files();
    const auto cancel_at = [&](qint64 total) {
        if (total == rows_before)
            fixture.worker.winos_cancel_extraction();
    };
    cancel_at(0);
    fixture.on_row(cancel_at);
    fixture.extract(tab);
    QCOMPARE(fixture.database().row_count(tab), rows_before);
    QCOMPARE(fixture.log.messages(), QStringList{tab_named(tab).log_line(tab_named(tab).opening)});
}

TEST_MAIN(tst_extraction_progress)

#include "tst_extraction_progress.moc"
