#include "log_line.h"
#include "sample_evidence.h"
#include "tab_rows.h"
#include "test_main.h"
#include "worker_fixture.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

/// A worker whose signals are noted in their order: "records TOTAL" and "tabs TOTAL".
struct signalling_fixture : worker_fixture
{
    QStringList events;

    signalling_fixture()
    {
        QObject::connect(&worker, &winos_probe::signal_extracted_records_of_plugin_winos,
                         [this](qint64 total) { note(u"records "_s, total); });
        QObject::connect(&worker, &winos_probe::signal_total_tabs_processed_winos,
                         [this](int total) { note(u"tabs "_s, total); });
    }

    void note(const QString &what, qint64 total) { events.append(what + QString::number(total)); }

    void find_sample()
    {
        add_sample_evidence(volume);
        find_files();
    }

    void extract_tabs(const QStringList &tabs)
    {
        worker.winos_set_essential_for_arken_desk_extraction(tabs);
        worker.winos_extract_artifacts();
    }

    qint64 all_rows() const
    {
        qint64 count = 0;
        for (const QString &tab : all_tabs())
            count += database().row_count(tab);
        return count;
    }
};

const QStringList extraction_without_a_tab = log_lines(
    u"windows_installed_applications_winos::extract_plugin_artifacts"_s,
    {u"[extract_plugins_artifacts]---STARTS---"_s, u"[extract_plugins_artifacts]---ENDS---"_s});

} // namespace

// How the worker runs the tabs that are selected, and what it signals.
class tst_winos_worker : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }
    void fills_all_tabs_and_signals_after_each();
    void fills_tabs_in_its_own_order();
    void fills_a_tab_once_that_is_selected_twice();
    void runs_the_tabs_of_every_known_edition_data();
    void runs_the_tabs_of_every_known_edition();
    void runs_no_tab_for_an_unknown_selection_data();
    void runs_no_tab_for_an_unknown_selection();
    void counts_tabs_that_find_nothing();
    void counts_tabs_without_a_search_before();
    void counts_all_tabs_when_cancelled_before();
    void counts_the_remaining_tabs_when_cancelled_in_one();
    void starts_its_timer();
    void has_no_virtual_source_path();
};

void tst_winos_worker::fills_all_tabs_and_signals_after_each()
{
    signalling_fixture fixture;
    fixture.find_sample();
    fixture.worker.winos_set_record_count(100);
    fixture.worker.winos_set_tab_processed_count(5);
    fixture.extract_tabs(all_tabs());
    QStringList expected;
    for (qint64 tab = 1; tab <= all_tabs().size(); ++tab)
        expected << u"records %1"_s.arg(100 + tab * sample_row_count) << u"tabs %1"_s.arg(5 + tab);
    expected << u"records %1"_s.arg(100 + all_tabs().size() * sample_row_count);
    QCOMPARE(fixture.events, expected);
    for (const QString &tab : all_tabs())
        QCOMPARE(fixture.database().row_count(tab), sample_row_count);
    QCOMPARE(fixture.worker.tab_processed_count, 5 + all_tabs().size());
}

void tst_winos_worker::fills_tabs_in_its_own_order()
{
    signalling_fixture fixture;
    fixture.find_sample();
    QStringList backwards = all_tabs();
    std::reverse(backwards.begin(), backwards.end());
    fixture.extract_tabs(backwards);
    QStringList expected{u"[extract_plugins_artifacts]---STARTS---"_s};
    for (const result_tab *tab : result_tabs())
        expected << tab->log_line(tab->opening) << tab->log_line("---ENDS---"_L1);
    QCOMPARE(fixture.log.messages(), expected << u"[extract_plugins_artifacts]---ENDS---"_s);
}

void tst_winos_worker::fills_a_tab_once_that_is_selected_twice()
{
    signalling_fixture fixture;
    fixture.find_sample();
    fixture.extract_tabs({u"metro_apps"_s, u"metro_apps"_s});
    QCOMPARE(fixture.events, (QStringList{u"records 3"_s, u"tabs 1"_s, u"records 3"_s}));
}

void tst_winos_worker::runs_the_tabs_of_every_known_edition_data()
{
    QTest::addColumn<int>("engine_type");
    QTest::addColumn<QStringList>("events");
    const QStringList run = {u"records 3"_s, u"tabs 1"_s, u"records 3"_s};
    const QStringList nothing = {u"records 0"_s};
    QTest::newRow("-1, none yet") << -1 << nothing;
    QTest::newRow("0, desk") << 0 << run;
    QTest::newRow("1, sweep") << 1 << run;
    QTest::newRow("2, field") << 2 << run;
    QTest::newRow("3, unknown") << 3 << nothing;
    QTest::newRow("5, unknown") << 5 << nothing;
}

