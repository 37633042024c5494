#include "log_head.h"

#include "hive_base_block.h"
#include "log_format.h"

#include <algorithm>

using namespace regf;

namespace {

bool is_of_old_format(quint32 file_type)
{
    return file_type == base_block::type_of_old_log || file_type == base_block::type_of_oldest_log;
}

log_state problem_of(const QByteArray &fields)
{
    if (std::all_of(fields.begin(), fields.end(), [](char byte) { return byte == 0; }))
        return log_state::empty;
    const hive_base_block block(fields);
    if (!block.has_fields() || !block.is_of_a_hive())
        return log_state::no_log;
    if (!block.is_checksum_right())
        return log_state::wrong_checksum;
    if (block.file_type() == base_block::type_of_new_log)
        return log_state::applied;
    if (!is_of_old_format(block.file_type()))
        return log_state::no_log;
    // The numbers of an old log become equal once all of it is written.
    return block.is_dirty() ? log_state::unfinished : log_state::applied;
}

} // namespace

log_head head_of_log(const QByteArray &log)
{
    log_head head;
    head.fields = log.first(std::min(log.size(), qsizetype(base_block::fields)));
    head.problem = problem_of(head.fields);
    if (head.problem != log_state::applied)
        return head;
    const hive_base_block block(head.fields);
    head.is_new_format = block.file_type() == base_block::type_of_new_log;
    head.sequence = block.primary_sequence();
    head.last_written = block.last_written();
    return head;
}
