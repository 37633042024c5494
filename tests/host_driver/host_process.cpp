#include "host_process.h"

#include "file_privileges.h"

#include <QProcessEnvironment>
#include <QRegularExpression>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace test_support {

namespace {

constexpr int patience_ms = 120'000;

[[noreturn]] void give_up(const char *what)
{
    throw std::runtime_error(what);
}

QStringList lines_of(const QByteArray &output)
{
    QStringList lines = QString::fromUtf8(output).split(u'\n');
    if (lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

QByteArray without_elapsed_times(const QByteArray &output)
{
    static const QRegularExpression elapsed(u"(tabs, \\d+ rows, )\\d+:\\d\\d"_s);
    return QString::fromUtf8(output).replace(elapsed, u"\\10:00"_s).toUtf8();
}

/// Every run ends with lines whose place no test but their own looks at.
QString taken_line(QStringList &lines, const QStringList &beginnings)
{
    const auto line = std::find_if(lines.begin(), lines.end(), [&](const QString &text) {
        return std::any_of(beginnings.begin(), beginnings.end(),
                           [&](const QString &beginning) { return text.startsWith(beginning); });
    });
    return line == lines.end() ? QString() : lines.takeAt(line - lines.begin());
}

} // namespace

host_process::host_process()
{
    m_process.setProgram(QStringLiteral(ARTIFACT_HOST));
    m_process.setProcessEnvironment(QProcessEnvironment::systemEnvironment());
}

host_process::~host_process()
{
    for (const int end : {m_terminal, m_terminal_line}) {
        if (end >= 0)
            close(end);
    }
}

host_process &host_process::environment(const QString &name, const QString &value)
{
    QProcessEnvironment environment = m_process.processEnvironment();
    environment.insert(name, value);
    m_process.setProcessEnvironment(environment);
    return *this;
}

host_process &host_process::without_privileges()
{
    m_unprivileged = true;
    return *this;
}

QString host_process::missing_for_terminal()
{
    host_process tried;
    return tried.open_terminal() ? QString() : QString::fromLocal8Bit(std::strerror(errno));
}

host_process &host_process::on_terminal()
{
    if (!open_terminal())
        give_up("no terminal");
    return *this;
}

host_process &host_process::output_on_terminal(int columns, int lines)
{
    on_terminal();
    winsize size{};
    size.ws_col = static_cast<unsigned short>(columns);
    size.ws_row = static_cast<unsigned short>(lines);
    if (ioctl(m_terminal, TIOCSWINSZ, &size) != 0)
        give_up("the terminal takes no size");
    m_stream_on_terminal = STDOUT_FILENO;
    return *this;
}

/// Leaves the reason in errno when it fails.
bool host_process::open_terminal()
{
    m_terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (m_terminal < 0 || grantpt(m_terminal) != 0 || unlockpt(m_terminal) != 0)
        return false;
    m_terminal_line = open(ptsname(m_terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
    return m_terminal_line >= 0;
}

host_process &host_process::under(const QStringList &command)
{
    m_first_arguments = command.mid(1) << m_process.program();
    m_process.setProgram(command.first());
    return *this;
}

host_process &host_process::ignoring_interrupts()
{
    m_interrupts_ignored = true;
    return *this;
}

void host_process::prepare_child() const
{
    if (m_unprivileged)
        drop_file_privileges();
    if (m_interrupts_ignored)
        std::signal(SIGINT, SIG_IGN);
    if (m_terminal_line >= 0)
        dup2(m_terminal_line, m_stream_on_terminal);
}

void host_process::start(const QStringList &arguments)
{
    m_process.setChildProcessModifier([this] { prepare_child(); });
    m_process.setArguments(m_first_arguments + arguments);
    m_process.start();
    if (!m_process.waitForStarted(patience_ms))
        give_up("the program does not start");
}

void host_process::wait_for_error_line(const QString &line)
{
    m_process.setReadChannel(QProcess::StandardError);
    while (!lines_of(without_elapsed_times(m_errors)).contains(line)) {
        if (!m_process.waitForReadyRead(patience_ms))
            give_up("the line did not come");
        m_errors += m_process.readAllStandardError();
    }
}

void host_process::send_signal(int signal_number) const
{
    kill(static_cast<pid_t>(m_process.processId()), signal_number);
}

/// Everything up to the end, which comes once no process has the terminal line open any more: the
/// system may take a while to hand on what was written last.
QByteArray host_process::received_by_terminal()
{
    if (m_terminal < 0)
        return {};
    close(std::exchange(m_terminal_line, -1));
    QByteArray received;
    char part[4096];
    ssize_t size = 0;
    while ((size = read(m_terminal, part, sizeof part)) > 0)
        received.append(part, size);
    return without_elapsed_times(received);
}

host_result host_process::finish()
{
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(patience_ms))
        give_up("the program does not end");
    m_errors += m_process.readAllStandardError();
    host_result result;
    const bool ended_itself = m_process.exitStatus() == QProcess::NormalExit;
    (ended_itself ? result.exit_code : result.signal_number) = m_process.exitCode();
    result.output = lines_of(m_process.readAllStandardOutput());
    result.errors = lines_of(without_elapsed_times(m_errors));
    result.options_line =
        taken_line(result.errors, {u"artifact_host: read with "_s, u"artifact_host: read like "_s});
    result.hashes_line = taken_line(result.errors, {u"artifact_host: SHA-256 of "_s});
    result.next_line = taken_line(result.errors, {u"artifact_host: look at what was found: "_s});
    result.on_terminal = received_by_terminal();
    return result;
}

host_result host_process::run(const QStringList &arguments)
{
    start(arguments);
    return finish();
}

} // namespace test_support
