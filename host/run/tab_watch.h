#ifndef TAB_WATCH_H
#define TAB_WATCH_H

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

#include "failure_log.h"
#include "progress_display.h"

/// One tab of a run.
struct tab_result
{
    QString name;
    qint64 rows = 0; ///< as the plug-in counted them
    double seconds = 0;
    bool is_done = false; ///< false when the run ended before the tab did
};

/// How many rows of this run the database holds of a tab; nothing when that cannot be told.
using rows_stored_function = std::function<std::optional<qint64>(const QString &tab)>;

/// Receives a plug-in's progress signals: tells the tabs apart, shows the progress, and ends a run
/// whose database takes no rows. A cancelled plug-in signals all other tabs too, although it fills
/// none of them; they do not count.
class tab_watch : public QObject
{
    Q_OBJECT

public:
    /// `tabs` are in the order in which the plug-in fills them; the others must outlive this
    /// object.
    tab_watch(QStringList tabs, failure_log &failures, progress_display &progress,
              rows_stored_function rows_stored);
    ~tab_watch() override;
    Q_DISABLE_COPY_MOVE(tab_watch)

    std::function<bool()> is_interrupted; ///< whether the examiner has cancelled the run
    std::function<void()> end_run;        ///< has the plug-in end it

    /// To be called just before the extraction.
    void begin();

    /// Rows that the plug-in counted so far.
    qint64 rows() const { return m_rows; }
    const QList<tab_result> &results() const { return m_results; }
    /// Why the run was ended; empty when it was not.
    const QString &trouble() const { return m_trouble; }

public slots:
    /// Takes the total of rows.
    void slot_records(qint64 records);
    /// Takes the total of tabs.
    void slot_tabs(int tabs);

private:
    void note_trouble(const tab_result &tab);
    void begin_tab();

    QStringList m_tabs;
    failure_log &m_failures;
    progress_display &m_progress;
    rows_stored_function m_rows_stored;
    QElapsedTimer m_timer;
    qint64 m_rows = 0;
    qint64 m_rows_before_tab = 0;
    bool m_is_stopped = false;
    QList<tab_result> m_results;
    QString m_trouble;
};

#endif
