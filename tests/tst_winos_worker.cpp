#include "log_line_hook.h"
#include "sample_evidence.h"
#include "tab_rows.h"
#include "test_main.h"
#include "worker_fixture.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

const QString worker_origin =
    u"[ARKEN_DESK][Artifacts Extraction][windows_installed_applications_winos::"_s;

QStringList find_log(const QStringList &messages)
{
    QStringList lines;
    for (const QString &message : messages)
        lines.append(worker_origin + u"find_source_file]:-- "_s + message);
    return lines;
}

const QString find_starts = u"[find_source_file]---STARTS---"_s;
const QString find_ends = u"[find_source_file]---ENDS---"_s;

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

const QStringList extraction_without_a_tab = {
    worker_origin + u"extract_plugin_artifacts]:-- [extract_plugins_artifacts]---STARTS---"_s,
    worker_origin + u"extract_plugin_artifacts]:-- [extract_plugins_artifacts]---ENDS---"_s};

/// Writes the machine's two hives and, for each account, a hive and a package folder.
void write_volume(evidence_volume &volume, const QStringList &accounts)
{
    volume.system();
    volume.software();
    for (const QString &account : accounts) {
        volume.user(account);
        volume.package(account, u""_s);
    }
    volume.write();
}

} // namespace

class tst_winos_worker : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void finds_the_hives_and_the_users_files();
    void logs_what_is_missing_data();
    void logs_what_is_missing();
    void leaves_the_backup_of_the_software_hive_alone();
    void takes_whatever_stands_at_the_place_of_a_hive();
    void takes_users_from_the_account_list_alone();
    void finds_users_of_every_script_and_odd_names();
    void leaves_upper_and_lower_case_to_the_file_system();
    void joins_its_paths_to_the_root_as_it_stands();
    void forgets_what_an_earlier_search_found();
    void forgets_the_accounts_of_an_earlier_source();
    void stops_before_the_first_account_when_cancelled();
    void stops_before_the_third_account_when_cancelled_in_the_second();
    void finishes_the_account_in_which_it_is_cancelled();

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

void tst_winos_worker::finds_the_hives_and_the_users_files()
{
    worker_fixture fixture;
    write_volume(fixture.volume, {u"eve"_s, u"ann"_s});
    const evidence_volume &volume = fixture.volume;
    fixture.set_source(volume.root(), volume.accounts());
    fixture.worker.winos_find_artifacts_source();

    QCOMPARE(fixture.worker.hive_path_system, volume.system_path());
    QCOMPARE(fixture.worker.hive_path_software, volume.software_path());
    QCOMPARE(fixture.worker.ntuser_path_list,
             (QStringList{volume.ntuser_path(u"eve"_s), volume.ntuser_path(u"ann"_s)}));
    QCOMPARE(fixture.worker.packages_dir_list,
             (QStringList{volume.packages_path(u"eve"_s), volume.packages_path(u"ann"_s)}));
    QCOMPARE(fixture.log.lines(), find_log({find_starts, find_ends}));
}

void tst_winos_worker::logs_what_is_missing_data()
{
    QTest::addColumn<QString>("missing");
    QTest::addColumn<QString>("line");
    QTest::newRow("the SYSTEM hive") << u"Windows/System32/config/SYSTEM"_s
                                     << u"[find_source_file] hivepath_sys -- FILE NOT EXISTS"_s;
    QTest::newRow("the SOFTWARE hive") << u"Windows/System32/config/SOFTWARE"_s
                                       << u"[find_source_file]  hivepath_soft -- FILE NOT EXISTS"_s;
    QTest::newRow("a user's hive")
        << u"Users/ann/NTUSER.DAT"_s << u"[find_source_file] ntuser_path -- FILE NOT EXISTS"_s;
    QTest::newRow("a user's package folder")
        << u"Users/ann/AppData/Local/Packages/"_s << u"[find_source_file]  -- FILE NOT EXISTS"_s;
}

