#ifndef HOST_PROCESS_H
#define HOST_PROCESS_H

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace test_support {

/// What one run of the program left behind.
struct host_result
{
    int exit_code = -1;     ///< what it returned to the shell; -1 when a signal ended it
    int signal_number = 0;  ///< the signal that ended it, or 0
    QStringList output;     ///< lines of standard output
    QStringList errors;     ///< lines of standard error, the elapsed times in them set to 0:00
    QString options_line;   ///< the one of them that tells the run's options, which `errors` lacks
    QString hashes_line;    ///< the one that tells how long hashing took, likewise
    QString next_line;      ///< the one that names the command to look at the rows; lacking too
    QByteArray on_terminal; ///< what a terminal in place of standard error or output received
};

/// One run of the artifact_host program as a process of its own.
class host_process
{
public:
    host_process();
    ~host_process();
    host_process(const host_process &) = delete;
    host_process &operator=(const host_process &) = delete;

    /// To be called before start(): sets an environment variable.
    host_process &environment(const QString &name, const QString &value);
    /// Lets file permissions bind the program even when the tests run as root.
    host_process &without_privileges();
    /// Why this machine gives nobody a terminal, or an empty text.
    static QString missing_for_terminal();
    /// Gives the program a terminal for its standard error.
    host_process &on_terminal();
    /// Gives the program a terminal of this size for its standard output.
    host_process &output_on_terminal(int columns, int lines);
    /// Runs the program under another one, which gets its command line appended to `command`.
    host_process &under(const QStringList &command);
    /// Lets the program be started with SIGINT ignored, as `nohup` and shells in the background do.
    host_process &ignoring_interrupts();

    /// Starts the program and returns at once.
    void start(const QStringList &arguments);
    /// Waits until the program has written the line to standard error.
    void wait_for_error_line(const QString &line);
    /// Sends a signal to the program.
    void send_signal(int signal_number) const;
    /// Waits for the end of the program.
    host_result finish();

    /// Starts the program and waits for its end.
    host_result run(const QStringList &arguments);

private:
    bool open_terminal();
    void prepare_child() const;
    QByteArray received_by_terminal();

    QProcess m_process;
    QStringList m_first_arguments;
    QByteArray m_errors;
    bool m_unprivileged = false;
    bool m_interrupts_ignored = false;
    int m_terminal = -1;
    int m_terminal_line = -1;
    int m_stream_on_terminal = 2;
};

} // namespace test_support

#endif
