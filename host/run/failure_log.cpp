#include "failure_log.h"

#include <QLoggingCategory>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

// A debug line: "[time][edition][Artifacts Extraction][caller]:-- message".
constexpr auto line_mark = "][Artifacts Extraction]["_L1;
constexpr auto message_mark = "]:-- "_L1;
// The message of an early end: "[operation]---ENDS EARLY--- path, key KEY: what was left out".
constexpr auto early_end_mark = "]---ENDS EARLY--- "_L1;
// The message about what cannot be read: "[operation]---UNREAD--- path: what is not read".
constexpr auto unread_mark = "]---UNREAD--- "_L1;

/// `FAILED` counts only before the first '/', so that a path cannot fake it.
bool tells_failure(const QString &message)
{
    const auto told = QStringView(message).left(message.indexOf(u'/'));
    return told.contains("FAILED"_L1) || told.contains("opening failed"_L1);
}

/// The text behind the mark; nothing for other messages. The mark counts only before the first '/'.
std::optional<QString> text_behind(QLatin1StringView mark, const QString &message)
{
    const qsizetype position = message.indexOf(mark);
    const qsizetype path = message.indexOf(u'/');
    if (position < 0 || (path >= 0 && path < position))
        return std::nullopt;
    return message.mid(position + mark.size());
}

/// The operation that tells of its beginning or its end; empty for other messages. Some tell both
/// in the same words.
QString operation_of_mark(const QString &message)
{
    const qsizetype mark = message.indexOf("]---"_L1);
    const QString told = message.mid(mark + 1);
    const bool is_mark = told == "---STARTS---"_L1 || told == "---ENDS---"_L1;
    return is_mark && !message.contains(u'/') ? message.left(mark) : QString();
}

/// The caller and the command stand between a failed command and its reason.
bool tells_reason(const QString &message)
{
    const QString text = message.trimmed();
    return !text.startsWith("CALLER FUNCTION"_L1) && !text.startsWith("command"_L1);
}

} // namespace

failure_log *failure_log::instance = nullptr;

failure_log::failure_log()
{
    instance = this;
    // Some systems switch debug messages off for all programs.
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, true);
    m_former_handler = qInstallMessageHandler(&failure_log::receive);
}

failure_log::~failure_log()
{
    qInstallMessageHandler(m_former_handler);
    instance = nullptr;
}

QString failure_log::first() const
{
    const QString message = m_first_message.trimmed();
    return m_first_reason.isEmpty() ? message : message + ": "_L1 + m_first_reason.trimmed();
}

QString failure_log::reason_of_part() const
{
    const auto heading = "error -"_L1;
    const QString reason = m_part.reason.trimmed();
    return reason.startsWith(heading) ? reason.mid(heading.size()).trimmed() : reason;
}

void failure_log::receive(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const qsizetype mark = text.indexOf(message_mark);
    if (mark >= 0 && text.contains(line_mark))
        instance->take(text.mid(mark + message_mark.size()));
    else if (instance->m_former_handler != nullptr)
        instance->m_former_handler(type, context, text);
}

void failure_log::take(const QString &message)
{
    if (const auto early_end = text_behind(early_end_mark, message)) {
        m_early_ends.append(*early_end);
        return;
    }
    if (const auto unread = text_behind(unread_mark, message)) {
        m_unread.append(*unread);
        return;
    }
    if (m_count == 1 && m_first_reason.isEmpty() && tells_reason(message))
        m_first_reason = message;
    if (m_part.failures == 1 && m_part.reason.isEmpty() && tells_reason(message))
        m_part.reason = message;
    if (const QString operation = operation_of_mark(message); !operation.isEmpty())
        take_mark(operation);
    if (tells_failure(message))
        take_failure(message);
}

/// The second mark of an operation is that of its end.
void failure_log::take_mark(const QString &operation)
{
    m_part.is_ended = m_part.operation == operation;
    m_part.operation = operation;
}

void failure_log::take_failure(const QString &message)
{
    if (++m_count == 1)
        m_first_message = message;
    ++m_part.failures;
    if (m_on_failure)
        m_on_failure();
}
