#include "extraction.h"

#include "plugin_static_function.h"

using namespace Qt::StringLiterals;

extraction::extraction(const artifact &extracted, const extraction_context &context)
    : m_artifact(extracted), m_context(context), m_writer(extracted.table, context.database_path)
{
}

void extraction::run()
{
    log(m_artifact.table.opening);
    const bool is_complete = m_writer.open() && m_artifact.write_rows(*this);
    m_writer.close();
    if (is_complete)
        log(u"---ENDS---"_s);
}

void extraction::write_row(const QStringList &values)
{
    if (m_writer.insert(values))
        m_context.row_written();
}

QStringList extraction::source_columns(const QString &path, const QString &user_name) const
{
    const QString relative_path = m_artifact.source_file_path == root_removal::by_its_length
                                      ? path.mid(m_context.source_root_path.size())
                                      : without_source_root(path);
    const QString source_file = plugin_static_function::get_final_artifact_source_file(
                                    relative_path, user_name, m_context.virtual_source_path)
                                    .display_path;
    return {source_file, m_context.os_scheme_display,
            plugin_static_function::get_source_count_name()};
}

QString extraction::user_of(const QString &path) const
{
    return plugin_static_function::extract_user_name_from_sourcefile(path,
                                                                     m_context.source_root_path);
}

QString extraction::without_source_root(const QString &path) const
{
    return path.startsWith(m_context.source_root_path) ? path.mid(m_context.source_root_path.size())
                                                       : path;
}

QString extraction::on_volume(const QString &path) const
{
    return m_context.find_on_volume(
        path, [this](const QString &text) { log(u"[letter case] "_s + text); });
}

void extraction::log(const QString &text) const
{
    plugin_static_function::app_debug(QString(m_artifact.table.log_tag) + text,
                                      m_artifact.table.signature);
}
