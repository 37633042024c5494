#include "progress_display.h"

#include <cstdio>
#include <unistd.h>

#include "console.h"

using namespace Qt::StringLiterals;

namespace {

/// Totals of rows come once a second, which is too often for a log that keeps every line.
constexpr qint64 line_interval_ms = 10'000;

} // namespace

progress_style progress_style_for(bool quiet)
{
    if (quiet)
        return progress_style::none;
    return isatty(STDERR_FILENO) == 1 ? progress_style::live_line : progress_style::lines;
}

QString progress_text(int tabs_done, qsizetype tab_count, qint64 rows, qint64 elapsed_ms,
                      qint64 failures)
{
    const qint64 seconds = elapsed_ms / 1000;
    const QString text = u"%1 of %2 tabs, %3 rows, %4:%5"_s.arg(tabs_done)
                             .arg(tab_count)
                             .arg(rows)
                             .arg(seconds / 60)
                             .arg(seconds % 60, 2, 10, QChar(u'0'));
    return failures == 0 ? text : text + u", %1 failures"_s.arg(failures);
}

progress_display::progress_display(progress_style style, qsizetype tab_count)
    : m_style(style), m_tab_count(tab_count)
{
    m_run_timer.start();
    show();
}

progress_display::~progress_display()
{
    if (m_style == progress_style::live_line)
        write_line(stderr, {});
}

void progress_display::show_rows(qint64 rows)
{
    m_rows = rows;
    if (m_style == progress_style::live_line || m_line_timer.hasExpired(line_interval_ms))
        show();
}

void progress_display::show_tabs(int tabs)
{
    m_tabs_done = tabs;
    show();
}

void progress_display::show_failures(qint64 failures)
{
    const bool is_first = m_failures == 0;
    m_failures = failures;
    if (is_first || m_line_timer.hasExpired(line_interval_ms))
        show();
}

void progress_display::show()
{
    m_line_timer.start();
    const QString text =
        progress_text(m_tabs_done, m_tab_count, m_rows, m_run_timer.elapsed(), m_failures);
    if (m_style == progress_style::lines)
        print_notice(text);
    if (m_style == progress_style::live_line)
        redraw_line(stderr, text);
}
