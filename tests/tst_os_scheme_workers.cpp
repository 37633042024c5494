#include "plugin_helper_functions.h"
#include "test_main.h"
#include "windows_installed_applications_ios_uid.h"
#include "windows_installed_applications_macos.h"
#include "windows_installed_applications_winos.h"

#include <QMetaMethod>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

// The setter family of the workers differs in the scheme's prefix only; each trait names one
// worker.

namespace {

template<typename worker>
class settings_probe : public worker
{
public:
    using worker::bool_cancel_extraction;
    using worker::destination_db_file;
    using worker::destination_result_dir_path;
    using worker::destination_tmp_dir_path;
    using worker::elapsed_timer;
    using worker::engine_type;
    using worker::helper_obj;
    using worker::os_scheme_display;
    using worker::plugin_name;
    using worker::record_count;
    using worker::selected_tabs_list;
    using worker::source_count;
    using worker::source_root_path;
    using worker::tab_processed_count;
};

class macos_probe : public settings_probe<windows_installed_applications_macos>
{
public:
    using windows_installed_applications_macos::extended_attributes_list;
    using windows_installed_applications_macos::system_account_list;
};

class ios_uid_probe : public settings_probe<windows_installed_applications_ios_uid>
{
public:
    using windows_installed_applications_ios_uid::ios_backup_pointer;
};

class winos_probe : public settings_probe<windows_installed_applications_winos>
{
public:
    using windows_installed_applications_winos::system_account_list;
};

struct macos
{
    using probe = macos_probe;
    static constexpr auto prefix = "macos";
    static constexpr auto set_helper = &probe::macos_set_plugin_helper_obj;
    static constexpr auto set_record_count = &probe::macos_set_record_count;
    static constexpr auto set_tab_count = &probe::macos_set_tab_processed_count;
    static constexpr auto set_machine_info = &probe::macos_set_examiner_machine_info;
    static constexpr auto set_general_info = &probe::macos_set_general_info;
    static constexpr auto set_source_info = &probe::macos_set_source_info;
    static constexpr auto set_plugin_name = &probe::macos_set_plugin_name;
    static constexpr auto set_destination = &probe::macos_set_destination_location;
    static constexpr auto set_tabs = &probe::macos_set_essential_for_arken_desk_extraction;
    static constexpr auto set_engine_type = &probe::macos_set_engine_type;
    static constexpr auto set_essentials = &probe::macos_set_essentials;
    static constexpr auto cancel = &probe::macos_cancel_extraction;
    static constexpr auto set_source_count = &probe::macos_set_source_count;
    static constexpr auto find = &probe::macos_find_artifacts_source;
    static constexpr auto extract = &probe::macos_extract_artifacts;
    static constexpr auto records_signal = &probe::signal_extracted_records_of_plugin_macos;
    static constexpr auto tabs_signal = &probe::signal_total_tabs_processed_macos;
};

struct ios_uid
{
    using probe = ios_uid_probe;
    static constexpr auto prefix = "ios_uid";
    static constexpr auto set_helper = &probe::ios_uid_set_plugin_helper_obj;
    static constexpr auto set_record_count = &probe::ios_uid_set_record_count;
    static constexpr auto set_tab_count = &probe::ios_uid_set_tab_processed_count;
    static constexpr auto set_machine_info = &probe::ios_uid_set_examiner_machine_info;
    static constexpr auto set_general_info = &probe::ios_uid_set_general_info;
    static constexpr auto set_source_info = &probe::ios_uid_set_source_info;
    static constexpr auto set_plugin_name = &probe::ios_uid_set_plugin_name;
    static constexpr auto set_destination = &probe::ios_uid_set_destination_location;
    static constexpr auto set_tabs = &probe::ios_uid_set_essential_for_arken_desk_extraction;
    static constexpr auto set_engine_type = &probe::ios_uid_set_engine_type;
    static constexpr auto set_essentials = &probe::ios_uid_set_essentials;
    static constexpr auto cancel = &probe::ios_uid_cancel_extraction;
    static constexpr auto set_source_count = &probe::ios_uid_set_source_count;
    static constexpr auto find = &probe::ios_uid_find_artifacts_source;
    static constexpr auto extract = &probe::ios_uid_extract_artifacts;
    static constexpr auto records_signal = &probe::signal_extracted_records_of_plugin_ios_uid;
    static constexpr auto tabs_signal = &probe::signal_total_tabs_processed_ios_uid;
};

struct winos
{
    using probe = winos_probe;
    static constexpr auto prefix = "winos";
    static constexpr auto set_helper = &probe::winos_set_plugin_helper_obj;
    static constexpr auto set_record_count = &probe::winos_set_record_count;
    static constexpr auto set_tab_count = &probe::winos_set_tab_processed_count;
    static constexpr auto set_machine_info = &probe::winos_set_examiner_machine_info;
    static constexpr auto set_general_info = &probe::winos_set_general_info;
    static constexpr auto set_source_info = &probe::winos_set_source_info;
    static constexpr auto set_plugin_name = &probe::winos_set_plugin_name;
    static constexpr auto set_destination = &probe::winos_set_destination_location;
    static constexpr auto set_tabs = &probe::winos_set_essential_for_arken_desk_extraction;
    static constexpr auto set_engine_type = &probe::winos_set_engine_type;
    static constexpr auto set_essentials = &probe::winos_set_essentials;
    static constexpr auto cancel = &probe::winos_cancel_extraction;
    static constexpr auto set_source_count = &probe::winos_set_source_count;
};

struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info two_accounts()
{
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info source;
    source.source_root_path = u"/mnt/source/"_s;
    source.os_scheme_display = u"a scheme"_s;
    source.system_account_list = {{u"ann"_s, u"second"_s}, {u"Bób"_s, u"text"_s}};
    return source;
}

template<typename scheme>
void check_kept_settings()
{
    typename scheme::probe worker;
    plugin_helper_functions helper;
    (worker.*scheme::set_helper)(&helper);
    (worker.*scheme::set_record_count)(5000000000);
    (worker.*scheme::set_tab_count)(3);
    (worker.*scheme::set_source_info)(two_accounts());
    (worker.*scheme::set_plugin_name)(u" \t Some Artefact \n"_s);
    (worker.*scheme::set_destination)(u"/r/"_s, u"/r/tmp/"_s, u"/r/x.sqlite"_s);
    (worker.*scheme::set_tabs)({u"one"_s, u"two"_s});
    (worker.*scheme::set_engine_type)(7);
    (worker.*scheme::set_source_count)(12);

    QCOMPARE(worker.helper_obj, &helper);
    QCOMPARE(worker.record_count, 5000000000);
    QCOMPARE(worker.tab_processed_count, 3);
    QCOMPARE(worker.source_root_path, u"/mnt/source/"_s);
    QCOMPARE(worker.os_scheme_display, u"a scheme"_s);
    QCOMPARE(worker.plugin_name, u"Some Artefact"_s);
    QCOMPARE(worker.destination_result_dir_path, u"/r/"_s);
    QCOMPARE(worker.destination_tmp_dir_path, u"/r/tmp/"_s);
    QCOMPARE(worker.destination_db_file, u"/r/x.sqlite"_s);
    QCOMPARE(worker.selected_tabs_list, (QStringList{u"one"_s, u"two"_s}));
    QCOMPARE(worker.engine_type, 7);
    QCOMPARE(worker.source_count, 12);
}

/// Everything that a worker keeps, as text.
template<typename probe>
QStringList kept_settings(const probe &worker)
{
    return {QString::number(worker.record_count),
            QString::number(worker.tab_processed_count),
            QString::number(worker.engine_type),
            QString::number(worker.source_count),
            worker.destination_db_file,
            worker.destination_result_dir_path,
            worker.destination_tmp_dir_path,
            worker.source_root_path,
            worker.os_scheme_display,
            worker.plugin_name,
            worker.selected_tabs_list.join(u','),
            worker.bool_cancel_extraction ? u"cancelled"_s : u"running"_s,
            worker.helper_obj != nullptr ? u"helper"_s : u"no helper"_s};
}

template<typename scheme>
void check_settings_that_change_nothing()
{
    typename scheme::probe worker;
    (worker.*scheme::set_source_info)(two_accounts());
    const QStringList before = kept_settings(worker);
    (worker.*scheme::set_machine_info)({3600, u"machine"_s});
    (worker.*scheme::set_general_info)({true, true, true, true, true, u"/log"_s});
    QCOMPARE(kept_settings(worker), before);
}

template<typename scheme>
void check_cancellation()
{
    typename scheme::probe worker;
    QVERIFY(!worker.bool_cancel_extraction);
    (worker.*scheme::set_record_count)(4);
    (worker.*scheme::set_tab_count)(2);
    (worker.*scheme::cancel)();
    QVERIFY(worker.bool_cancel_extraction);
    (worker.*scheme::set_essentials)();
    QVERIFY(!worker.bool_cancel_extraction);
    QCOMPARE(worker.record_count, 4);
    QCOMPARE(worker.tab_processed_count, 2);
}

template<typename scheme>
void check_meta_object()
{
    const QMetaObject meta_object = *typename scheme::probe().metaObject();
    QCOMPARE(meta_object.superClass(), &QWidget::staticMetaObject);
    const QByteArray prefix = scheme::prefix;
    const int first = meta_object.methodOffset();
    QCOMPARE(meta_object.methodCount(), first + 2);
    QCOMPARE(meta_object.indexOfSignal(
                 ("signal_extracted_records_of_plugin_" + prefix + "(qint64)").constData()),
             first);
    QCOMPARE(
        meta_object.indexOfSignal(("signal_total_tabs_processed_" + prefix + "(int)").constData()),
        first + 1);
    QCOMPARE(meta_object.method(first).parameterNames(), QList<QByteArray>{"records"});
    QCOMPARE(meta_object.method(first + 1).parameterNames(), QList<QByteArray>{"count"});
}

/// A worker without anything to extract starts its timer and signals the total that it was handed
/// in, once.
template<typename scheme>
void check_empty_extraction()
{
    typename scheme::probe worker;
    (worker.*scheme::set_record_count)(41);
    (worker.*scheme::set_tabs)({u"install_apps_64"_s});
    const QSignalSpy records(&worker, scheme::records_signal);
    const QSignalSpy tabs(&worker, scheme::tabs_signal);
    (worker.*scheme::find)();
    QCOMPARE(records.size(), 0);
    QVERIFY(!worker.elapsed_timer.isValid());
    (worker.*scheme::extract)();
    QVERIFY(worker.elapsed_timer.isValid());
    QCOMPARE(records, (QList<QVariantList>{{QVariant::fromValue<qint64>(41)}}));
    QCOMPARE(tabs.size(), 0);
}

} // namespace

