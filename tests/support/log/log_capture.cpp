#include "log_capture.h"

#include "files.h"
#include "log_line.h"

#include <QRegularExpression>

namespace test_support {

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

const QRegularExpression &time_stamp()
{
    static const QRegularExpression pattern(
        u"^\\[\\d{4}-(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec)-\\d\\d"
        "T\\d\\d-\\d\\d-\\d\\d\\](?=\\[)"_s);
    return pattern;
}

// The text between the line feeds, of which the file's last character must be one.
QStringList raw_lines(const QString &content)
{
    if (content.isEmpty())
        return {};
    QStringList lines = content.split(u'\n');
    if (lines.last().isEmpty())
        lines.removeLast();
    else
        lines.last() += u"<no line feed>"_s;
    return lines;
}

} // namespace

log_capture::log_capture(int engine_type)
{
    clear();
    plugin_static_function::set_general_info(general_info());
    plugin_static_function::set_engine_type(engine_type);
}

struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info log_capture::general_info() const
{
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info info;
    info.debug_mode_status = true;
    info.debug_print_in_file = true;
    info.debug_file_path = path();
    return info;
}

QStringList log_capture::lines() const
{
    QStringList lines;
    const QStringList raw = raw_lines(QString::fromLocal8Bit(read_file(path())));
    for (const QString &line : raw) {
        const qsizetype stamp_size = time_stamp().match(line).capturedLength();
        if (stamp_size > 0 || lines.isEmpty())
            lines.append(line.mid(stamp_size));
        else
            lines.last() += u'\n' + line;
    }
    return lines;
}

QStringList log_capture::messages() const
{
    QStringList messages;
    const QStringList all = lines();
    for (const QString &line : all)
        messages.append(message_of(line));
    return messages;
}

void log_capture::clear() const
{
    write_file(path(), {});
}

QString log_capture::path() const
{
    return m_folder.filePath(u"debug.log"_s);
}

} // namespace test_support
