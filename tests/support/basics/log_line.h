#ifndef LOG_LINE_H
#define LOG_LINE_H

#include <QString>
#include <QStringList>

namespace test_support {

// The grammar of the debug log, once for all tests: "[time][edition][Artifacts Extraction]
// [operation]:-- message" in one line.

/// What stands between the operation of a line and its message.
inline const QString message_mark = QStringLiteral("]:-- ");

/// A line as log_capture::lines() gives it: without its time. The operation is the name of the
/// member that writes the line, its class in front.
inline QString log_line(const QString &operation, const QString &message,
                        const QString &edition = QStringLiteral("ARKEN_DESK"))
{
    return QLatin1Char('[') + edition + QStringLiteral("][Artifacts Extraction][") + operation +
           message_mark + message;
}

/// A line of a member of the library's static helper class.
inline QString library_line(const QString &member, const QString &message)
{
    return log_line(QStringLiteral("plugin_static_function::") + member, message);
}

/// The lines of one operation.
inline QStringList log_lines(const QString &operation, const QStringList &messages)
{
    QStringList lines;
    for (const QString &message : messages)
        lines.append(log_line(operation, message));
    return lines;
}

/// The message of a line; the whole line where it has none.
inline QString message_of(const QString &line)
{
    const qsizetype mark = line.indexOf(message_mark);
    return mark < 0 ? line : line.mid(mark + message_mark.size());
}

} // namespace test_support

#endif