void tst_winos_worker::logs_what_is_missing()
{
    QFETCH(const QString, missing);
    QFETCH(const QString, line);
    worker_fixture fixture;
    write_volume(fixture.volume, {u"ann"_s, u"bob"_s});
    const QString path = fixture.volume.path(missing);
    QVERIFY(missing.endsWith(u'/') ? QDir().rmdir(path) : QFile::remove(path));
    fixture.set_source(fixture.volume.root(), {u"ann"_s, u"bob"_s});
    fixture.worker.find_source_file();

    QCOMPARE(fixture.log.lines(), find_log({find_starts, line + path, find_ends}));
    QStringList found = {fixture.worker.hive_path_system, fixture.worker.hive_path_software};
    found += fixture.worker.ntuser_path_list + fixture.worker.packages_dir_list;
    found.removeAll(u""_s);
    QStringList expected = {
        fixture.volume.system_path(),           fixture.volume.software_path(),
        fixture.volume.ntuser_path(u"ann"_s),   fixture.volume.ntuser_path(u"bob"_s),
        fixture.volume.packages_path(u"ann"_s), fixture.volume.packages_path(u"bob"_s)};
    expected.removeAll(path);
    QCOMPARE(found, expected);
}

void tst_winos_worker::leaves_the_backup_of_the_software_hive_alone()
{
    worker_fixture fixture;
    fixture.volume.reg_back_software();
    fixture.find_files();
    QCOMPARE(fixture.worker.hive_path_software, QString());
}

void tst_winos_worker::takes_whatever_stands_at_the_place_of_a_hive()
{
    worker_fixture fixture;
    fixture.volume.folder(u"Windows/System32/config/SYSTEM"_s);
    fixture.volume.file(u"Windows/System32/config/SOFTWARE"_s, "no hive");
    fixture.volume.folder(u"Users/ann/NTUSER.DAT"_s);
    fixture.volume.file(u"Users/bob/NTUSER.DAT"_s);
    fixture.volume.folder(u"Users/bob/AppData/Local/Packages"_s);
    fixture.set_source(fixture.volume.root(), {u"ann"_s, u"bob"_s});
    fixture.worker.find_source_file();
    QCOMPARE(fixture.worker.hive_path_system, fixture.volume.system_path());
    QCOMPARE(fixture.worker.hive_path_software, fixture.volume.software_path());
    QCOMPARE(fixture.worker.ntuser_path_list, (QStringList{fixture.volume.ntuser_path(u"ann"_s),
                                                           fixture.volume.ntuser_path(u"bob"_s)}));
    QCOMPARE(fixture.worker.packages_dir_list, QStringList{fixture.volume.packages_path(u"bob"_s)});
}

void tst_winos_worker::takes_users_from_the_account_list_alone()
{
    worker_fixture fixture;
    write_volume(fixture.volume, {u"ann"_s});
    fixture.set_source(fixture.volume.root(), {});
    fixture.worker.find_source_file();
    QCOMPARE(fixture.worker.ntuser_path_list, QStringList());
    QCOMPARE(fixture.worker.packages_dir_list, QStringList());
    QCOMPARE(fixture.log.lines(), find_log({find_starts, find_ends}));
}

void tst_winos_worker::finds_users_of_every_script_and_odd_names()
{
    const QStringList accounts = {u"Żółć"_s,    u"山田太郎"_s,   u"مريم"_s,   u"user\U0001F600"_s,
                                  u" blank "_s, u"per%20cent"_s, u"o'neil"_s, u"a;b\"c"_s};
    worker_fixture fixture;
    write_volume(fixture.volume, accounts);
    fixture.set_source(fixture.volume.root(), accounts);
    fixture.worker.find_source_file();
    QStringList hives;
    QStringList folders;
    for (const QString &account : accounts) {
        hives.append(fixture.volume.ntuser_path(account));
        folders.append(fixture.volume.packages_path(account));
    }
    QCOMPARE(fixture.worker.ntuser_path_list, hives);
    QCOMPARE(fixture.worker.packages_dir_list, folders);
}

