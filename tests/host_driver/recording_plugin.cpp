#include "artifact_list.h"
#include "artifact_plugin_interface.h"
#include "log_line.h"

#include <QFile>
#include <QLoggingCategory>
#include <QSemaphore>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

/// What the plug-in is to do, from the environment variable RECORDING_PLUGIN.
QByteArray behaviour()
{
    return qgetenv("RECORDING_PLUGIN");
}

QString text_of(bool value)
{
    return value ? u"true"_s : u"false"_s;
}

/// Calls go to standard error, where they stand in order with what the host writes.
void record(const QString &call, const QStringList &arguments = {})
{
    const QString line = "call: "_L1 + call + u'(' + arguments.join(" | "_L1) + ")\n"_L1;
    std::fputs(line.toUtf8().constData(), stderr);
}

void write_log(const QString &message)
{
    const QString line = test_support::log_line(u"caller"_s, message);
    qDebug("[2024-Mar-07T09-05-41]%s", qUtf8Printable(line));
}

} // namespace

/// Records the host's calls and extracts nothing.
class recording_plugin : public artifact_plugin
{
    Q_OBJECT

public:
    ~recording_plugin() override { record(u"delete"_s); }
    Q_DISABLE_COPY_MOVE(recording_plugin)
    recording_plugin()
    {
        if (behaviour() != "silent")
            setProperty("artifacts", described_artifacts());
    }

    void pub_set_engine_type(int engine_type) override
    {
        record(u"pub_set_engine_type"_s, {QString::number(engine_type)});
    }
    QString pub_get_artifact_name() override
    {
        record(u"pub_get_artifact_name"_s);
        return u"Recorded Calls"_s;
    }
    void pub_set_essentials() override { record(u"pub_set_essentials"_s); }
    void pub_set_source_count(int source_count) override
    {
        record(u"pub_set_source_count"_s, {QString::number(source_count)});
    }
    void pub_set_ios_uid_backup_pointer(ios_uid_backup_parser *) override
    {
        record(u"pub_set_ios_uid_backup_pointer"_s);
    }
    void pub_set_examiner_machine_info(
        struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info info) override
    {
        record(u"pub_set_examiner_machine_info"_s,
               {QString::number(info.examiner_machine_timezone_offset),
                info.examiner_machine_os_version_full});
    }
    void pub_set_general_info(struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info info) override
    {
        record(u"pub_set_general_info"_s,
               {text_of(info.debug_mode_status), text_of(info.debug_print_on_terminal),
                text_of(info.debug_print_in_file), info.debug_file_path});
    }
    void pub_set_source_info(struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info info) override
    {
        QStringList arguments{info.source_root_path, info.os_scheme_display,
                              info.os_scheme_internal, info.os_version_full};
        for (const auto &account : std::as_const(info.system_account_list))
            arguments += {account.system_user, account.account_text_2};
        record(u"pub_set_source_info"_s, arguments);
    }
    void pub_set_essential_for_arken_desk_extraction(QStringList tabs, QStringList ignored) override
    {
        record(u"pub_set_essential_for_arken_desk_extraction"_s, tabs + ignored);
    }
    void pub_set_result_directory(QString directory) override
    {
        record(u"pub_set_result_directory"_s, {directory});
    }
    void pub_create_db_tables() override
    {
        record(u"pub_create_db_tables"_s);
        if (exchanged_path().endsWith(".sqlite"_L1))
            make_file(exchanged_path());
    }
    void pub_set_clear_db(bool clear) override { record(u"pub_set_clear_db"_s, {text_of(clear)}); }
    void pub_cancel_extraction() override
    {
        record(u"pub_cancel_extraction"_s);
        if (behaviour() == "until cancelled")
            m_cancelled.release();
    }
    void pub_find_source_file() override
    {
        record(u"pub_find_source_file"_s, property("extraction_options").toMap().keys());
    }
    void pub_set_extended_attributes_list(QStringList) override
    {
        record(u"pub_set_extended_attributes_list"_s);
    }
    void pub_extract_artifacts() override
    {
        record(u"pub_extract_artifacts"_s);
        if (behaviour() == "until cancelled" || behaviour() == "for ever")
            m_cancelled.acquire();
        if (behaviour() == "failing")
            log_failures();
        if (!exchanged_path().isEmpty())
            exchange();
        if (behaviour() == "counting")
            emit signal_extracted_records_of_plugin_overall(7);
    }
    void pub_generate_chat_html_pages() override { record(u"pub_generate_chat_html_pages"_s); }
    void pub_remove_temporary_asthetics() override { record(u"pub_remove_temporary_asthetics"_s); }

signals:
    void signal_extracted_records_of_plugin_overall(qint64 records);
    void signal_tab_processed_of_plugin_overall(int tab_count);

private:
    static void log_failures()
    {
        write_log(u"[find_source_file] ntuser_path -- FILE NOT EXISTS/FAILED/NTUSER.DAT"_s);
        write_log(u" query  --------FAILED------ db file - /results/x.sqlite"_s);
        write_log(u" CALLER FUNCTION -  -  void f()"_s);
        write_log(u" command -  CREATE TABLE t"_s);
        write_log(u" error -  disk I/O error"_s);
        write_log(u"[extract_metro_apps]Destination Db opening failed "_s);
        write_log(u"out of memory"_s);
    }

    /// What somebody moves away during the run.
    static QString exchanged_path() { return qEnvironmentVariable("RECORDING_PLUGIN_EXCHANGES"); }

    static void make_file(const QString &path)
    {
        QFile file(path);
        file.open(QIODevice::Append);
        file.write("x");
    }

    /// Puts a link to RECORDING_PLUGIN_TARGET in its place, if that is given.
    static void exchange()
    {
        QFile::rename(exchanged_path(), exchanged_path() + ".earlier"_L1);
        const QString target = qEnvironmentVariable("RECORDING_PLUGIN_TARGET");
        if (!target.isEmpty())
            QFile::link(target, exchanged_path());
    }

    QSemaphore m_cancelled;
};

extern "C" Q_DECL_EXPORT void *create_object()
{
    if (behaviour() == "no object")
        return nullptr;
    if (behaviour() == "plain frame")
        return new QFrame;
    return new recording_plugin;
}

#include "recording_plugin.moc"
