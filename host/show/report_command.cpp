#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

#include "console.h"
#include "export_target.h"
#include "host_version.h"
#include "looked_at_result.h"
#include "report_writer.h"
#include "result_commands.h"

using namespace Qt::StringLiterals;
using namespace results;

namespace {

/// Browsers take seconds to open a report of more rows.
constexpr qint64 many_rows = 300'000;
constexpr qint64 many_bytes = qint64(200) << 20;

exit_code not_written(const QString &file, const QString &reason)
{
    return refuse({exit_result, u"%1 cannot be written: %2"_s.arg(file, reason)});
}

void tell_of_size(const written_report &written, qint64 bytes)
{
    if (written.cut_cells > 0)
        print_notice(u"%1 cells are cut in the report: show --format csv has them whole"_s.arg(
            written.cut_cells));
    if (written.rows > many_rows || bytes > many_bytes)
        print_notice(
            u"the report has %1 rows and %2 MiB, which a browser may not open: --tab, --user "
            "and --since select some"_s.arg(written.rows)
                .arg(bytes >> 20));
}

exit_code write_file(const report_content &content, const QString &file)
{
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly))
        return not_written(file, out.errorString());
    const written_report written = write_report(content, [&out](std::string_view text) {
        return out.write(text.data(), qint64(text.size())) == qint64(text.size());
    });
    if (!written.is_taken || !out.commit())
        return not_written(file, out.errorString());
    write_line(stdout, printable(file));
    tell_of_size(written, QFileInfo(file).size());
    for (const QString &failure : written.failures)
        print_notice(failure);
    return written.failures.isEmpty() ? exit_complete : exit_run_failed;
}

} // namespace

exit_code report_result(const report_options &options)
{
    const looked_at_result looked = look_at(options.result);
    const selected_tables selected = looked.refused ? selected_tables{{}, looked.refused}
                                                    : select_tables(*looked.result, options.rows);
    if (selected.refused)
        return refuse(*selected.refused);
    const QFileInfo file(options.file);
    if (const auto refused = check_export(file.path(), {file.fileName()}, looked, options.replaces))
        return refuse(*refused);
    if (!QDir().mkpath(file.path()))
        return not_written(options.file, u"its folder cannot be made"_s);
    const report_content content{*looked.result,
                                 looked.record,
                                 selected.tables,
                                 options.rows.tabs.isEmpty(),
                                 options.rows.filter,
                                 looked.remarks,
                                 u"artifact_host "_s + host_version(),
                                 QDateTime::currentDateTimeUtc()};
    const exit_code code = write_file(content, options.file);
    tell_of_changes(*looked.result);
    return code;
}
