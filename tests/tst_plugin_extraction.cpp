#include "evidence_volume.h"
#include "host_double.h"
#include "log_capture.h"
#include "log_line.h"
#include "log_line_hook.h"
#include "result_database.h"
#include "test_main.h"
#include "windows_installed_applications.h"

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

const QString find_operation = u"windows_installed_applications::pub_find_source_file"_s;
const QString extract_operation = u"windows_installed_applications::pub_extract_artifacts"_s;

QString scheme_failure(const QString &scheme)
{
    return u"------FAILED------- supported os scheme internal not matched, received os scheme "
           u"internal =  %1, plugin name is Windows Installed Applications"_s.arg(scheme);
}

/// A volume with two applications.
evidence_volume &two_applications(evidence_volume &volume)
{
    volume.software().key(u"Microsoft\\Windows\\CurrentVersion\\Uninstall\\A"_s);
    volume.software().key(u"Microsoft\\Windows\\CurrentVersion\\Uninstall\\B"_s);
    volume.write();
    return volume;
}

/// The messages of the debug log and the signals of an extraction, in the order in which the host
/// gets them.
QStringList lines_and_signals(host_double &host)
{
    host.settings.general.debug_mode_status = true;
    host.settings.general.debug_print_on_terminal = true;
    host.set_up();
    host.plugin().pub_find_source_file();
    QStringList all;
    host.on_event([&all](const QString &event) { all.append(event); });
    const log_line_hook hook([&all](const QString &line) { all.append(message_of(line)); });
    host.plugin().pub_extract_artifacts();
    return all;
}

} // namespace

// Finding sources and extracting, as the host sees them: signals and log lines.
class tst_plugin_extraction : public QObject
{
    Q_OBJECT

private slots:
    void an_unknown_scheme_is_logged_when_sources_are_sought_data();
    void an_unknown_scheme_is_logged_when_sources_are_sought();
    void an_unknown_scheme_still_signals_and_ends_data();
    void an_unknown_scheme_still_signals_and_ends();
    void a_scheme_without_artefacts_signals_the_total_once_data();
    void a_scheme_without_artefacts_signals_the_total_once();
    void a_cancelled_extraction_only_starts_data();
    void a_cancelled_extraction_only_starts();
    void a_cancelled_extraction_of_an_unknown_scheme_ends();
    void a_windows_extraction_relays_the_worker_signals();
    void a_second_extraction_goes_on_counting();
    void essentials_between_extractions_start_anew();
    void an_unknown_edition_extracts_nothing();
    void sources_are_sought_although_cancelled();
    void lines_and_signals_of_an_extraction_come_in_order();
    void lines_and_signals_without_artefacts_come_in_order_data();
    void lines_and_signals_without_artefacts_come_in_order();
};

void tst_plugin_extraction::an_unknown_scheme_is_logged_when_sources_are_sought_data()
{
    QTest::addColumn<QString>("scheme");
    QTest::newRow("wrong letter case") << u"winos"_s;
    QTest::newRow("empty, as in a default record") << QString();
    QTest::newRow("another system") << u"Linux"_s;
}

void tst_plugin_extraction::an_unknown_scheme_is_logged_when_sources_are_sought()
{
    QFETCH(const QString, scheme);
    const log_capture log;
    evidence_volume volume;
    host_double host(volume);
    host.settings.general = log.general_info();
    host.settings.source.os_scheme_internal = scheme;
    host.set_up();
    log.clear();
    host.plugin().pub_find_source_file();
    QCOMPARE(log.lines(), QStringList{log_line(find_operation, scheme_failure(scheme))});
    QCOMPARE(host.events(), QStringList());
}

void tst_plugin_extraction::an_unknown_scheme_still_signals_and_ends_data()
{
    an_unknown_scheme_is_logged_when_sources_are_sought_data();
}

