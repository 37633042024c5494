#include "evidence_volume.h"
#include "host_double.h"
#include "log_capture.h"
#include "plugin_helper_functions.h"
#include "plugin_static_function.h"
#include "result_database.h"
#include "test_main.h"
#include "windows_installed_applications.h"
#include "windows_installed_applications_ios_uid.h"
#include "windows_installed_applications_macos.h"
#include "windows_installed_applications_winos.h"

#include <QFileInfo>
#include <QMetaMethod>
#include <QTranslator>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

/// A volume with two applications.
evidence_volume &two_applications(evidence_volume &volume)
{
    volume.software().key(u"Microsoft\\Windows\\CurrentVersion\\Uninstall\\A"_s);
    volume.software().key(u"Microsoft\\Windows\\CurrentVersion\\Uninstall\\B"_s);
    volume.write();
    return volume;
}

/// The plug-in object with its state in view.
class plugin_probe : public windows_installed_applications
{
public:
    using windows_installed_applications::bool_cancel_extraction;
    using windows_installed_applications::bool_process_finished;
    using windows_installed_applications::engine_type;
    using windows_installed_applications::extracted_records_count;
    using windows_installed_applications::helper_obj;
    using windows_installed_applications::ios_uid_obj;
    using windows_installed_applications::macos_obj;
    using windows_installed_applications::selected_tabs_list;
    using windows_installed_applications::tabs_processed_count;
    using windows_installed_applications::winos_obj;
};

/// The settings that every worker keeps, as one text each.
template<typename worker>
QStringList settings_of(const worker &kept)
{
    struct probe : worker
    {
        using worker::bool_cancel_extraction;
        using worker::destination_db_file;
        using worker::destination_result_dir_path;
        using worker::destination_tmp_dir_path;
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
    return {kept.*(&probe::source_root_path),
            kept.*(&probe::os_scheme_display),
            kept.*(&probe::plugin_name),
            (kept.*(&probe::selected_tabs_list)).join(u','),
            kept.*(&probe::destination_result_dir_path),
            kept.*(&probe::destination_tmp_dir_path),
            kept.*(&probe::destination_db_file),
            QString::number(kept.*(&probe::engine_type)),
            QString::number(kept.*(&probe::source_count)),
            QString::number(kept.*(&probe::record_count)),
            QString::number(kept.*(&probe::tab_processed_count)),
            kept.*(&probe::helper_obj) != nullptr ? u"helper"_s : u"no helper"_s,
            kept.*(&probe::bool_cancel_extraction) ? u"cancelled"_s : u"running"_s};
}

/// The settings of the three workers, in the order in which they receive them.
QList<QStringList> settings_of_workers(const plugin_probe &plugin)
{
    return {settings_of(*plugin.macos_obj), settings_of(*plugin.ios_uid_obj),
            settings_of(*plugin.winos_obj)};
}

QList<QStringList> for_each_worker(const QStringList &settings)
{
    return {settings, settings, settings};
}

/// Answers every text of one context with a marked one.
class marking_translator : public QTranslator
{
public:
    explicit marking_translator(const char *context) : m_context(context) {}
    bool isEmpty() const override { return false; }
    QString translate(const char *context, const char *text, const char *disambiguation,
                      int number) const override
    {
        const bool is_plain = disambiguation == nullptr && number == -1;
        return is_plain && m_context == context ? u"<%1>"_s.arg(QLatin1StringView(text))
                                                : QString();
    }

private:
    QByteArray m_context;
};

/// The slot of a virtual operation in the object's table, on the Itanium C++ ABI of Linux and
/// macOS.
template<typename operation>
qsizetype virtual_slot(operation member)
{
    std::ptrdiff_t entry = 0;
    static_assert(sizeof member >= sizeof entry);
    std::memcpy(&entry, &member, sizeof entry);
#if defined(__aarch64__) || defined(__arm__)
    return entry / qsizetype(sizeof(void *));
#else
    return (entry - 1) / qsizetype(sizeof(void *));
#endif
}

/// Makes the last virtual operation of QFrame nameable.
struct frame_operations : QFrame
{
    static qsizetype last_slot() { return virtual_slot(&frame_operations::initStyleOption); }
};

} // namespace

class tst_plugin_object : public QObject
{
    Q_OBJECT

private slots:
    void derives_from_the_frame_alone_and_shows_an_empty_form();
    void the_window_title_is_translated_in_its_own_context();
    void virtual_operations_stand_in_the_host_order();
    void meta_object_has_two_signals_and_three_slots();
    void workers_and_helper_are_children_in_order();
    void the_artefact_name_is_plain_without_a_translator();
    void the_artefact_name_is_translated_in_the_plain_object_context();
    void settings_reach_the_run_context();
    void settings_totals_and_cancellation_reach_every_worker();
    void an_overridden_artefact_name_reaches_every_worker();
    void the_second_list_of_tabs_has_no_effect();
    void essentials_reset_counts_and_cancellation();
    void a_cancellation_reaches_every_part();
    void clearing_takes_only_the_selected_tables();
    void clearing_with_false_touches_nothing();
    void the_finished_slot_only_sets_its_flag();
    void chat_pages_are_not_generated();
    void the_backup_pointer_and_attributes_are_passed_on();
    void temporary_files_are_removed_and_results_stay();
    void removing_temporary_files_before_a_result_directory_touches_nothing();
};

