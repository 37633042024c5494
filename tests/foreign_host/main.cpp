// The least that a host does: foreign_host SOURCE RESULT_DIR extracts the Windows volume at SOURCE
// and prints how many rows each table has got.
#include <QApplication>
#include <QDir>
#include <QLibrary>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTextStream>
#include <QVariantMap>

#include <artifact_plugin_interface.h>
#include <memory>

namespace {

std::unique_ptr<artifact_plugin> make_plugin()
{
    QLibrary library(PLUGIN_LIBRARY);
    const auto create_object = reinterpret_cast<void *(*)()>(library.resolve("create_object"));
    if (create_object == nullptr)
        qFatal("%s", qPrintable(library.errorString()));
    return std::unique_ptr<artifact_plugin>(static_cast<artifact_plugin *>(create_object()));
}

QStringList tables_of(const artifact_plugin &plugin)
{
    QStringList tables;
    const QVariantList artifacts = plugin.property("artifacts").toList();
    for (const QVariant &artifact : artifacts)
        tables.append(artifact.toMap()["name"].toString());
    return tables;
}

struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info windows_volume(const QString &root)
{
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info source;
    source.source_root_path = root + '/';
    source.os_scheme_display = "Windows";
    source.os_scheme_internal = "winOS";
    const auto folders = QDir::Dirs | QDir::NoDotAndDotDot;
    for (const QString &account : QDir(root + "/Users").entryList(folders, QDir::Name))
        source.system_account_list.append({account, {}});
    return source;
}

/// Calls all 18 operations, in the order of a run.
QString extract(artifact_plugin &plugin, const QString &root, const QString &results)
{
    plugin.pub_set_essentials();
    plugin.pub_set_engine_type(0);
    plugin.pub_set_examiner_machine_info({});
    plugin.pub_set_general_info({});
    plugin.pub_set_source_info(windows_volume(root));
    plugin.pub_set_source_count(1);
    plugin.pub_set_ios_uid_backup_pointer(nullptr);
    plugin.pub_set_extended_attributes_list({});
    plugin.pub_set_essential_for_arken_desk_extraction(tables_of(plugin), {});
    plugin.pub_set_result_directory(results);
    plugin.pub_create_db_tables();
    plugin.pub_set_clear_db(true);
    plugin.pub_find_source_file();
    plugin.pub_extract_artifacts();
    plugin.pub_generate_chat_html_pages();
    plugin.pub_cancel_extraction(); // too late to cancel anything
    plugin.pub_remove_temporary_asthetics();
    const QString name = plugin.pub_get_artifact_name().replace(' ', '_');
    return results + "/Artifacts_Result/" + name + '/' + name + ".sqlite";
}

void print_row_counts(const QStringList &tables, const QString &database_file)
{
    QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE");
    database.setDatabaseName(database_file);
    if (!database.open())
        qFatal("%s cannot be opened", qPrintable(database_file));
    for (const QString &table : tables) {
        QSqlQuery query("SELECT count(*) FROM " + table);
        QTextStream(stdout) << table << ' ' << (query.next() ? query.value(0).toLongLong() : -1)
                            << '\n';
    }
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 3)
        qFatal("usage: foreign_host SOURCE RESULT_DIR");
    const std::unique_ptr<artifact_plugin> plugin = make_plugin();
    const QString database_file =
        extract(*plugin, QDir(arguments[1]).absolutePath(), QDir(arguments[2]).absolutePath());
    print_row_counts(tables_of(*plugin), database_file);
}
