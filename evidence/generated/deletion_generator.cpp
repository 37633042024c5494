#include "deletion_generator.h"

#include "base_block.h"
#include "byte_fields.h"
#include "hive_builder.h"
#include "hive_deletion.h"
#include "regf_format.h"

namespace evidence {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 earliest = 133000000000000000;

/// Keys of a hive that is being made, of which the last are the deepest.
QList<hive_key *> some_keys(hive_builder &hive, byte_choices &choices)
{
    QList<hive_key *> keys;
    const qint64 applications = choices.between(0, 8);
    for (qint64 i = 0; i < applications; ++i)
        keys.append(&hive.key(u"Uninstall\\Application %1"_s.arg(i)));
    const qint64 classes = choices.between(0, 3);
    for (qint64 i = 0; i < classes; ++i)
        keys.append(&hive.key(u"Assist\\{%1}\\Count"_s.arg(i)));
    for (hive_key *key : keys) {
        key->last_write(earliest + qint64(choices.up_to(1000)));
        const qint64 values = choices.between(0, 6);
        for (qint64 value = 0; value < values; ++value)
            key->binary(u"Value %1"_s.arg(value), QByteArray(choices.between(0, 80), 'd'));
    }
    return keys;
}

void delete_some(hive_deletion &deletion, const QList<hive_key *> &keys, byte_choices &choices)
{
    for (const hive_key *key : keys) {
        const qint64 time = earliest + qint64(choices.up_to(2000));
        if (choices.one_in(2))
            deletion.key(key->cells().key, time);
        else if (key->has_values() && choices.one_in(2))
            deletion.value(key->cells().key, key->cells_of_value(0).value, time);
    }
}

/// Fields of 32 bits in the bins; most get a number that may be an offset or a size there.
void alter_some(QByteArray &hive, byte_choices &choices)
{
    const qint64 alterations = choices.between(0, 8);
    const qint64 bins_size = hive.size() - regf::first_bin;
    for (qint64 i = 0; i < alterations; ++i) {
        const qint64 offset = regf::first_bin + choices.between(0, bins_size / 4 - 1) * 4;
        const bool is_any = choices.one_in(4);
        put_32(hive, offset,
               is_any ? quint32(choices.up_to(0xffffffff))
                      : quint32(choices.between(0, bins_size / 8) * 8));
    }
}

} // namespace

QByteArray generate_deletions(byte_choices &choices)
{
    hive_builder hive;
    const QList<hive_key *> keys = some_keys(hive, choices);
    hive_deletion deletion(hive.bytes());
    delete_some(deletion, keys, choices);
    QByteArray bytes = deletion.bytes();
    if (choices.one_in(3))
        bytes += choices.bytes(choices.between(0, 2048));
    alter_some(bytes, choices);
    put_checksum(bytes);
    return bytes;
}

} // namespace evidence
