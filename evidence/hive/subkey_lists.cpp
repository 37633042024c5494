#include "subkey_lists.h"

#include "byte_fields.h"
#include "regf_format.h"

#include <algorithm>

namespace evidence {

using namespace regf;

namespace {

constexpr qsizetype leaf_limit_of_windows = 511; // entries of an lh list that fills a page

QByteArray list_cell(const char *signature, qsizetype count, qint64 entry_size)
{
    QByteArray cell(list::entries + count * entry_size, '\0');
    cell.replace(cell_head::signature, 2, signature);
    put_16(cell, list::count, static_cast<quint16>(count));
    return cell;
}

quint32 name_hash(const hive_name &name)
{
    quint32 hash = 0;
    const QString upper = name.text().toUpper();
    for (const QChar c : upper)
        hash = hash * 37 + c.unicode();
    return hash;
}

quint32 name_hint(const hive_name &name)
{
    return get_32(name.stored().leftJustified(4, '\0', true), 0);
}

qint64 place_plain_list(hive_bins &bins, const char *signature, const QList<qint64> &offsets)
{
    QByteArray cell = list_cell(signature, offsets.size(), list::plain_entry_size);
    for (qsizetype i = 0; i < offsets.size(); ++i)
        put_32(cell, list::entries + i * list::plain_entry_size, stored_offset(offsets.at(i)));
    return bins.add(cell);
}

qint64 place_hashed_list(hive_bins &bins, const char *signature, const QList<subkey_entry> &keys,
                         quint32 (*hash)(const hive_name &))
{
    QByteArray cell = list_cell(signature, keys.size(), list::hashed_entry_size);
    for (qsizetype i = 0; i < keys.size(); ++i) {
        const qint64 entry = list::entries + i * list::hashed_entry_size;
        put_32(cell, entry, stored_offset(keys.at(i).cell));
        put_32(cell, entry + 4, hash(keys.at(i).name));
    }
    return bins.add(cell);
}

QList<qint64> cells_of(const QList<subkey_entry> &keys)
{
    QList<qint64> cells;
    cells.reserve(keys.size());
    for (const subkey_entry &key : keys)
        cells.append(key.cell);
    return cells;
}

qint64 place_leaf(hive_bins &bins, const QList<subkey_entry> &keys, subkey_list kind)
{
    if (kind == subkey_list::li)
        return place_plain_list(bins, "li", cells_of(keys));
    if (kind == subkey_list::lf)
        return place_hashed_list(bins, "lf", keys, name_hint);
    return place_hashed_list(bins, "lh", keys, name_hash);
}

qsizetype leaf_limit(subkey_list kind)
{
    const bool as_windows_does = kind == subkey_list::automatic || kind == subkey_list::ri;
    return as_windows_does ? leaf_limit_of_windows : list::entry_limit;
}

} // namespace

placed_list place_subkey_list(hive_bins &bins, const QList<subkey_entry> &keys, subkey_list kind)
{
    const qsizetype limit = leaf_limit(kind);
    if (kind != subkey_list::ri && keys.size() <= limit)
        return {place_leaf(bins, keys, kind), {}};
    placed_list placed;
    for (qsizetype from = 0; from < keys.size(); from += limit)
        placed.leaves.append(place_leaf(bins, keys.mid(from, limit), kind));
    placed.list = place_plain_list(bins, "ri", placed.leaves);
    return placed;
}

} // namespace evidence