void tst_plugin_object::derives_from_the_frame_alone_and_shows_an_empty_form()
{
    const windows_installed_applications plugin;
    QCOMPARE(plugin.metaObject()->superClass(), &QFrame::staticMetaObject);
    QCOMPARE(plugin.objectName(), u"windows_installed_applications"_s);
    QCOMPARE(plugin.size(), QSize(400, 300));
    QCOMPARE(plugin.frameShape(), QFrame::StyledPanel);
    QCOMPARE(plugin.frameShadow(), QFrame::Raised);
    QCOMPARE(plugin.windowTitle(), u"Frame"_s);
    QVERIFY(plugin.parent() == nullptr);
}

void tst_plugin_object::the_window_title_is_translated_in_its_own_context()
{
    marking_translator translator("windows_installed_applications");
    QCoreApplication::installTranslator(&translator);
    const windows_installed_applications plugin;
    QCOMPARE(plugin.windowTitle(), u"<Frame>"_s);
}

void tst_plugin_object::virtual_operations_stand_in_the_host_order()
{
    using plugin = windows_installed_applications;
    const QList<qsizetype> slots_in_order = {
        virtual_slot(&plugin::pub_set_engine_type),
        virtual_slot(&plugin::pub_get_artifact_name),
        virtual_slot(&plugin::pub_set_essentials),
        virtual_slot(&plugin::pub_set_source_count),
        virtual_slot(&plugin::pub_set_ios_uid_backup_pointer),
        virtual_slot(&plugin::pub_set_examiner_machine_info),
        virtual_slot(&plugin::pub_set_general_info),
        virtual_slot(&plugin::pub_set_source_info),
        virtual_slot(&plugin::pub_set_essential_for_arken_desk_extraction),
        virtual_slot(&plugin::pub_set_result_directory),
        virtual_slot(&plugin::pub_create_db_tables),
        virtual_slot(&plugin::pub_set_clear_db),
        virtual_slot(&plugin::pub_cancel_extraction),
        virtual_slot(&plugin::pub_find_source_file),
        virtual_slot(&plugin::pub_set_extended_attributes_list),
        virtual_slot(&plugin::pub_extract_artifacts),
        virtual_slot(&plugin::pub_generate_chat_html_pages),
        virtual_slot(&plugin::pub_remove_temporary_asthetics),
    };
    for (qsizetype i = 0; i < slots_in_order.size(); ++i)
        QCOMPARE(slots_in_order.at(i), frame_operations::last_slot() + 1 + i);
}

void tst_plugin_object::meta_object_has_two_signals_and_three_slots()
{
    const QMetaObject &meta_object = windows_installed_applications::staticMetaObject;
    const int first = meta_object.methodOffset();
    QCOMPARE(meta_object.methodCount(), first + 5);
    QCOMPARE(meta_object.indexOfSignal("signal_extracted_records_of_plugin_overall(qint64)"),
             first);
    QCOMPARE(meta_object.indexOfSignal("signal_tab_processed_of_plugin_overall(int)"), first + 1);
    QCOMPARE(meta_object.indexOfSlot("slot_m_process_finished(int)"), first + 2);
    QCOMPARE(meta_object.indexOfSlot("slot_extracted_records_of_plugin(qint64)"), first + 3);
    QCOMPARE(meta_object.indexOfSlot("slot_total_tabs_processed(int)"), first + 4);

    QList<QByteArray> parameters;
    for (int i = first; i < meta_object.methodCount(); ++i)
        parameters += meta_object.method(i).parameterNames();
    QCOMPARE(parameters, (QList<QByteArray>{"records", "tab_count", "status", "rec", "tab_count"}));
}

void tst_plugin_object::workers_and_helper_are_children_in_order()
{
    const plugin_probe plugin;
    QCOMPARE(plugin.children(), (QObjectList{plugin.macos_obj, plugin.ios_uid_obj, plugin.winos_obj,
                                             plugin.helper_obj}));
}

void tst_plugin_object::the_artefact_name_is_plain_without_a_translator()
{
    QCOMPARE(windows_installed_applications().pub_get_artifact_name(),
             u"Windows Installed Applications"_s);
}

