#include "new_log.h"

#include "log_format.h"
#include "marvin_hash.h"

#include <QtEndian>

using namespace regf;

namespace {

quint32 number_at(QByteArrayView bytes, qint64 offset)
{
    return qFromLittleEndian<quint32>(bytes.data() + offset);
}

quint64 hash_at(QByteArrayView bytes, qint64 offset)
{
    return qFromLittleEndian<quint64>(bytes.data() + offset);
}

/// `rest`: the log from the entry on.
bool is_size_sound(QByteArrayView rest)
{
    const qint64 size = number_at(rest, log_entry::size);
    return size >= sector_size && size % sector_size == 0 && size <= rest.size();
}

bool is_bins_size_sound(quint32 size)
{
    return size > 0 && size <= most_bins_size && size % page_size == 0;
}

log_flaw flaw_of_number(quint32 found, quint32 expected)
{
    if (found == expected)
        return log_flaw::none;
    // Numbers wrap: the difference tells which one is earlier.
    return static_cast<qint32>(found - expected) < 0 ? log_flaw::earlier_round : log_flaw::sequence;
}

/// Whether both hashes are those of the entry's bytes.
bool are_hashes_right(QByteArrayView entry)
{
    return hash_at(entry, log_entry::hash_of_content) ==
               marvin_hash(entry.sliced(log_entry::references)) &&
           hash_at(entry, log_entry::hash_of_head) ==
               marvin_hash(entry.first(log_entry::hash_of_head));
}

/// Reads the references of an entry whose bins size is sound. False when one reaches beyond the
/// bins, or when the pages are more than the entry holds.
bool read_pages(QByteArrayView entry, page_batch &batch)
{
    const qint64 count = number_at(entry, log_entry::page_count);
    if (count > (entry.size() - log_entry::references) / log_entry::reference_size)
        return false;
    batch.pages.reserve(static_cast<size_t>(count));
    qint64 left = entry.size() - log_entry::references - count * log_entry::reference_size;
    const QByteArrayView content = entry.last(left);
    for (qint64 i = 0; i < count; ++i) {
        const qint64 reference = log_entry::references + i * log_entry::reference_size;
        const page_reference page{number_at(entry, reference), number_at(entry, reference + 4)};
        left -= page.size;
        if (left < 0 || qint64(page.offset) + page.size > batch.bins_size)
            return false;
        batch.pages.push_back(page);
    }
    batch.content = content.first(content.size() - left);
    return true;
}

} // namespace

new_log_entry entry_at(QByteArrayView log, qint64 offset, quint32 sequence)
{
    new_log_entry entry;
    const auto flawed = [&entry](log_flaw flaw) {
        entry.flaw = flaw;
        return std::move(entry);
    };
    const QByteArrayView rest = log.sliced(std::min(offset, qint64(log.size())));
    if (rest.size() < sector_size || !rest.startsWith("HvLE"))
        return flawed(log_flaw::no_entry);
    entry.sequence = number_at(rest, log_entry::sequence);
    if (const log_flaw flaw = flaw_of_number(entry.sequence, sequence); flaw != log_flaw::none)
        return flawed(flaw);
    if (!is_size_sound(rest))
        return flawed(log_flaw::size);
    entry.size = number_at(rest, log_entry::size);
    const QByteArrayView bytes = rest.first(entry.size);
    if (!are_hashes_right(bytes))
        return flawed(log_flaw::hash);
    entry.flags = number_at(rest, log_entry::flags);
    entry.batch.bins_size = number_at(rest, log_entry::bins_size);
    if (!is_bins_size_sound(entry.batch.bins_size))
        return flawed(log_flaw::bins_size);
    return read_pages(bytes, entry.batch) ? entry : flawed(log_flaw::pages);
}
