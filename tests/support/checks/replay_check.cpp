#include "replay_check.h"

#include "hive_base_block.h"
#include "log_format.h"
#include "recovered_hive.h"
#include "replay_text.h"

#include <stdexcept>

namespace test_support {

namespace {

void require(bool is_so, const char *what)
{
    if (!is_so)
        throw std::runtime_error(what);
}

QList<log_input> inputs_of(const QList<QByteArray> &logs)
{
    QList<log_input> inputs;
    for (const QByteArray &log : logs)
        inputs.append({QString::number(inputs.size()), [log] { return std::optional(log); }});
    return inputs;
}

void check_base_block(const recovered_hive &hive)
{
    const hive_base_block block(hive.bytes.first(regf::base_block::size));
    require(block.is_checksum_right(), "the checksum is wrong");
    require(!block.is_dirty() && block.primary_sequence() == hive.replay.sequence,
            "the numbers differ");
    require(block.file_type() == regf::base_block::type_of_hive, "the hive is a log");
    require(!block.is_cut_off(hive.bytes.size()), "the hive is cut off");
}

void check_growth(qint64 size_before, const recovered_hive &hive)
{
    qint64 pages = 1;
    qint64 bytes = 0;
    for (const log_report &log : hive.replay.logs) {
        pages += log.pages + log.entries;
        bytes += log.bytes;
    }
    const qint64 growth = hive.bytes.size() - size_before;
    require(growth <= bytes + pages * regf::longest_bin, "the hive grew without pages");
    require(growth >= 0, "the hive lost bytes");
}

void check_counts(const key_change_counts &keys)
{
    require(keys.before - keys.removed + keys.added == keys.after, "the keys do not add up");
    require(keys.changed <= keys.before, "more keys changed than there were");
}

} // namespace

replay_report check_replay(const QByteArray &hive, const QList<QByteArray> &logs)
{
    const recovered_hive after = recover_hive(hive, inputs_of(logs));
    for (const log_report &log : after.replay.logs)
        require(!text_about(log).isEmpty(), "a log has no text");
    require(!text_about_condition(after.replay).isEmpty(), "a hive has no text");
    if (!after.replay.is_replayed()) {
        require(after.bytes == hive, "the hive changed without a log");
        return after.replay;
    }
    require(hive.size() >= regf::base_block::size, "a hive was made of nothing");
    check_base_block(after);
    check_growth(hive.size(), after);
    check_counts(after.keys);
    const recovered_hive again = recover_hive(after.bytes, inputs_of(logs));
    require(again.replay.condition == hive_condition::clean, "the hive is not clean");
    require(again.bytes == after.bytes, "a clean hive changed");
    return after.replay;
}

} // namespace test_support
