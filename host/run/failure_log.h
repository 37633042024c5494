#ifndef FAILURE_LOG_H
#define FAILURE_LOG_H

#include <QString>
#include <QStringList>
#include <QtGlobal>

/// Listens to a plug-in's debug log while it lives and keeps what failed or ended early.
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

    /// The lines that tell of early ends, each without its mark: some of what a hive holds was left
    /// out.
    const QStringList &early_ends() const { return m_early_ends; }

private:
    static void receive(QtMsgType type, const QMessageLogContext &context, const QString &text);
    void take(const QString &message);

    static failure_log *instance;
    QtMessageHandler m_former_handler = nullptr;
    qint64 m_count = 0;
    QString m_first_message;
    QString m_first_reason;
    QStringList m_early_ends;
};

#endif
