#include "worker_fixture.h"

#include "created_tables.h"
#include "log_line.h"
#include "plugin_static_function.h"

#include <stdexcept>

namespace test_support {

using namespace Qt::StringLiterals;

namespace {

QString line_begin(const QString &operation)
{
    return log_line(u"windows_installed_applications_winos::"_s + operation,
                    u"[%1]"_s.arg(operation));
}

} // namespace

worker_fixture::worker_fixture()
{
    plugin_static_function::set_source_count(3);
    create_tables(database_path());
    worker.winos_set_destination_location(m_result_folder.path(), m_result_folder.path(),
                                          database_path());
    worker.winos_set_engine_type(0);
    QObject::connect(&worker, &winos_probe::signal_extracted_records_of_plugin_winos,
                     [this](qint64 total) { m_signalled_totals.append(total); });
}

void worker_fixture::set_source(const QString &root, const QStringList &accounts)
{
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info source;
    source.source_root_path = root;
    source.os_scheme_display = u"Windows"_s;
    for (const QString &account : accounts)
        source.system_account_list.append({account, {}});
    plugin_static_function::set_source_info(source);
    worker.winos_set_source_info(source);
}

void worker_fixture::find_files()
{
    volume.write();
    set_source(volume.root(), volume.accounts());
    worker.find_source_file();
    log.clear();
}

void worker_fixture::extract(const QString &tab)
{
    worker.run(artifact_named(tab));
}

void worker_fixture::on_row(const std::function<void(qint64 total)> &action)
{
    worker.milliseconds = 1001;
    QObject::connect(&worker, &winos_probe::signal_extracted_records_of_plugin_winos, action);
}

QString worker_fixture::database_path() const
{
    return m_result_folder.filePath(u"result.sqlite"_s);
}

QList<QStringList> worker_fixture::rows(const QString &tab) const
{
    QStringList columns = database().columns(tab);
    const qsizetype own_begin = columns.indexOf(u"INT"_s) + 1;
    columns = columns.mid(own_begin, columns.indexOf(u"arken_tag_value"_s) - own_begin);
    columns.prepend(u"system_account"_s);
    columns += {u"source_file"_s, u"os_scheme_display"_s, u"source_count_name"_s};
    return database().rows(tab, columns);
}

const artifact &artifact_named(const QString &table)
{
    for (const artifact *extracted : artifact_list()) {
        if (extracted->table.name == table)
            return *extracted;
    }
    throw std::out_of_range("no such table");
}

QStringList whole_run_log(const QString &operation)
{
    const QString begin = line_begin(operation);
    return {begin + u"---STARTS---"_s, begin + u"---ENDS---"_s};
}

QString early_end_line(const QString &operation, const QString &hive_path, const QString &key,
                       const QString &what)
{
    return line_begin(operation) + u"---ENDS EARLY--- "_s + hive_path + u", key "_s + key +
           u": "_s + what;
}

} // namespace test_support
