#include "log_application.h"

#include "hive_base_block.h"
#include "log_format.h"
#include "new_log.h"
#include "old_log.h"

#include <utility>

using namespace regf;

bool log_application::apply(const log_head &head, QByteArrayView bytes, log_report &report)
{
    if (head.is_new_format)
        apply_new(head, bytes, report);
    else
        apply_old(head, bytes, report);
    if (report.entries == 0)
        return false;
    report.state = log_state::applied;
    m_fields = head.fields;
    m_sequence = report.last_sequence;
    return true;
}

QByteArray log_application::result() &&
{
    return m_fields.isEmpty() ? std::move(m_image).bytes()
                              : std::move(m_image).finished(m_fields, m_sequence, m_flags);
}

void log_application::apply_new(const log_head &head, QByteArrayView bytes, log_report &report)
{
    report.state = log_state::no_sound_entry;
    const quint32 flags = hive_base_block(head.fields).flags() & ~log_entry::replaced_flags;
    quint32 sequence = head.sequence;
    qint64 offset = sector_size;
    while (report.flaw == log_flaw::none) {
        const new_log_entry entry = entry_at(bytes, offset, sequence);
        report.next_sequence = entry.sequence;
        report.flaw = entry.flaw == log_flaw::none ? bring_in(entry.batch, report) : entry.flaw;
        if (report.flaw != log_flaw::none)
            return;
        m_flags = flags | (entry.flags & log_entry::replaced_flags);
        report.last_sequence = sequence++;
        offset += entry.size;
    }
}

void log_application::apply_old(const log_head &head, QByteArrayView bytes, log_report &report)
{
    report.state = log_state::unsound_pages;
    const old_log pages = pages_of_old_log(bytes);
    report.flaw = pages.flaw == log_flaw::none ? bring_in(pages.batch, report) : pages.flaw;
    report.last_sequence = head.sequence;
    m_flags = hive_base_block(head.fields).flags();
}

/// Applies the pages unless they would leave a hole.
log_flaw log_application::bring_in(const page_batch &batch, log_report &report)
{
    if (m_image.would_have_hole(batch))
        return log_flaw::hole;
    m_image.apply(batch);
    ++report.entries;
    report.pages += qint64(batch.pages.size());
    report.bytes += batch.content.size();
    return log_flaw::none;
}