void tst_winos_worker::leaves_upper_and_lower_case_to_the_file_system()
{
    worker_fixture fixture;
    fixture.volume.file(u"windows/system32/CONFIG/software"_s);
    const bool same_to_the_file_system =
        QFileInfo::exists(fixture.volume.path(u"WINDOWS/SYSTEM32/config/SOFTWARE"_s));
    fixture.find_files();
    QCOMPARE(fixture.worker.hive_path_software,
             same_to_the_file_system ? fixture.volume.software_path() : QString());
}

void tst_winos_worker::joins_its_paths_to_the_root_as_it_stands()
{
    worker_fixture fixture;
    write_volume(fixture.volume, {u"ann"_s});
    const QString root = fixture.volume.root().chopped(1);
    fixture.set_source(root, {u"ann"_s});
    fixture.worker.find_source_file();
    QCOMPARE(fixture.log.lines(),
             find_log({find_starts,
                       u"[find_source_file] hivepath_sys -- FILE NOT EXISTS"_s + root +
                           u"Windows/System32/config/SYSTEM"_s,
                       u"[find_source_file]  hivepath_soft -- FILE NOT EXISTS"_s + root +
                           u"Windows/System32/config/SOFTWARE"_s,
                       u"[find_source_file] ntuser_path -- FILE NOT EXISTS"_s + root +
                           u"Users/ann/NTUSER.DAT"_s,
                       u"[find_source_file]  -- FILE NOT EXISTS"_s + root +
                           u"Users/ann/AppData/Local/Packages/"_s,
                       find_ends}));
    QCOMPARE(fixture.worker.hive_path_software, QString());
    QCOMPARE(fixture.worker.ntuser_path_list, QStringList());
}

void tst_winos_worker::forgets_what_an_earlier_search_found()
{
    worker_fixture fixture;
    write_volume(fixture.volume, {u"ann"_s});
    fixture.find_files();
    QCOMPARE(fixture.worker.ntuser_path_list.size(), 1);
    fixture.worker.find_source_file();
    QCOMPARE(fixture.worker.ntuser_path_list.size(), 1);
    QCOMPARE(fixture.worker.packages_dir_list.size(), 1);

    const evidence_volume empty;
    fixture.set_source(empty.root(), {u"ann"_s});
    fixture.worker.find_source_file();
    QCOMPARE(fixture.worker.hive_path_system, QString());
    QCOMPARE(fixture.worker.hive_path_software, QString());
    QCOMPARE(fixture.worker.ntuser_path_list, QStringList());
    QCOMPARE(fixture.worker.packages_dir_list, QStringList());
}

void tst_winos_worker::forgets_the_accounts_of_an_earlier_source()
{
    worker_fixture fixture;
    write_volume(fixture.volume, {u"ann"_s, u"bob"_s});
    fixture.set_source(fixture.volume.root(), {u"ann"_s});
    fixture.set_source(fixture.volume.root(), {u"bob"_s});
    fixture.worker.find_source_file();
    QCOMPARE(fixture.worker.ntuser_path_list, QStringList{fixture.volume.ntuser_path(u"bob"_s)});
}

void tst_winos_worker::stops_before_the_first_account_when_cancelled()
{
    worker_fixture fixture;
    write_volume(fixture.volume, {u"ann"_s});
    fixture.worker.winos_cancel_extraction();
    fixture.set_source(fixture.volume.root(), {u"ann"_s});
    fixture.worker.find_source_file();
    QCOMPARE(fixture.worker.hive_path_software, fixture.volume.software_path());
    QCOMPARE(fixture.worker.ntuser_path_list, QStringList());
    QCOMPARE(fixture.log.lines(), find_log({find_starts}));
}