void tst_plugin_extraction::an_unknown_scheme_still_signals_and_ends()
{
    QFETCH(const QString, scheme);
    const log_capture log;
    evidence_volume volume;
    host_double host(volume);
    host.settings.general = log.general_info();
    host.settings.source.os_scheme_internal = scheme;
    host.set_up();
    host.plugin().slot_extracted_records_of_plugin(5);
    host.clear_events();
    log.clear();
    host.plugin().pub_extract_artifacts();
    QCOMPARE(host.events(), (QStringList{u"records 0"_s, u"records 5"_s}));
    QCOMPARE(log.lines(), log_lines(extract_operation,
                                    {u"[pub_extract_artifacts] - START"_s, scheme_failure(scheme),
                                     u"[pub_extract_artifacts] - END"_s}));
}

void tst_plugin_extraction::a_scheme_without_artefacts_signals_the_total_once_data()
{
    QTest::addColumn<QString>("scheme");
    QTest::addColumn<int>("earlier_rows");
    QTest::newRow("a macOS volume on a fresh run") << u"macOS"_s << 0;
    QTest::newRow("a macOS volume after rows of others") << u"macOS"_s << 5;
    QTest::newRow("an iOS backup on a fresh run") << u"iOS_UID"_s << 0;
    QTest::newRow("an iOS backup after rows of others") << u"iOS_UID"_s << 5;
}

void tst_plugin_extraction::a_scheme_without_artefacts_signals_the_total_once()
{
    QFETCH(const QString, scheme);
    QFETCH(const int, earlier_rows);
    const log_capture log;
    evidence_volume volume;
    host_double host(two_applications(volume));
    host.settings.general = log.general_info();
    host.settings.source.os_scheme_internal = scheme;
    host.set_up();
    host.plugin().slot_extracted_records_of_plugin(earlier_rows);
    host.clear_events();
    log.clear();
    host.extract();
    // The start, the worker's own signal, and the final total.
    const QString total = u"records "_s + QString::number(earlier_rows);
    QCOMPARE(host.events(), (QStringList{u"records 0"_s, total, total}));
    QCOMPARE(log.messages(), (QStringList{u"[pub_extract_artifacts] - START"_s,
                                          u"[pub_extract_artifacts] - END"_s}));
}

void tst_plugin_extraction::a_cancelled_extraction_only_starts_data()
{
    QTest::addColumn<QString>("scheme");
    QTest::newRow("a Windows volume") << u"winOS"_s;
    QTest::newRow("a macOS volume") << u"macOS"_s;
    QTest::newRow("an iOS backup") << u"iOS_UID"_s;
}

void tst_plugin_extraction::a_cancelled_extraction_only_starts()
{
    QFETCH(const QString, scheme);
    const log_capture log;
    evidence_volume volume;
    host_double host(two_applications(volume));
    host.settings.general = log.general_info();
    host.settings.source.os_scheme_internal = scheme;
    host.set_up();
    host.plugin().pub_cancel_extraction();
    log.clear();
    host.plugin().pub_extract_artifacts();
    QCOMPARE(host.events(), QStringList{u"records 0"_s});
    QCOMPARE(log.messages(), QStringList{u"[pub_extract_artifacts] - START"_s});
}

void tst_plugin_extraction::a_cancelled_extraction_of_an_unknown_scheme_ends()
{
    const log_capture log;
    evidence_volume volume;
    host_double host(volume);
    host.settings.general = log.general_info();
    host.settings.source.os_scheme_internal = u"other"_s;
    host.set_up();
    host.plugin().pub_cancel_extraction();
    log.clear();
    host.plugin().pub_extract_artifacts();
    QCOMPARE(log.messages(),
             (QStringList{u"[pub_extract_artifacts] - START"_s, scheme_failure(u"other"_s),
                          u"[pub_extract_artifacts] - END"_s}));
}

void tst_plugin_extraction::a_windows_extraction_relays_the_worker_signals()
{
    evidence_volume volume;
    host_double host(two_applications(volume));
    host.settings.tabs = {u"install_apps_32"_s, u"install_apps_64"_s};
    host.run();
    QCOMPARE(host.events(),
             (QStringList{u"records 0"_s, u"records 2"_s, u"tabs 1"_s, u"records 2"_s, u"tabs 2"_s,
                          u"records 2"_s, u"records 2"_s}));
}

