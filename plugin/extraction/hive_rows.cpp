#include "hive_rows.h"

using namespace Qt::StringLiterals;

namespace {

constexpr auto software_backup_path = "Windows/System32/config/RegBack/SOFTWARE"_L1;

/// Names come from the evidence: none of them may end or reorder a line of the log.
QString printable(QString text)
{
    for (QChar &character : text) {
        const bool is_line_end =
            character == QChar::LineSeparator || character == QChar::ParagraphSeparator;
        if (is_line_end || (!character.isPrint() && !character.isSurrogate()))
            character = u'?';
    }
    return text;
}

} // namespace

hive_rows::hive_rows(extraction &run, const QString &hive_path, const QString &user_name,
                     const QString &named_path)
    : m_run(run),
      m_hive_path(hive_path),
      m_user_name(user_name),
      m_source_columns(run.source_columns(named_path, user_name)),
      m_output(run.context().most_output_of(hive_path), m_source_columns)
{
}

hive_rows hive_rows::of_user(extraction &run, const QString &hive_path)
{
    return hive_rows(run, hive_path, run.user_of(hive_path), hive_path);
}

hive_rows hive_rows::of_machine(extraction &run, const QString &hive_path)
{
    return hive_rows(run, hive_path, {}, run.context().software_hive_path);
}

void hive_rows::log_early_end(const registry &walker) const
{
    if (!walker.early_end().isEmpty())
        log_left_out(walker.early_end(),
                     u"it has the same data read again and again; what follows is not read"_s);
}

/// Logs, once for each hive, that rows are left out.
void hive_rows::log_full_table()
{
    if (std::exchange(m_is_full_table_logged, true))
        return;
    log_left_out(m_run.extracted().key.path,
                 u"the table takes %1 rows and %2 bytes of text from a hive; "
                 "further rows are left out"_s.arg(m_output.most().rows)
                     .arg(m_output.most().text_bytes));
}

void hive_rows::log_left_out(const QString &key_path, const QString &what) const
{
    m_run.log("---ENDS EARLY--- "_L1 +
              printable(m_hive_path + ", key "_L1 + key_path + ": "_L1 + what));
}

QString walk_software_hive(const extraction &run, registry &walker)
{
    const listed_registry_key &key = run.extracted().key;
    const extraction_context &context = run.context();
    for (const QString &path :
         {context.software_hive_path, context.source_root_path + software_backup_path}) {
        if (walker.start_registry_parse(path, key.path, key.has_own_values()) != -1)
            return path;
    }
    return {};
}
