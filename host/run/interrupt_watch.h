#ifndef INTERRUPT_WATCH_H
#define INTERRUPT_WATCH_H

#include <array>
#include <csignal>
#include <functional>
#include <thread>

/// Turns the first Ctrl-C (SIGINT) or SIGTERM into a call while it lives; a second one ends the
/// process, as it would without this object. A signal that the process was started to ignore stays
/// ignored. Only one may live at a time.
///
/// An extraction is one long call on the main thread, so nothing there can act on the signal. The
/// handler therefore only sets a flag and writes a byte to a pipe. A thread that waits at the other
/// end makes the call. That call may do little: a plug-in's pub_cancel_extraction() sets plain
/// flags from false to true, which the extraction polls. The language calls that a data race. It
/// works because nothing else is shared: a flag is one byte that changes in one direction only,
/// every poll lies between calls that the compiler cannot see into, and a poll that misses the
/// change sees it the next time.
class interrupt_watch
{
public:
    /// Makes the pipe, starts the thread and takes over the signals. `on_interrupt` is called once
    /// at most, on the thread. Throws std::system_error when the system grants no pipe or thread.
    explicit interrupt_watch(std::function<void()> on_interrupt);
    /// Gives the signals back and waits for the thread; no call is made afterwards.
    ~interrupt_watch();
    interrupt_watch(const interrupt_watch &) = delete;
    interrupt_watch(interrupt_watch &&) = delete;
    interrupt_watch &operator=(const interrupt_watch &) = delete;
    interrupt_watch &operator=(interrupt_watch &&) = delete;

    /// Whether a signal came.
    bool interrupted() const;

private:
    /// A pipe. Its ends are closed when it is destroyed.
    struct pipe_ends
    {
        pipe_ends();
        ~pipe_ends();
        pipe_ends(const pipe_ends &) = delete;
        pipe_ends &operator=(const pipe_ends &) = delete;

        std::array<int, 2> ends{}; ///< to read from, to write to
    };

    void wait_for_byte(int read_end) const;

    std::function<void()> m_on_interrupt;
    pipe_ends m_pipe;
    std::array<struct sigaction, 2> m_former_actions{}; ///< of SIGINT and SIGTERM
    std::thread m_thread;
};

#endif