void tst_plugin_extraction::a_second_extraction_goes_on_counting()
{
    evidence_volume volume;
    host_double host(two_applications(volume));
    host.settings.tabs = {u"install_apps_64"_s};
    host.run();
    host.clear_events();
    host.extract();
    QCOMPARE(host.events(), (QStringList{u"records 0"_s, u"records 4"_s, u"tabs 2"_s,
                                         u"records 4"_s, u"records 4"_s}));
}

void tst_plugin_extraction::essentials_between_extractions_start_anew()
{
    evidence_volume volume;
    host_double host(two_applications(volume));
    host.settings.tabs = {u"install_apps_64"_s};
    host.run();
    host.clear_events();
    host.run();
    QCOMPARE(host.events(), (QStringList{u"records 0"_s, u"records 2"_s, u"tabs 1"_s,
                                         u"records 2"_s, u"records 2"_s}));
}

void tst_plugin_extraction::an_unknown_edition_extracts_nothing()
{
    evidence_volume volume;
    host_double host(two_applications(volume));
    host.settings.engine_type = 5;
    host.run();
    QCOMPARE(host.events(), (QStringList{u"records 0"_s, u"records 0"_s, u"records 0"_s}));
    QCOMPARE(result_database(host.database_path()).row_count(u"install_apps_64"_s), 0);
}

// The object looks at no cancellation here; the worker looks at it before each account.
void tst_plugin_extraction::sources_are_sought_although_cancelled()
{
    const log_capture log;
    evidence_volume volume;
    host_double host(two_applications(volume));
    host.settings.general = log.general_info();
    host.set_up();
    host.plugin().pub_cancel_extraction();
    log.clear();
    host.plugin().pub_find_source_file();
    const QStringList messages = log.messages();
    QCOMPARE(messages.first(), u"[find_source_file]---STARTS---"_s);
    QCOMPARE(messages.last(), u"[find_source_file]---ENDS---"_s);
}

void tst_plugin_extraction::lines_and_signals_of_an_extraction_come_in_order()
{
    evidence_volume volume;
    host_double host(two_applications(volume));
    host.settings.tabs = {u"install_apps_64"_s, u"registered_apps"_s};
    QCOMPARE(lines_and_signals(host), (QStringList{
                                          u"[pub_extract_artifacts] - START"_s,
                                          u"records 0"_s,
                                          u"[extract_plugins_artifacts]---STARTS---"_s,
                                          u"[extract_installed_applications]---ENDS---"_s,
                                          u"[extract_installed_applications]---ENDS---"_s,
                                          u"records 2"_s,
                                          u"tabs 1"_s,
                                          u"[extract_registered_apps]---STARTS---"_s,
                                          u"[extract_registered_apps]---ENDS---"_s,
                                          u"records 2"_s,
                                          u"tabs 2"_s,
                                          u"[extract_plugins_artifacts]---ENDS---"_s,
                                          u"records 2"_s,
                                          u"records 2"_s,
                                          u"[pub_extract_artifacts] - END"_s,
                                      }));
}

void tst_plugin_extraction::lines_and_signals_without_artefacts_come_in_order_data()
{
    QTest::addColumn<QString>("scheme");
    QTest::addColumn<QString>("between");
    QTest::newRow("a macOS volume") << u"macOS"_s << u"records 0"_s;
    QTest::newRow("an iOS backup") << u"iOS_UID"_s << u"records 0"_s;
    QTest::newRow("an unknown system") << u"other"_s << scheme_failure(u"other"_s);
}

void tst_plugin_extraction::lines_and_signals_without_artefacts_come_in_order()
{
    QFETCH(const QString, scheme);
    QFETCH(const QString, between);
    evidence_volume volume;
    host_double host(two_applications(volume));
    host.settings.source.os_scheme_internal = scheme;
    QCOMPARE(lines_and_signals(host),
             (QStringList{u"[pub_extract_artifacts] - START"_s, u"records 0"_s, between,
                          u"records 0"_s, u"[pub_extract_artifacts] - END"_s}));
}

TEST_MAIN(tst_plugin_extraction)
#include "tst_plugin_extraction.moc"
