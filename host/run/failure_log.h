#ifndef FAILURE_LOG_H
#define FAILURE_LOG_H

#include <QString>
#include <QStringList>
#include <QtGlobal>

/// Listens to a plug-in's debug log while it lives and keeps what failed or ended early.
///
/// A plug-in returns no status: a table that cannot be made or a row that cannot be written shows
/// only in its debug log. With its terminal switch on it sends every line to the Qt debug channel,
/// where this object takes them; other messages go on as before. Only one may live at a time.
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

    /// What the first of them told and, after a colon, the reason, which follows on a line of its
    /// own.
    QString first() const;

    /// What the lines told, each without its mark, by which a table's reading ended early: some of
    /// what a hive holds was left out.
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
