#include "hive_rows.h"

#include "printable_text.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

constexpr auto software_backup_path = "Windows/System32/config/RegBack/SOFTWARE"_L1;

/// Logs what of the hive at `path` is not read, if the run is asked to.
void log_unread(const extraction &run, const QString &path, const QString &what)
{
    if (run.context().options.report_unread)
        run.log("---UNREAD--- "_L1 + printable_text(path + ": "_L1 + what));
}

/// The same for a hive that is there and cannot be opened.
void log_unopened(const extraction &run, const QString &path)
{
    if (QFileInfo::exists(run.context().options.file_to_read(path)))
        log_unread(run, path, u"cannot be opened as a registry hive, so it is not read"_s);
}

/// Lets `walker` read the key of the hive at `path`, or of the file that is read in its place, with
/// the options of the run. Returns as registry::start_registry_parse().
int walk_hive(const extraction &run, registry &walker, const QString &path,
              const listed_registry_key &key)
{
    prepare_walker(run, walker);
    return walker.start_registry_parse(run.context().options.file_to_read(path), key.path,
                                       key.has_own_values());
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

void hive_rows::log_findings(const registry &walker) const
{
    if (!walker.early_end().isEmpty())
        log_left_out(walker.early_end(),
                     u"it has the same data read again and again; what follows is not read"_s);
    if (walker.replaced_texts() > 0)
        m_run.log(" "_L1 + place(m_run.extracted().key.path) +
                  u"%1 texts hold half of a surrogate pair, written as U+FFFD"_s.arg(
                      walker.replaced_texts()));
    for (const QString &sentence : walker.unread().sentences())
        log_unread(m_run, m_hive_path, sentence);
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
    m_run.log("---ENDS EARLY--- "_L1 + place(key_path) + what);
}

QString hive_rows::place(const QString &key_path) const
{
    return printable_text(m_hive_path + ", key "_L1 + key_path + ": "_L1);
}

void walk_user_hive(const extraction &run, registry &walker, const QString &path,
                    const listed_registry_key &key)
{
    if (walk_hive(run, walker, path, key) == -1)
        log_unopened(run, path);
}

void prepare_walker(const extraction &run, registry &walker)
{
    const extraction_context &context = run.context();
    if (context.options.decode_by_type)
        walker.decode_by_type();
    if (context.kept_hives != nullptr)
        walker.keep_open_in(*context.kept_hives);
}

void close_hive(const extraction &run, const QString &path)
{
    const extraction_context &context = run.context();
    if (context.kept_hives != nullptr)
        context.kept_hives->close(context.options.file_to_read(path));
}

QString walk_software_hive(const extraction &run, registry &walker)
{
    const extraction_context &context = run.context();
    const auto walked = [&](const QString &path) {
        const bool is_walked = walk_hive(run, walker, path, run.extracted().key) != -1;
        if (context.is_last_of_machine)
            close_hive(run, path);
        return is_walked;
    };
    if (walked(context.software_hive_path))
        return context.software_hive_path;
    QString backup = run.on_volume(context.source_root_path + software_backup_path);
    if (walked(backup))
        return backup;
    log_unopened(run, context.software_hive_path);
    log_unopened(run, backup);
    return {};
}
