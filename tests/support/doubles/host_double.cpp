#include "host_double.h"

#include "artifact_list.h"
#include "windows_installed_applications.h"
#include "windows_installed_applications_winos.h"

#include <QVariantMap>
#include <limits>

namespace test_support {

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

/// A Windows worker for which the time since the last signal is always the same, so that no test
/// depends on the machine's speed.
class steady_worker : public windows_installed_applications_winos
{
public:
    steady_worker(qint64 elapsed, QWidget *parent)
        : windows_installed_applications_winos(parent), m_elapsed(elapsed)
    {
    }

protected:
    qint64 elapsed_milliseconds() const override { return m_elapsed; }

private:
    qint64 m_elapsed;
};

/// The plug-in object with such a worker.
class steady_plugin : public windows_installed_applications
{
public:
    explicit steady_plugin(qint64 elapsed)
    {
        delete winos_obj;
        winos_obj = new steady_worker(elapsed, this);
        using worker = windows_installed_applications_winos;
        using plugin = windows_installed_applications;
        connect(winos_obj, &worker::signal_extracted_records_of_plugin_winos, this,
                &plugin::slot_extracted_records_of_plugin);
        connect(winos_obj, &worker::signal_total_tabs_processed_winos, this,
                &plugin::slot_total_tabs_processed);
    }
};

std::unique_ptr<windows_installed_applications> new_plugin(row_progress progress)
{
    const bool signals_every_row = progress == row_progress::every_row;
    return std::make_unique<steady_plugin>(signals_every_row ? std::numeric_limits<qint64>::max()
                                                             : 0);
}

struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info source_of(const evidence_volume &volume)
{
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info source;
    source.source_root_path = volume.root();
    source.os_scheme_display = u"Windows"_s;
    source.os_scheme_internal = u"winOS"_s;
    const QStringList accounts = volume.accounts();
    for (const QString &account : accounts)
        source.system_account_list.append({account, {}});
    return source;
}

} // namespace

host_double::host_double(const evidence_volume &volume, row_progress progress)
    : m_plugin(new_plugin(progress))
{
    settings.tabs = all_tabs();
    settings.result_folder = m_result_folder.path();
    settings.source = source_of(volume);

    // Some test programs are run once with hives kept open, which must change nothing that they
    // see.
    if (qEnvironmentVariableIsSet("HOST_KEEPS_HIVES_OPEN"))
        m_plugin->setProperty("extraction_options", QVariantMap{{u"keep_hives_open"_s, true}});

    using plugin = windows_installed_applications;
    QObject::connect(m_plugin.get(), &plugin::signal_extracted_records_of_plugin_overall,
                     [this](qint64 total) { note(u"records "_s + QString::number(total)); });
    QObject::connect(m_plugin.get(), &plugin::signal_tab_processed_of_plugin_overall,
                     [this](int total) { note(u"tabs "_s + QString::number(total)); });
}

host_double::~host_double() = default;

void host_double::set_up()
{
    m_plugin->pub_set_essentials();
    m_plugin->pub_set_engine_type(settings.engine_type);
    m_plugin->pub_set_general_info(settings.general);
    m_plugin->pub_set_examiner_machine_info(settings.machine);
    m_plugin->pub_set_source_info(settings.source);
    m_plugin->pub_set_source_count(settings.source_count);
    m_plugin->pub_set_essential_for_arken_desk_extraction(settings.tabs, settings.tabs);
    m_plugin->pub_set_result_directory(settings.result_folder);
    m_plugin->pub_create_db_tables();
    m_plugin->pub_set_clear_db(settings.clear_tables);
}

void host_double::extract()
{
    m_plugin->pub_find_source_file();
    m_plugin->pub_extract_artifacts();
}

void host_double::run()
{
    set_up();
    extract();
}

void host_double::clean_up()
{
    m_plugin->pub_remove_temporary_asthetics();
}

void host_double::cancel_at_event(qsizetype number)
{
    on_event([this, number](const QString &) {
        if (m_events.size() == number)
            m_plugin->pub_cancel_extraction();
    });
}

void host_double::cancel_at_row(qint64 total)
{
    on_event([this, total](const QString &event) {
        const QStringList parts = event.split(u' ');
        if (parts.first() == u"records"_s && parts.last().toLongLong() >= total)
            m_plugin->pub_cancel_extraction();
    });
}

void host_double::note(const QString &event)
{
    m_events.append(event);
    if (m_action)
        m_action(event);
}

QString host_double::database_path() const
{
    const QString separator = settings.result_folder.endsWith(u'/') ? u""_s : u"/"_s;
    return settings.result_folder + separator +
           u"Artifacts_Result/Windows_Installed_Applications/Windows_Installed_Applications.sqlite"_s;
}

QStringList all_tabs()
{
    QStringList names;
    for (const artifact *extracted : artifact_list())
        names.append(extracted->table.name);
    return names;
}

} // namespace test_support
