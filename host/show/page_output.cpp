#include "page_output.h"

#include <QStandardPaths>
#include <QString>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// The command of the pager; empty if there is none or none is wanted.
QByteArray pager_command()
{
    if (qEnvironmentVariableIsSet("PAGER")) {
        const QByteArray wanted = qgetenv("PAGER").trimmed();
        return wanted == "cat" ? QByteArray() : wanted;
    }
    for (const QString &name : {u"less"_s, u"more"_s}) {
        if (!QStandardPaths::findExecutable(name).isEmpty())
            return name.toLatin1();
    }
    return {};
}

} // namespace

std::optional<terminal_size> size_of_terminal(std::FILE *stream)
{
    winsize size{};
    const int file = fileno(stream);
    if (isatty(file) == 0)
        return std::nullopt;
    // A terminal that does not know its size has the usual one.
    if (ioctl(file, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
        return terminal_size{80, 24};
    return terminal_size{size.ws_col, size.ws_row};
}

page_output::page_output(bool may_page)
    : m_terminal(size_of_terminal(stdout)), m_keeps_back(may_page && m_terminal)
{
    // A reader that goes away is told by the write, and not by a signal that ends the program.
    std::signal(SIGPIPE, SIG_IGN);
}

page_output::~page_output()
{
    close();
}

bool page_output::write(std::string_view text)
{
    if (!m_keeps_back)
        return write_through(text);
    m_kept_back += text;
    const auto lines = std::count(m_kept_back.begin(), m_kept_back.end(), '\n');
    if (lines < m_terminal->lines)
        return true;
    start_pager();
    return write_through(std::exchange(m_kept_back, {}));
}

void page_output::start_pager()
{
    m_keeps_back = false;
    const QByteArray command = pager_command();
    if (!command.isEmpty())
        m_pager = popen(command.constData(), "w"); // NOLINT(cert-env33-c): the user's own choice
}

bool page_output::write_through(std::string_view text)
{
    std::FILE *const stream = m_pager == nullptr ? stdout : m_pager;
    const bool is_written =
        std::fwrite(text.data(), 1, text.size(), stream) == text.size() && std::fflush(stream) == 0;
    if (!is_written && errno != EPIPE)
        m_has_failed = true;
    return is_written;
}

void page_output::close()
{
    if (std::exchange(m_is_closed, true))
        return;
    if (!m_kept_back.empty())
        write_through(m_kept_back);
    if (m_pager != nullptr)
        pclose(m_pager);
}