namespace {

/// Looks for the files of five accounts, of which the named file is missing, and cancels in the
/// line that tells so.
void find_and_cancel_at(worker_fixture &fixture, const QString &missing)
{
    const QStringList accounts = {u"u1"_s, u"u2"_s, u"u3"_s, u"u4"_s, u"u5"_s};
    write_volume(fixture.volume, accounts);
    const QString path = fixture.volume.path(missing);
    QVERIFY(missing.endsWith(u'/') ? QDir().rmdir(path) : QFile::remove(path));
    fixture.set_source(fixture.volume.root(), accounts);
    const log_line_hook hook([&](const QString &line) {
        if (line.endsWith(path))
            fixture.worker.winos_cancel_extraction();
    });
    fixture.worker.find_source_file();
}

} // namespace

void tst_winos_worker::stops_before_the_third_account_when_cancelled_in_the_second()
{
    worker_fixture fixture;
    const QString missing = u"Users/u2/AppData/Local/Packages/"_s;
    find_and_cancel_at(fixture, missing);
    QCOMPARE(fixture.worker.ntuser_path_list, (QStringList{fixture.volume.ntuser_path(u"u1"_s),
                                                           fixture.volume.ntuser_path(u"u2"_s)}));
    QCOMPARE(fixture.worker.packages_dir_list, QStringList{fixture.volume.packages_path(u"u1"_s)});
    QCOMPARE(fixture.log.lines(),
             find_log({find_starts, u"[find_source_file]  -- FILE NOT EXISTS"_s +
                                        fixture.volume.path(missing)}));
}

void tst_winos_worker::finishes_the_account_in_which_it_is_cancelled()
{
    worker_fixture fixture;
    const QString missing = u"Users/u3/NTUSER.DAT"_s;
    find_and_cancel_at(fixture, missing);
    QCOMPARE(fixture.worker.ntuser_path_list, (QStringList{fixture.volume.ntuser_path(u"u1"_s),
                                                           fixture.volume.ntuser_path(u"u2"_s)}));
    QCOMPARE(
        fixture.worker.packages_dir_list,
        (QStringList{fixture.volume.packages_path(u"u1"_s), fixture.volume.packages_path(u"u2"_s),
                     fixture.volume.packages_path(u"u3"_s)}));
    QCOMPARE(fixture.log.lines(),
             find_log({find_starts, u"[find_source_file] ntuser_path -- FILE NOT EXISTS"_s +
                                        fixture.volume.path(missing)}));
}

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
    QCOMPARE(
        fixture.log.messages(),
        (QStringList{u"[extract_plugins_artifacts]---STARTS---"_s,
                     u"[extract_installed_applications]---ENDS---"_s,
                     u"[extract_installed_applications]---ENDS---"_s,
                     u"[extract_installed_applications_for_32]---ENDS---"_s,
                     u"[extract_installed_applications_for_32]---ENDS---"_s,
                     u"[extract_uninstall_applications]---STARTS---"_s,
                     u"[extract_uninstall_applications]---ENDS---"_s,
                     u"[extract_registered_apps]---STARTS---"_s,
                     u"[extract_registered_apps]---ENDS---"_s,
                     u"[extract_metro_apps]---STARTS---"_s, u"[extract_metro_apps]---ENDS---"_s,
                     u"[extract_previously_executed_programs]---STARTS---"_s,
                     u"[extract_previously_executed_programs]---ENDS---"_s,
                     u"[extract_third_party_applications]---STARTS---"_s,
                     u"[extract_third_party_applications]---ENDS---"_s,
                     u"[extract_hidden_desktop_icons]---STARTS---"_s,
                     u"[extract_hidden_desktop_icons]---ENDS---"_s,
                     u"[extract_plugins_artifacts]---ENDS---"_s}));
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
    // The backup copy of the SOFTWARE hive is the one file that an extractor looks for itself.
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
    for (int tabs = 1; tabs <= 8; ++tabs)
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
