#include "interrupt_watch.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::array<int, 2> watched_signals{SIGINT, SIGTERM};
constexpr char interrupt_byte = 'i';
constexpr char end_byte = 'e';

// All that the handler uses. A signal handler may touch a sig_atomic_t and write to a descriptor.
volatile std::sig_atomic_t interrupt_flag = 0;
volatile std::sig_atomic_t interrupt_pipe = -1;

void send_byte(int write_end, char byte)
{
    ssize_t written = 0;
    do
        written = write(write_end, &byte, 1);
    while (written < 0 && errno == EINTR);
}

char receive_byte(int read_end)
{
    char byte = end_byte;
    ssize_t got = 0;
    do
        got = read(read_end, &byte, 1);
    while (got < 0 && errno == EINTR);
    return got == 1 ? byte : end_byte;
}

struct sigaction action_calling(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    return action;
}

extern "C" void handle_interrupt(int)
{
    const int saved_errno = errno;
    const struct sigaction by_default = action_calling(SIG_DFL);
    for (const int signal_number : watched_signals)
        sigaction(signal_number, &by_default, nullptr);
    interrupt_flag = 1;
    send_byte(static_cast<int>(interrupt_pipe), interrupt_byte);
    errno = saved_errno;
}

} // namespace

interrupt_watch::pipe_ends::pipe_ends()
{
    if (pipe(ends.data()) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    for (const int end : ends)
        fcntl(end, F_SETFD, FD_CLOEXEC);
}

interrupt_watch::pipe_ends::~pipe_ends()
{
    for (const int end : ends)
        close(end);
}

interrupt_watch::interrupt_watch(std::function<void()> on_interrupt)
    : m_on_interrupt(std::move(on_interrupt))
{
    interrupt_flag = 0;
    interrupt_pipe = m_pipe.ends[1];
    m_thread = std::thread(&interrupt_watch::wait_for_byte, this, m_pipe.ends[0]);
    const struct sigaction handling = action_calling(handle_interrupt);
    for (size_t i = 0; i < watched_signals.size(); ++i) {
        sigaction(watched_signals[i], nullptr, &m_former_actions[i]);
        if (m_former_actions[i].sa_handler != SIG_IGN)
            sigaction(watched_signals[i], &handling, nullptr);
    }
}

interrupt_watch::~interrupt_watch()
{
    for (size_t i = 0; i < watched_signals.size(); ++i)
        sigaction(watched_signals[i], &m_former_actions[i], nullptr);
    send_byte(m_pipe.ends[1], end_byte);
    m_thread.join();
}

bool interrupt_watch::interrupted() const
{
    return interrupt_flag != 0;
}

void interrupt_watch::wait_for_byte(int read_end) const
{
    if (receive_byte(read_end) == interrupt_byte)
        m_on_interrupt();
}
