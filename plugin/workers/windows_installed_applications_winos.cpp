#include "windows_installed_applications_winos.h"

#include "artifact_constants.h"
#include "artifact_list.h"
#include "conversions.h"
#include "extraction.h"
#include "hive_pool.h"
#include "plugin_static_function.h"

#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr auto find_signature = "void windows_installed_applications_winos::find_source_file()"_L1;
constexpr auto extract_signature =
    "void windows_installed_applications_winos::extract_plugin_artifacts()"_L1;

constexpr qint64 progress_interval_ms = 1000;

bool reads_software_hive(const artifact &reader)
{
    return reader.input == artifact_input::software_hive;
}

bool reads_user_hives(const artifact &reader, const extraction_options &options)
{
    const bool reads_installations =
        options.installations_of_users && !reader.of_users.key.path.isEmpty();
    return reader.input == artifact_input::user_hives || reads_installations;
}

bool is_known_edition(int engine_type)
{
    return engine_type >= 0 && engine_type <= 2;
}

void log_find(const QString &message)
{
    plugin_static_function::app_debug(message, find_signature);
}

void log_letter_case(const QString &text)
{
    log_find("[letter case] "_L1 + text);
}

/// Takes the files of the accounts, and each once where letter case is ignored: of two accounts
/// whose names differ in it alone, each may lead to the other's file.
class file_taker
{
public:
    explicit file_taker(bool takes_each_once) : m_takes_each_once(takes_each_once) {}

    /// An empty path is no file.
    void append_to(QStringList &list, const QString &path)
    {
        if (path.isEmpty() || (m_takes_each_once && m_taken.contains(path)))
            return;
        m_taken.insert(path);
        list.append(path);
    }

private:
    bool m_takes_each_once;
    QSet<QString> m_taken;
};

} // namespace

windows_installed_applications_winos::windows_installed_applications_winos(QWidget *parent)
    : os_scheme_worker(parent)
{
}

windows_installed_applications_winos::~windows_installed_applications_winos() = default;

void windows_installed_applications_winos::winos_set_source_info(
    const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info &source_info)
{
    set_source_info(source_info);
    system_account_list.clear();
    for (const auto &account : source_info.system_account_list)
        system_account_list.append({account.system_user, {}});
}

void windows_installed_applications_winos::winos_find_artifacts_source()
{
    find_source_file();
}

void windows_installed_applications_winos::winos_extract_artifacts()
{
    elapsed_timer.start();
    extract_plugin_artifacts();
    emit signal_extracted_records_of_plugin_winos(record_count);
}

void windows_installed_applications_winos::find_source_file()
{
    log_find(u"[find_source_file]---STARTS---"_s);
    ntuser_path_list.clear();
    packages_dir_list.clear();
    m_paths.reset();
    if (m_options.ignore_letter_case)
        m_paths.emplace(source_root_path);

    const QString config_dir =
        first_existing_folder("Windows/"_L1, "WINNT/"_L1) + "System32/config/"_L1;
    hive_path_system = existing_path(config_dir + "SYSTEM"_L1,
                                     "[find_source_file] hivepath_sys -- FILE NOT EXISTS"_L1);
    hive_path_software = existing_path(config_dir + "SOFTWARE"_L1,
                                       "[find_source_file]  hivepath_soft -- FILE NOT EXISTS"_L1);

    file_taker taker(m_paths.has_value());
    const QString users = first_existing_folder("Users/"_L1, "Documents and Settings/"_L1);
    for (const auto &account : std::as_const(system_account_list)) {
        if (bool_cancel_extraction)
            return;
        const QString home = users + account.system_user;
        const QString ntuser = existing_path(
            home + "/NTUSER.DAT"_L1, "[find_source_file] ntuser_path -- FILE NOT EXISTS"_L1);
        taker.append_to(ntuser_path_list, ntuser);
        const QString packages = existing_path(home + "/AppData/Local/Packages/"_L1,
                                               "[find_source_file]  -- FILE NOT EXISTS"_L1);
        taker.append_to(packages_dir_list, packages);
    }
    log_find(u"[find_source_file]---ENDS---"_s);
}

/// Returns where something lies that `path` names; otherwise logs `failure` with the path and
/// returns the empty text.
QString windows_installed_applications_winos::existing_path(const QString &path,
                                                            QLatin1StringView failure)
{
    QString found = find_on_volume(path, log_letter_case);
    if (QFileInfo::exists(found))
        return found;
    log_find(failure + path);
    return {};
}

/// A path that exists as it is spelt stays as it is.
QString windows_installed_applications_winos::find_on_volume(
    const QString &path, const std::function<void(const QString &)> &tell)
{
    return m_paths && !QFileInfo::exists(path) ? m_paths->find(path, tell) : path;
}

