#ifndef PROGRESS_DISPLAY_H
#define PROGRESS_DISPLAY_H

#include <QElapsedTimer>
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

/// For example "3 of 8 tabs, 120 rows, 1:05", and ", 2 failures" if there are some.
QString progress_text(int tabs_done, qsizetype tab_count, qint64 rows, qint64 elapsed_ms,
                      qint64 failures = 0);

/// Keeps the totals of a run and shows them.
class progress_display
{
public:
    /// Shows the start of a run over `tab_count` tabs.
    progress_display(progress_style style, qsizetype tab_count);
    /// Ends the live line.
    ~progress_display();
    Q_DISABLE_COPY_MOVE(progress_display)

    /// Takes the total of rows.
    void show_rows(qint64 rows);
    /// Takes the total of tabs done.
    void show_tabs(int tabs);
    /// Takes the total of failures. The first one is shown when it comes, the others as rows are.
    void show_failures(qint64 failures);

private:
    void show();

    progress_style m_style;
    qsizetype m_tab_count;
    int m_tabs_done = 0;
    qint64 m_rows = 0;
    qint64 m_failures = 0;
    QElapsedTimer m_run_timer;
    QElapsedTimer m_line_timer;
};

#endif