void tst_plugin_object::the_artefact_name_is_translated_in_the_plain_object_context()
{
    marking_translator translator("QObject");
    QCoreApplication::installTranslator(&translator);
    QCOMPARE(windows_installed_applications().pub_get_artifact_name(),
             u"<Windows Installed Applications>"_s);
}

void tst_plugin_object::settings_reach_the_run_context()
{
    evidence_volume volume;
    host_double host(volume);
    host.settings.engine_type = 2;
    host.settings.source_count = 9;
    host.settings.machine = {-19800, u"machine version"_s};
    host.settings.source.os_version_full = u"source version"_s;
    host.settings.source.system_account_list = {{u"ann"_s, u"x"_s}};
    host.settings.general = {true, true, false, true, true, u"/nowhere/log"_s};
    host.set_up();

    using context = plugin_static_function;
    QCOMPARE(context::type_engine_int, 2);
    QCOMPARE(context::get_source_count_name(), u"Source9"_s);
    QCOMPARE(context::examiner_machine_timezone_offset_qint64, -19800);
    QCOMPARE(context::examiner_machine_os_version_full, u"machine version"_s);
    QCOMPARE(context::source_os_version_full, u"source version"_s);
    QCOMPARE(context::system_account_QStringList.size(), 1);
    QCOMPARE(context::debug_file_path, u"/nowhere/log"_s);
    QVERIFY(context::debug_mode_status_bool);
    QVERIFY(context::debug_print_in_file_bool);
    QVERIFY(!context::debug_print_on_terminal_bool);
}

void tst_plugin_object::settings_totals_and_cancellation_reach_every_worker()
{
    const run_context_backup backup;
    const QTemporaryDir folder;
    plugin_probe plugin;
    plugin.pub_set_essentials();
    plugin.pub_set_engine_type(2);
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info source;
    source.source_root_path = u"/mnt/source/"_s;
    source.os_scheme_display = u"a scheme"_s;
    plugin.pub_set_source_info(source);
    plugin.pub_set_source_count(4);
    plugin.pub_set_essential_for_arken_desk_extraction({u"one"_s, u"two"_s}, {});
    plugin.pub_set_result_directory(folder.path());
    const QString own = folder.path() + u"/Artifacts_Result/Windows_Installed_Applications/"_s;
    QStringList settings = {u"/mnt/source/"_s,
                            u"a scheme"_s,
                            u"Windows Installed Applications"_s,
                            u"one,two"_s,
                            own,
                            own + u"tmp/"_s,
                            own + u"Windows_Installed_Applications.sqlite"_s,
                            u"2"_s,
                            u"4"_s,
                            u"0"_s,
                            u"0"_s,
                            u"no helper"_s,
                            u"running"_s};
    QCOMPARE(settings_of_workers(plugin), for_each_worker(settings));

    // Every worker goes on from the totals so far, whichever of them extracts.
    plugin.slot_extracted_records_of_plugin(17);
    plugin.slot_total_tabs_processed(3);
    plugin.pub_extract_artifacts();
    settings.replace(9, u"17"_s);
    settings.replace(10, u"3"_s);
    settings.replace(11, u"helper"_s);
    QCOMPARE(settings_of_workers(plugin), for_each_worker(settings));

    plugin.pub_cancel_extraction();
    settings.replace(12, u"cancelled"_s);
    QCOMPARE(settings_of_workers(plugin), for_each_worker(settings));

    plugin.pub_set_essentials();
    settings.replace(12, u"running"_s);
    QCOMPARE(settings_of_workers(plugin), for_each_worker(settings));
}

void tst_plugin_object::an_overridden_artefact_name_reaches_every_worker()
{
    struct renamed_plugin : plugin_probe
    {
        QString pub_get_artifact_name() override { return u"Other Name"_s; }
    };
    const run_context_backup backup;
    const QTemporaryDir folder;
    renamed_plugin plugin;
    plugin.pub_set_engine_type(0);
    plugin.pub_set_result_directory(folder.path());
    for (const QStringList &settings : settings_of_workers(plugin)) {
        QCOMPARE(settings.at(2), u"Other Name"_s);
        QCOMPARE(settings.at(6),
                 folder.path() + u"/Artifacts_Result/Other_Name/Other_Name.sqlite"_s);
    }
}

void tst_plugin_object::the_second_list_of_tabs_has_no_effect()
{
    evidence_volume volume;
    host_double host(two_applications(volume));
    host.set_up();
    host.plugin().pub_set_essential_for_arken_desk_extraction({u"metro_apps"_s},
                                                              {u"install_apps_64"_s});
    host.extract();
    QCOMPARE(host.events(), (QStringList{u"records 0"_s, u"records 0"_s, u"tabs 1"_s,
                                         u"records 0"_s, u"records 0"_s}));
}