/// Returns the path of the folder, or of the older one where a host asks for it and that one alone
/// exists.
QString windows_installed_applications_winos::first_existing_folder(QLatin1StringView folder,
                                                                    QLatin1StringView older_folder)
{
    const QString path = source_root_path + folder;
    const QString older_path = source_root_path + older_folder;
    const auto exists = [this](const QString &place) {
        return QFileInfo::exists(find_on_volume(place, log_letter_case));
    };
    return m_options.old_layout && !exists(path) && exists(older_path) ? older_path : path;
}

void windows_installed_applications_winos::extract_plugin_artifacts()
{
    plugin_static_function::app_debug(u"[extract_plugins_artifacts]---STARTS---"_s,
                                      extract_signature);
    if (is_known_edition(engine_type)) {
        const QList<const artifact *> artifacts = selected_artifacts();
        std::optional<hive_pool> kept_hives;
        if (m_options.keep_hives_open)
            kept_hives.emplace();
        for (qsizetype i = 0; i < artifacts.size(); ++i) {
            run(*artifacts.at(i), kept_hives ? &*kept_hives : nullptr, artifacts.mid(i + 1));
            emit signal_extracted_records_of_plugin_winos(record_count);
            ++tab_processed_count;
            emit signal_total_tabs_processed_winos(tab_processed_count);
        }
    }
    plugin_static_function::app_debug(u"[extract_plugins_artifacts]---ENDS---"_s,
                                      extract_signature);
}

void windows_installed_applications_winos::extract_installed_applications()
{
    run(install_apps_64_artifact);
}

void windows_installed_applications_winos::extract_installed_applications_for_32()
{
    run(install_apps_32_artifact);
}

void windows_installed_applications_winos::extract_uninstall_applications()
{
    run(uninstall_apps_artifact);
}

void windows_installed_applications_winos::extract_registered_apps()
{
    run(registered_apps_artifact);
}

void windows_installed_applications_winos::extract_metro_apps()
{
    run(metro_apps_artifact);
}

void windows_installed_applications_winos::extract_previously_executed_programs()
{
    run(previously_executed_apps_artifact);
}

void windows_installed_applications_winos::extract_third_party_applications()
{
    run(third_party_applications_artifact);
}

void windows_installed_applications_winos::extract_hidden_desktop_icons()
{
    run(hidden_desktop_icons_app_artifact);
}

QString windows_installed_applications_winos::get_install_date(QString install_date)
{
    return shown_install_date(install_date);
}

QString windows_installed_applications_winos::decrypt_program_name(QString name)
{
    return rotated_name(name, bool_cancel_extraction);
}

qint32 windows_installed_applications_winos::hex_to_decimal_fourbytes(QByteArray bytes,
                                                                      ENDIANS order)
{
    return integer_32_of(bytes, static_cast<byte_order>(order), bool_cancel_extraction);
}

qint64 windows_installed_applications_winos::hex_to_decimal_eight_bytes(QByteArray bytes,
                                                                        ENDIANS order)
{
    return integer_64_of(bytes, static_cast<byte_order>(order), bool_cancel_extraction);
}

QString windows_installed_applications_winos::prepare_windows_path(QString path) const
{
    return windows_path_of(path, source_root_path);
}

qint64 windows_installed_applications_winos::elapsed_milliseconds() const
{
    return elapsed_timer.elapsed();
}

hive_output::limit windows_installed_applications_winos::most_output_of(const QString &path) const
{
    return hive_output::limit_for(QFileInfo(path).size());
}

QList<const artifact *> windows_installed_applications_winos::selected_artifacts() const
{
    QList<const artifact *> selected;
    for (const artifact *selectable : artifact_list()) {
        if (selected_tabs_list.contains(selectable->table.name))
            selected.append(selectable);
    }
    return selected;
}

void windows_installed_applications_winos::run(const artifact &extracted, hive_pool *kept_hives,
                                               const QList<const artifact *> &later_artifacts)
{
    const auto no_later_one = [&](auto reads) {
        return std::none_of(later_artifacts.begin(), later_artifacts.end(), reads);
    };
    const extraction_context context = {
        destination_db_file,
        source_root_path,
        hive_path_software,
        ntuser_path_list,
        packages_dir_list,
        virtual_source_path,
        os_scheme_display,
        &bool_cancel_extraction,
        [this] { count_row(); },
        m_options,
        kept_hives,
        no_later_one([](const artifact *later) { return reads_software_hive(*later); }),
        no_later_one([this](const artifact *later) { return reads_user_hives(*later, m_options); }),
        [this](const QString &path) { return most_output_of(m_options.file_to_read(path)); },
        [this](const QString &path, const auto &tell) { return find_on_volume(path, tell); },
    };
    extraction(extracted, context).run();
}

/// Signals progress at most about once a second.
void windows_installed_applications_winos::count_row()
{
    ++record_count;
    if (elapsed_milliseconds() > progress_interval_ms) {
        emit signal_extracted_records_of_plugin_winos(record_count);
        elapsed_timer.restart();
    }
}
