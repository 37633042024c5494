#include "host_tabs.h"
#include "plugin_library.h"
#include "run_meter.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QSqlDatabase>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

/// Ends a part of the measurement when a tab is done.
class tab_meter : public QObject
{
    Q_OBJECT

public:
    explicit tab_meter(const QStringList &tabs) : m_tabs(tabs) {}

    void print() const { m_meter.print(); }

public slots:
    void slot_tabs(int done) { m_meter.end_part(m_tabs.at(done - 1).toStdString()); }

private:
    QStringList m_tabs;
    run_meter m_meter;
};

struct driven_run
{
    QString plugin_file;
    QString source_root; ///< ends in "/"
    QString result_directory;
    QString account;
    QString debug_log;   ///< an existing file, or empty
    QStringList tabs;    ///< empty for all
    QStringList options; ///< of "extraction_options", each set to true
};

/// Qt loads its SQLite driver at its first use. A host has used it before.
void warm_up()
{
    const QString name = u"warm up"_s;
    QSqlDatabase::addDatabase(u"QSQLITE"_s, name).setDatabaseName(u":memory:"_s);
    QSqlDatabase::database(name).open();
    QSqlDatabase::removeDatabase(name);
}

void set_options(artifact_plugin &plugin, const QStringList &names)
{
    QVariantMap options;
    for (const QString &name : names)
        options.insert(name, true);
    if (!options.isEmpty())
        plugin.setProperty("extraction_options", options);
}

void set_up(artifact_plugin &plugin, const driven_run &run)
{
    set_options(plugin, run.options);
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info source;
    source.source_root_path = run.source_root;
    source.os_scheme_display = u"Windows"_s;
    source.os_scheme_internal = u"winOS"_s;
    source.system_account_list = {{run.account, {}}};
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info logging;
    logging.debug_mode_status = !run.debug_log.isEmpty();
    logging.debug_print_in_file = logging.debug_mode_status;
    logging.debug_file_path = run.debug_log;

    plugin.pub_set_essentials();
    plugin.pub_set_engine_type(0);
    plugin.pub_set_general_info(logging);
    plugin.pub_set_source_info(source);
    plugin.pub_set_source_count(1);
    plugin.pub_set_essential_for_arken_desk_extraction(run.tabs, {});
    plugin.pub_set_result_directory(run.result_directory);
    plugin.pub_create_db_tables();
}

driven_run parsed(const QApplication &application)
{
    QCommandLineParser parser;
    parser.addPositionalArgument(u"PLUGIN"_s, u"The shared library."_s);
    parser.addPositionalArgument(u"SOURCE"_s, u"The volume's root, with a slash at the end."_s);
    parser.addPositionalArgument(u"RESULT"_s, u"The result directory."_s);
    parser.addPositionalArgument(u"ACCOUNT"_s, u"The user to read."_s);
    parser.addOption({u"debug-log"_s, u"An existing file for the plug-in's log."_s, u"FILE"_s});
    parser.addOption({u"tab"_s, u"A tab to fill instead of all; may be repeated."_s, u"NAME"_s});
    parser.addOption({u"option"_s, u"An extraction option to set; may be repeated."_s, u"NAME"_s});
    parser.addHelpOption();
    parser.process(application);
    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 4)
        parser.showHelp(2);
    return {arguments.at(0),
            arguments.at(1),
            arguments.at(2),
            arguments.at(3),
            parser.value(u"debug-log"_s),
            parser.values(u"tab"_s),
            parser.values(u"option"_s)};
}

} // namespace

/// A function of its own, so that a profiler can watch it alone.
[[gnu::noinline]] void measured_run(artifact_plugin &plugin)
{
    plugin.pub_find_source_file();
    plugin.pub_extract_artifacts();
}

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    driven_run run = parsed(application);
    const loaded_plugin plugin = load_plugin(run.plugin_file);
    if (plugin.object == nullptr) {
        std::fprintf(stderr, "extract_driver: %s\n", qPrintable(plugin.failure));
        return 1;
    }
    if (run.tabs.isEmpty())
        run.tabs = names_of(tabs_of(*plugin.object));
    warm_up();
    set_up(*plugin.object, run);
    const tab_meter meter(run.tabs);
    QObject::connect(plugin.object.get(), TABS_SIGNAL, &meter, SLOT(slot_tabs(int)));
    measured_run(*plugin.object);
    meter.print();
}

#include "extract_driver.moc"
