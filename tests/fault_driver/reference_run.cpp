#include "reference_run.h"

#include "application_keys.h"
#include "files.h"
#include "host_double.h"
#include "log_line.h"
#include "result_database.h"
#include "result_file.h"
#include "sample_evidence.h"

#include <stdexcept>

namespace test_support {

using namespace Qt::StringLiterals;
using namespace evidence;

reference_run::reference_run() : reference_run(add_sample_evidence)
{
    for (const QList<QStringList> &rows : std::as_const(m_rows)) {
        if (rows.size() != sample_row_count)
            throw std::runtime_error("the tables are not whole");
    }
}

reference_run::reference_run(const std::function<void(evidence_volume &)> &add_evidence)
{
    add_evidence(m_volume);
    m_volume.write();
    const QString folder = fresh_folder();
    const QString log = make_log_file(m_folder.path());
    m_outcome = process(folder).log(log).fault(disk_fault::none, 0).run();
    if (!m_outcome.completed)
        throw std::runtime_error("the run was disturbed");

    const QString database = database_in(folder);
    m_log = messages_in(log, database);
    const QStringList tables = all_tabs();
    for (const QString &table : tables)
        m_rows[table] = rows_in(database, table);
}

QString reference_run::fresh_folder()
{
    return m_folder.filePath(u"result %1"_s.arg(++m_folders));
}

extraction_process reference_run::process(const QString &result_folder) const
{
    return extraction_process(m_volume, result_folder);
}

void add_many_applications(evidence_volume &volume)
{
    volume.system();
    hive_key &uninstall = volume.software().key(uninstall_key);
    for (int i = 0; i < many_row_count; ++i)
        uninstall.key(QString::number(i)).text(u"UninstallString"_s, QString(1000, u'x'));
}

QString database_in(const QString &result_folder)
{
    return result_folder +
           u"/Artifacts_Result/Windows_Installed_Applications/Windows_Installed_Applications.sqlite"_s;
}

QList<QStringList> rows_in(const QString &database_path, const QString &table)
{
    const result_database database(database_path);
    QStringList columns = database.columns(table);
    columns.removeOne(u"INT"_s);
    return database.rows(table, columns);
}

bool is_part_of(const QList<QStringList> &part, const QList<QStringList> &whole)
{
    auto next = part.cbegin();
    for (const QStringList &row : whole) {
        if (next != part.cend() && row == *next)
            ++next;
    }
    return next == part.cend();
}

QString integrity_after_recovery(const QString &database_path)
{
    {
        const sqlite_connection connection(database_path);
        execute(connection.database, u"pragma integrity_check"_s);
    }
    return result_database(database_path).integrity_check();
}

QString make_log_file(const QString &folder)
{
    QString path = folder + u"/debug.log"_s;
    write_file(path, {});
    return path;
}

QStringList messages_in(const QString &log_path, const QString &database_path)
{
    return messages_of(read_file(log_path), database_path);
}

QStringList messages_of(const QByteArray &log, const QString &database_path)
{
    QStringList messages = QString::fromLocal8Bit(log).split(u'\n');
    messages.removeLast();
    for (QString &message : messages)
        message = message_of(message).replace(database_path, u"DATABASE"_s);
    return messages;
}

} // namespace test_support
