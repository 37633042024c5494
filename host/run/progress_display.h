#ifndef PROGRESS_DISPLAY_H
#define PROGRESS_DISPLAY_H

#include <QElapsedTimer>
#include <QObject>
#include <QString>

/// How progress is shown on standard error.
enum class progress_style
{
    none,      ///< not at all
    lines,     ///< one line per tab, and some during a long one
    live_line, ///< one line that is drawn over again; for terminals
};

/// live_line when standard error is a terminal, lines otherwise, none when `quiet`.
progress_style progress_style_for(bool quiet);

/// For example "3 of 8 tabs, 120 rows, 1:05".
QString progress_text(int tabs_done, qsizetype tab_count, qint64 rows, qint64 elapsed_ms);

/// Receives a plug-in's progress signals, keeps the totals and shows them.
class progress_display : public QObject
{
    Q_OBJECT

public:
    /// Shows the start of a run over `tab_count` tabs.
    progress_display(progress_style style, qsizetype tab_count);
    /// Ends the live line.
    ~progress_display() override;
    Q_DISABLE_COPY_MOVE(progress_display)

    /// Rows written so far.
    qint64 rows() const { return m_rows; }

public slots:
    /// Takes the total of rows.
    void slot_records(qint64 records);
    /// Takes the total of tabs done.
    void slot_tabs(int tabs);

private:
    void show();

    progress_style m_style;
    qsizetype m_tab_count;
    int m_tabs_done = 0;
    qint64 m_rows = 0;
    QElapsedTimer m_run_timer;
    QElapsedTimer m_line_timer;
};

#endif