void tst_plugin_object::essentials_reset_counts_and_cancellation()
{
    const run_context_backup backup;
    plugin_probe plugin;
    QCOMPARE(plugin.extracted_records_count, 0);
    QCOMPARE(plugin.tabs_processed_count, 0);
    QVERIFY(!plugin.bool_cancel_extraction);

    plugin.slot_extracted_records_of_plugin(17);
    plugin.slot_total_tabs_processed(3);
    plugin.pub_cancel_extraction();
    plugin.pub_set_essentials();
    QCOMPARE(plugin.extracted_records_count, 0);
    QCOMPARE(plugin.tabs_processed_count, 0);
    QVERIFY(!plugin.bool_cancel_extraction);
    QVERIFY(!plugin_static_function::bool_cancel_extraction);
    QVERIFY(plugin.helper_obj->check_is_image_by_extn(u"a.jpg"_s));
}

void tst_plugin_object::a_cancellation_reaches_every_part()
{
    const run_context_backup backup;
    plugin_probe plugin;
    plugin.pub_cancel_extraction();
    QVERIFY(plugin.bool_cancel_extraction);
    QVERIFY(plugin_static_function::bool_cancel_extraction);
    QVERIFY(!plugin.helper_obj->check_is_image_by_extn(u"a.jpg"_s));
    QCOMPARE(plugin.winos_obj->decrypt_program_name(u"a"_s), QString());
}

void tst_plugin_object::clearing_takes_only_the_selected_tables()
{
    evidence_volume volume;
    volume.software().key(u"WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\C"_s);
    host_double host(two_applications(volume));
    host.run();
    host.plugin().pub_set_essential_for_arken_desk_extraction({u"install_apps_64"_s}, {});
    host.plugin().pub_set_clear_db(true);
    const result_database database(host.database_path());
    QCOMPARE(database.row_count(u"install_apps_64"_s), 0);
    QCOMPARE(database.row_count(u"install_apps_32"_s), 1);
}

void tst_plugin_object::clearing_with_false_touches_nothing()
{
    evidence_volume volume;
    host_double host(two_applications(volume));
    host.run();
    host.plugin().pub_set_clear_db(false);
    QCOMPARE(result_database(host.database_path()).row_count(u"install_apps_64"_s), 2);
}

void tst_plugin_object::the_finished_slot_only_sets_its_flag()
{
    plugin_probe plugin;
    plugin.slot_m_process_finished(7);
    QVERIFY(plugin.bool_process_finished);
    QCOMPARE(plugin.extracted_records_count, 0);
}

void tst_plugin_object::chat_pages_are_not_generated()
{
    evidence_volume volume;
    host_double host(volume);
    host.set_up();
    const QStringList before = QDir(host.settings.result_folder).entryList();
    host.plugin().pub_generate_chat_html_pages();
    QCOMPARE(QDir(host.settings.result_folder).entryList(), before);
    QCOMPARE(host.events(), QStringList());
}

void tst_plugin_object::the_backup_pointer_and_attributes_are_passed_on()
{
    struct ios_probe : windows_installed_applications_ios_uid
    {
        using windows_installed_applications_ios_uid::ios_backup_pointer;
    };
    struct macos_probe : windows_installed_applications_macos
    {
        using windows_installed_applications_macos::extended_attributes_list;
    };
    int parser = 0;
    auto *pointer = reinterpret_cast<ios_uid_backup_parser *>(&parser);
    plugin_probe plugin;
    plugin.pub_set_ios_uid_backup_pointer(pointer);
    plugin.pub_set_extended_attributes_list({u"attribute"_s});
    QCOMPARE(plugin.ios_uid_obj->*(&ios_probe::ios_backup_pointer), pointer);
    QCOMPARE(plugin.macos_obj->*(&macos_probe::extended_attributes_list),
             QStringList{u"attribute"_s});
}

void tst_plugin_object::temporary_files_are_removed_and_results_stay()
{
    evidence_volume volume;
    host_double host(two_applications(volume));
    host.run();
    const QString tmp = QFileInfo(host.database_path()).path() + u"/tmp"_s;
    QVERIFY(QDir(tmp).mkpath(u"deeper"_s));
    host.clean_up();
    QVERIFY(!QFileInfo::exists(tmp));
    QCOMPARE(result_database(host.database_path()).row_count(u"install_apps_64"_s), 2);
}

void tst_plugin_object::removing_temporary_files_before_a_result_directory_touches_nothing()
{
    const QTemporaryDir folder;
    const QString before = QDir::currentPath();
    QVERIFY(QDir(folder.path()).mkpath(u"kept"_s));
    QVERIFY(QDir::setCurrent(folder.path()));
    windows_installed_applications().pub_remove_temporary_asthetics();
    QVERIFY(QDir::setCurrent(before));
    QVERIFY(QFileInfo::exists(folder.filePath(u"kept"_s)));
}

TEST_MAIN(tst_plugin_object)
#include "tst_plugin_object.moc"
