#include "tab_watch.h"

#include <utility>

using namespace Qt::StringLiterals;

tab_watch::tab_watch(QStringList tabs, failure_log &failures, progress_display &progress,
                     rows_stored_function rows_stored)
    : m_tabs(std::move(tabs)),
      m_failures(failures),
      m_progress(progress),
      m_rows_stored(std::move(rows_stored))
{
}

tab_watch::~tab_watch() = default;

void tab_watch::begin()
{
    begin_tab();
}

void tab_watch::begin_tab()
{
    m_rows_before_tab = m_rows;
    m_failures.begin_part();
    m_timer.start();
}

void tab_watch::slot_records(qint64 records)
{
    m_rows = records;
    m_progress.show_rows(records);
}

void tab_watch::slot_tabs(int tabs)
{
    if (tabs < 1 || tabs > m_tabs.size())
        return;
    // The tab during which the examiner cancelled may have come to its end before it saw that.
    m_is_stopped = m_is_stopped || (is_interrupted() && !m_failures.is_part_ended());
    const tab_result tab{m_tabs.at(tabs - 1), m_rows - m_rows_before_tab,
                         static_cast<double>(m_timer.elapsed()) / 1000, !m_is_stopped};
    m_results.append(tab);
    if (!m_is_stopped) {
        m_progress.show_tabs(tabs);
        note_trouble(tab);
    }
    begin_tab();
}

/// No row of the table went in, or none of them stayed: the next tables would fare no better.
void tab_watch::note_trouble(const tab_result &tab)
{
    const bool failed = tab.rows == 0 && m_failures.failures_of_part() > 0;
    const bool is_lost = tab.rows > 0 && m_rows_stored(tab.name) == 0;
    if (!failed && !is_lost)
        return;
    m_results.last().is_done = false;
    m_trouble = u"the table %1 could not be written, so the run was ended: %2"_s.arg(
        tab.name, failed ? m_failures.reason_of_part()
                         : u"the database took its rows and did not keep them"_s);
    m_is_stopped = true;
    end_run();
}
