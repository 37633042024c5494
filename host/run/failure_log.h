#ifndef FAILURE_LOG_H
#define FAILURE_LOG_H

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <functional>
#include <utility>

/// Listens to a plug-in's debug log while it lives and keeps what failed, ended early or could not
/// be read.
///
/// A plug-in returns no status. Only its debug log tells that a table could not be made or a row
/// could not be written. With its terminal switch on, the plug-in sends every line to Qt's debug
/// channel, where this object takes them; other messages pass. Only one object may live at a time.
class failure_log
{
public:
    failure_log();
    ~failure_log();
    failure_log(const failure_log &) = delete;
    failure_log(failure_log &&) = delete;
    failure_log &operator=(const failure_log &) = delete;
    failure_log &operator=(failure_log &&) = delete;

    /// How many lines told a failure.
    qint64 count() const { return m_count; }

    /// The first of them and, after a colon, the reason, which the log has on the next line.
    QString first() const;

    /// Begins a part of the run, which the next three tell of.
    void begin_part() { m_part = {}; }

    /// How many failures the part has had.
    qint64 failures_of_part() const { return m_part.failures; }

    /// The reason of its first failure; empty while it is not told.
    QString reason_of_part() const;

    /// Whether an operation that began in it told that it came to its end.
    bool is_part_ended() const { return m_part.is_ended; }

    /// Has `action` called with each failure from now on.
    void on_failure(std::function<void()> action) { m_on_failure = std::move(action); }

    /// The lines that tell of early ends, each without its mark: some of what a hive holds was left
    /// out.
    const QStringList &early_ends() const { return m_early_ends; }

    /// The lines that tell what of a hive could not be read, each without its mark.
    const QStringList &unread() const { return m_unread; }

private:
    struct part
    {
        qint64 failures = 0;
        QString reason;
        QString operation; ///< the last one that told where it is
        bool is_ended = false;
    };

    static void receive(QtMsgType type, const QMessageLogContext &context, const QString &text);
    void take(const QString &message);
    void take_failure(const QString &message);
    void take_mark(const QString &operation);

    static failure_log *instance;
    QtMessageHandler m_former_handler = nullptr;
    qint64 m_count = 0;
    QString m_first_message;
    QString m_first_reason;
    part m_part;
    std::function<void()> m_on_failure;
    QStringList m_early_ends;
    QStringList m_unread;
};

#endif