class tst_os_scheme_workers : public QObject
{
    Q_OBJECT

private slots:
    void every_worker_keeps_its_settings();
    void machine_and_logging_settings_are_not_kept();
    void a_cancellation_holds_until_the_essentials_are_set_and_leaves_the_counts();
    void a_worker_has_two_signals_and_no_slots();
    void macos_and_ios_extractions_signal_the_handed_in_total_once();
    void the_macos_worker_keeps_whole_accounts_and_attributes();
    void the_windows_worker_keeps_the_account_names_alone();
    void the_ios_worker_keeps_the_backup_pointer();
    void settings_may_be_replaced();
    void artifacts_info_is_not_kept();
};

void tst_os_scheme_workers::every_worker_keeps_its_settings()
{
    check_kept_settings<macos>();
    check_kept_settings<ios_uid>();
    check_kept_settings<winos>();
}

void tst_os_scheme_workers::machine_and_logging_settings_are_not_kept()
{
    check_settings_that_change_nothing<macos>();
    check_settings_that_change_nothing<ios_uid>();
    check_settings_that_change_nothing<winos>();
}

void tst_os_scheme_workers::
    a_cancellation_holds_until_the_essentials_are_set_and_leaves_the_counts()
{
    check_cancellation<macos>();
    check_cancellation<ios_uid>();
    check_cancellation<winos>();
}