void tst_winos_worker::runs_the_tabs_of_every_known_edition()
{
    QFETCH(const int, engine_type);
    QFETCH(const QStringList, events);
    signalling_fixture fixture;
    fixture.find_sample();
    fixture.worker.winos_set_engine_type(engine_type);
    fixture.extract_tabs({u"metro_apps"_s});
    QCOMPARE(fixture.events, events);
    if (events.size() == 1)
        QCOMPARE(fixture.log.lines(), extraction_without_a_tab);
}

void tst_winos_worker::runs_no_tab_for_an_unknown_selection_data()
{
    QTest::addColumn<QStringList>("selection");
    QTest::newRow("nothing is selected") << QStringList();
    QTest::newRow("the case is wrong") << QStringList{u"Metro_Apps"_s, u"METRO_APPS"_s};
    QTest::newRow("the name is longer or shorter") << QStringList{u"metro_apps "_s, u"metro"_s};
    QTest::newRow("the name is another's") << QStringList{u"browser_history"_s, u""_s, QString()};
}

void tst_winos_worker::runs_no_tab_for_an_unknown_selection()
{
    QFETCH(const QStringList, selection);
    signalling_fixture fixture;
    fixture.find_sample();
    fixture.extract_tabs(selection);
    QCOMPARE(fixture.events, QStringList{u"records 0"_s});
    QCOMPARE(fixture.log.lines(), extraction_without_a_tab);
    QCOMPARE(fixture.all_rows(), 0);
}

void tst_winos_worker::counts_tabs_that_find_nothing()
{
    signalling_fixture fixture;
    fixture.find_files();
    fixture.extract_tabs({u"install_apps_64"_s, u"metro_apps"_s});
    QCOMPARE(fixture.events, (QStringList{u"records 0"_s, u"tabs 1"_s, u"records 0"_s, u"tabs 2"_s,
                                          u"records 0"_s}));
}

void tst_winos_worker::counts_tabs_without_a_search_before()
{
    signalling_fixture fixture;
    add_sample_evidence(fixture.volume);
    fixture.volume.write();
    fixture.set_source(fixture.volume.root(), fixture.volume.accounts());
    // The backup copy of the SOFTWARE hive is the one file that an artefact looks for itself.
    fixture.extract_tabs(all_tabs());
    QCOMPARE(fixture.all_rows(), 0);
    QCOMPARE(fixture.worker.tab_processed_count, all_tabs().size());
}

void tst_winos_worker::counts_all_tabs_when_cancelled_before()
{
    signalling_fixture fixture;
    fixture.find_sample();
    fixture.worker.winos_cancel_extraction();
    fixture.extract_tabs(all_tabs());
    QStringList expected;
    for (qsizetype tabs = 1; tabs <= all_tabs().size(); ++tabs)
        expected += {u"records 0"_s, u"tabs "_s + QString::number(tabs)};
    QCOMPARE(fixture.events, expected << u"records 0"_s);
    QCOMPARE(fixture.all_rows(), 0);
}

void tst_winos_worker::counts_the_remaining_tabs_when_cancelled_in_one()
{
    signalling_fixture fixture;
    fixture.find_sample();
    fixture.on_row([&](qint64 total) {
        if (total == 4)
            fixture.worker.winos_cancel_extraction();
    });
    fixture.extract_tabs(all_tabs());
    QCOMPARE(fixture.database().row_count(u"install_apps_64"_s), 3);
    QCOMPARE(fixture.database().row_count(u"install_apps_32"_s), 1);
    QCOMPARE(fixture.all_rows(), 4);
    QCOMPARE(fixture.worker.tab_processed_count, all_tabs().size());
    QCOMPARE(fixture.events.last(), u"records 4"_s);
    QCOMPARE(fixture.log.messages().last(), u"[extract_plugins_artifacts]---ENDS---"_s);
}

void tst_winos_worker::starts_its_timer()
{
    worker_fixture fixture;
    QVERIFY(!fixture.worker.elapsed_timer.isValid());
    fixture.worker.winos_extract_artifacts();
    QVERIFY(fixture.worker.elapsed_timer.isValid());
}

void tst_winos_worker::has_no_virtual_source_path()
{
    signalling_fixture fixture;
    fixture.find_sample();
    fixture.extract_tabs(all_tabs());
    QCOMPARE(fixture.worker.virtual_source_path, QString());
}

TEST_MAIN(tst_winos_worker)
#include "tst_winos_worker.moc"
