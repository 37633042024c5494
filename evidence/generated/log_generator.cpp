#include "log_generator.h"

#include "base_block.h"
#include "byte_fields.h"
#include "hive_builder.h"
#include "log_format.h"
#include "transaction_log.h"

namespace evidence {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 page = regf::page_size;
constexpr quint64 time_of_hive = 1000;

/// Numbers near which those of a log wrap, or change their sign.
quint32 first_number(byte_choices &choices)
{
    static const QList<quint32> numbers{7, 0, 1, 0xfffffffe, 0x7ffffffe, 0x80000001};
    return choices.pick(numbers);
}

QByteArray small_hive(byte_choices &choices)
{
    hive_builder hive;
    const qint64 keys = choices.between(1, 12);
    for (qint64 key = 0; key < keys; ++key)
        hive.key(u"Key %1\\Below"_s.arg(key))
            .binary(u"Data"_s, QByteArray(choices.between(0, 3'000), 'd'));
    return written_at(hive.bytes(), time_of_hive);
}

/// A size of bins: near that of the hive, or any.
quint32 some_bins_size(byte_choices &choices, qint64 size)
{
    if (choices.one_in(12))
        return static_cast<quint32>(choices.up_to(0xffffffff));
    return static_cast<quint32>(size + page * choices.between(-1, 8));
}

QList<logged_page> some_pages(byte_choices &choices, qint64 bins_size, qint64 unit)
{
    QList<logged_page> pages;
    const qint64 count = choices.between(0, 6);
    const qint64 last = std::min(bins_size, qint64(1) << 20) / unit - 1;
    for (qint64 i = 0; i < count && last >= 0; ++i)
        pages.append({unit * choices.between(0, last), choices.bytes(unit)});
    return pages;
}

QByteArray some_new_log(byte_choices &choices, const QByteArray &hive, quint32 number,
                        qint64 entries)
{
    const qint64 size = hive.size() - page;
    new_format_log log(hive, number);
    for (qint64 i = 0; i < entries; ++i) {
        const quint32 bins_size = some_bins_size(choices, size);
        log.pages(some_pages(choices, bins_size, choices.one_in(3) ? 512 : page), bins_size);
    }
    return log.bytes();
}

/// A bitmap has no two bits for one sector.
QByteArray some_old_log(byte_choices &choices, const QByteArray &hive, quint32 number)
{
    const qint64 size = hive.size() - page + page * choices.between(0, 3);
    QList<logged_page> pages;
    for (qint64 sector = 0; sector < size / 512; ++sector) {
        if (choices.one_in(4))
            pages.append({512 * sector, choices.bytes(512)});
    }
    const quint64 time = time_of_hive + quint64(choices.one_in(6));
    return old_format_log(written_at(numbered(hive, number, number), time), pages, quint32(size));
}

/// The entry that begins at `offset`, if there is one, with right hashes.
void mend_entry(QByteArray &log, qint64 offset)
{
    const qint64 size = log.size() < offset + regf::sector_size ? 0 : get_32(log, offset + 4);
    if (size >= regf::sector_size && size % 4 == 0 && size <= log.size() - offset)
        log.replace(offset, size, with_right_hashes(log.mid(offset, size)));
}

void damage(byte_choices &choices, QByteArray &log)
{
    const qint64 near_heads = std::min(qint64(log.size()), qint64(700)) - 4;
    if (choices.one_in(6))
        log.truncate(choices.between(0, log.size()));
    else if (near_heads > 0)
        put_32(log, choices.between(0, near_heads / 4) * 4,
               choices.one_in(2) ? static_cast<quint32>(choices.up_to(0xffffffff))
                                 : static_cast<quint32>(choices.up_to(0xff)));
    if (choices.one_in(8))
        return;
    put_checksum(log);
    mend_entry(log, regf::sector_size);
}

QByteArray some_log(byte_choices &choices, const QByteArray &hive, quint32 number, qint64 entries)
{
    QByteArray log = choices.one_in(5) ? some_old_log(choices, hive, number)
                                       : some_new_log(choices, hive, number, entries);
    for (int damages = 0; damages < 4 && choices.one_in(4); ++damages)
        damage(choices, log);
    return log;
}

} // namespace

generated_logs generate_logs(byte_choices &choices)
{
    const QByteArray hive = small_hive(choices);
    const quint32 number = first_number(choices);
    const qint64 entries = choices.between(1, 5);
    const bool adjoins = !choices.one_in(4);
    const quint32 later = number + static_cast<quint32>(adjoins ? entries : choices.between(0, 6));
    const quint32 secondary = number + static_cast<quint32>(choices.one_in(4));
    generated_logs made;
    made.hive = numbered(hive, secondary + quint32(!choices.one_in(16)), secondary);
    if (choices.one_in(6))
        made.hive.replace(regf::base_block::checksum, 1, "?");
    if (choices.one_in(12))
        made.hive.truncate(choices.between(0, made.hive.size()));
    made.logs = {some_log(choices, hive, number, entries),
                 some_log(choices, hive, later, choices.between(1, 5))};
    return made;
}

} // namespace evidence