void tst_os_scheme_workers::a_worker_has_two_signals_and_no_slots()
{
    check_meta_object<macos>();
    check_meta_object<ios_uid>();
    check_meta_object<winos>();
}

void tst_os_scheme_workers::macos_and_ios_extractions_signal_the_handed_in_total_once()
{
    check_empty_extraction<macos>();
    check_empty_extraction<ios_uid>();
}

void tst_os_scheme_workers::the_macos_worker_keeps_whole_accounts_and_attributes()
{
    macos_probe worker;
    worker.macos_set_source_info(two_accounts());
    worker.macos_set_extended_attributes_list({u"com.apple.quarantine"_s});
    QCOMPARE(worker.system_account_list.size(), 2);
    QCOMPARE(worker.system_account_list.at(1).system_user, u"Bób"_s);
    QCOMPARE(worker.system_account_list.at(1).account_text_2, u"text"_s);
    QCOMPARE(worker.extended_attributes_list, QStringList{u"com.apple.quarantine"_s});
}

void tst_os_scheme_workers::the_windows_worker_keeps_the_account_names_alone()
{
    winos_probe worker;
    worker.winos_set_source_info(two_accounts());
    worker.winos_set_source_info(two_accounts());
    QCOMPARE(worker.system_account_list.size(), 2);
    QCOMPARE(worker.system_account_list.at(0).system_user, u"ann"_s);
    QCOMPARE(worker.system_account_list.at(0).account_text_2, QString());
}

void tst_os_scheme_workers::the_ios_worker_keeps_the_backup_pointer()
{
    int parser = 0;
    auto *pointer = reinterpret_cast<ios_uid_backup_parser *>(&parser);
    ios_uid_probe worker;
    worker.ios_uid_set_ios_backup_pointer(pointer);
    QCOMPARE(worker.ios_backup_pointer, pointer);
}

void tst_os_scheme_workers::settings_may_be_replaced()
{
    macos_probe worker;
    worker.macos_set_plugin_name(u"first"_s);
    worker.macos_set_plugin_name(u"second"_s);
    worker.macos_set_source_info(two_accounts());
    worker.macos_set_source_info({});
    QCOMPARE(worker.plugin_name, u"second"_s);
    QCOMPARE(worker.source_root_path, QString());
    QVERIFY(worker.system_account_list.isEmpty());
}

void tst_os_scheme_workers::artifacts_info_is_not_kept()
{
    ios_uid_probe ios_worker;
    const QStringList ios_before = kept_settings(ios_worker);
    ios_worker.ios_uid_set_artifacts_info({true, true, true, true, true, u"/log"_s});
    QCOMPARE(kept_settings(ios_worker), ios_before);
    winos_probe windows_worker;
    const QStringList windows_before = kept_settings(windows_worker);
    windows_worker.winos_set_artifacts_info({true, true, true, true, true, u"/log"_s});
    QCOMPARE(kept_settings(windows_worker), windows_before);
}

TEST_MAIN(tst_os_scheme_workers)
#include "tst_os_scheme_workers.moc"
