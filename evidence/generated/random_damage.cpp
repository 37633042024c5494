#include "random_damage.h"

#include "byte_fields.h"
#include "hive_bins.h"
#include "regf_format.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <stdexcept>

namespace evidence {

using namespace Qt::StringLiterals;

namespace {

/// What a damage chooses from: the parts of the hive, and numbers that lie at the edges.
class damage_choices
{
public:
    damage_choices(const grown_hive &hive, qint64 hive_size, byte_choices &choices)
        : m_choices(choices), m_keys(hive.keys()), m_values(hive.values()), m_hive_size(hive_size)
    {
        std::copy_if(m_values.cbegin(), m_values.cend(), std::back_inserter(m_big_values),
                     [](const value_cells &cells) { return cells.block_list != 0; });
    }

    qint64 key() { return cells().key; }

    /// The cell of a key's list of subkeys, or a list below it; 0 when the key has none.
    qint64 list()
    {
        const key_cells chosen = cells();
        const bool is_leaf = !chosen.subkey_leaves.isEmpty() && m_choices.one_in(2);
        return is_leaf ? m_choices.pick(chosen.subkey_leaves) : chosen.subkey_list;
    }

    qint64 value_list() { return cells().value_list; }

    value_cells value() { return m_values.isEmpty() ? value_cells{} : m_choices.pick(m_values); }

    /// Big data, if the hive has any; all zero otherwise.
    value_cells big_value()
    {
        return m_big_values.isEmpty() ? value_cells{} : m_choices.pick(m_big_values);
    }

    /// Any cell of a key, list, value or data, or a place that is none.
    qint64 cell()
    {
        switch (m_choices.up_to(5)) {
        case 0:
            return list();
        case 1:
            return value_list();
        case 2:
            return value().value;
        case 3:
            return value().data;
        case 4:
            return between(0, m_hive_size + regf::page_size);
        default:
            return key();
        }
    }

    qint64 index() { return between(0, 3); }

    /// A count or size: small, at the borders that readers set, or anything.
    quint32 number()
    {
        static const QList<quint32> edges{
            0,       1,          2,          3,          4,          5,          8,         0x20,
            0x3fd8,  0x3fd9,     0xffff,     70000,      70001,      110000,     110001,    8000000,
            8000001, 0x7fffffff, 0x80000000, 0x80000004, 0x80000005, 0xfffffff8, 0xffffffff};
        return m_choices.one_in(4) ? static_cast<quint32>(m_choices.up_to(0xffffffff))
                                   : m_choices.pick(edges);
    }

    quint16 short_number() { return static_cast<quint16>(number()); }
    qint64 between(qint64 least, qint64 most) { return m_choices.between(least, most); }
    bool one_in(int chances) { return m_choices.one_in(chances); }
    QByteArray bytes(qsizetype size) { return m_choices.bytes(size); }
    qint64 hive_size() const { return m_hive_size; }

    const char *signature()
    {
        return m_choices.pick(QList<const char *>{"nk", "vk", "li", "lf", "lh", "ri", "db", "sk"});
    }

private:
    const key_cells &cells() { return m_choices.pick(m_keys)->cells(); }

    byte_choices &m_choices;
    QList<const hive_key *> m_keys;
    QList<value_cells> m_values;
    QList<value_cells> m_big_values;
    qint64 m_hive_size;
};

struct damage_kind
{
    const char *name;
    void (*damage)(hive_damage &, damage_choices &);
};

// The first bytes of a record, or any bytes, in the last cell of the file.
QByteArray cut_record(const char *signature, damage_choices &choices)
{
    const QByteArray record = signature + choices.bytes(0x60);
    return record.left(choices.between(2, record.size()));
}

QByteArray cut_record(damage_choices &choices)
{
    return cut_record(choices.signature(), choices);
}

// Ends the file within a record of the kind that a list holds, mostly, and lists it.
void list_cut_record(hive_damage &hive, damage_choices &choices)
{
    const bool is_key = choices.one_in(2);
    const qint64 list = is_key ? choices.list() : choices.value_list();
    const qint64 index = choices.one_in(4) ? choices.index() : 0;
    const char *const signature = is_key ? "nk" : "vk";
    hive.add_last_cell(choices.one_in(4) ? cut_record(choices) : cut_record(signature, choices));
    if (is_key)
        hive.list_entry(list, index, hive.last_cell());
    else
        hive.offset_entry(list, index, hive.last_cell());
}

// Ends the file within the list of big data's blocks, which may claim any number of them.
void cut_block_list(hive_damage &hive, damage_choices &choices)
{
    const value_cells big = choices.big_value();
    if (big.blocks.isEmpty())
        throw std::out_of_range("no big data");
    QByteArray list(choices.between(1, 4) * regf::list::plain_entry_size, '\0');
    for (qsizetype entry = 0; entry < list.size(); entry += regf::list::plain_entry_size)
        put_32(list, entry,
               stored_offset(big.blocks.at(choices.between(0, big.blocks.size() - 1))));
    hive.add_last_cell(list);
    hive.set_32(big.data + regf::db::block_list, stored_offset(hive.last_cell()));
    hive.block_count(big.data, choices.short_number());
}

/// What leaves the header and the chain of cells alone.
constexpr damage_kind record_damages[] = {
    {"subkey count",
     [](hive_damage &hive, damage_choices &c) { hive.subkey_count(c.key(), c.number()); }},
    {"value count",
     [](hive_damage &hive, damage_choices &c) { hive.value_count(c.key(), c.number()); }},
    {"key name size",
     [](hive_damage &hive, damage_choices &c) { hive.key_name_size(c.key(), c.short_number()); }},
    {"last write",
     [](hive_damage &hive, damage_choices &c) {
         hive.last_write(c.key(), c.between(std::numeric_limits<qint64>::min(),
                                            std::numeric_limits<qint64>::max()));
     }},
    {"subkey list of another cell",
     [](hive_damage &hive, damage_choices &c) { hive.subkey_list(c.key(), c.cell()); }},
    {"value list of another cell",
     [](hive_damage &hive, damage_choices &c) { hive.value_list(c.key(), c.cell()); }},
    {"shared subkeys",
     [](hive_damage &hive, damage_choices &c) { hive.share_subkeys(c.key(), c.key()); }},
    {"loop",
     [](hive_damage &hive, damage_choices &c) { hive.list_entry(c.list(), c.index(), c.key()); }},
    {"one key in every place",
     [](hive_damage &hive, damage_choices &c) { hive.list_only(c.list(), c.key()); }},
    {"list entry",
     [](hive_damage &hive, damage_choices &c) { hive.list_entry(c.list(), c.index(), c.cell()); }},
    {"list count",
     [](hive_damage &hive, damage_choices &c) { hive.list_count(c.list(), c.short_number()); }},
    {"value list entry",
     [](hive_damage &hive, damage_choices &c) {
         hive.offset_entry(c.value_list(), c.index(), c.cell());
     }},
    {"value listed twice",
     [](hive_damage &hive, damage_choices &c) {
         hive.offset_entry(c.value_list(), c.index(), c.value().value);
     }},
    {"value name size",
     [](hive_damage &hive, damage_choices &c) {
         hive.value_name_size(c.value().value, c.short_number());
     }},
    {"value type",
     [](hive_damage &hive, damage_choices &c) { hive.value_type(c.value().value, c.number()); }},
    {"data size",
     [](hive_damage &hive, damage_choices &c) { hive.data_size(c.value().value, c.number()); }},
    {"data in another cell",
     [](hive_damage &hive, damage_choices &c) { hive.data_cell(c.value().value, c.cell()); }},
    {"block count",
     [](hive_damage &hive, damage_choices &c) {
         hive.block_count(c.big_value().data, c.short_number());
     }},
    {"block list entry",
     [](hive_damage &hive, damage_choices &c) {
         hive.offset_entry(c.big_value().block_list, c.index(), c.cell());
     }},
    {"big data size",
     [](hive_damage &hive, damage_choices &c) { hive.data_size(c.big_value().value, c.number()); }},
    {"signature",
     [](hive_damage &hive, damage_choices &c) { hive.signature(c.cell(), c.signature()); }},
    {"shrunk cell",
     [](hive_damage &hive, damage_choices &c) {
         hive.shrink_cell(c.cell(), static_cast<qint32>(8 * c.between(1, 16)));
     }},
    {"shrunk list of blocks",
     [](hive_damage &hive, damage_choices &c) { hive.shrink_cell(c.big_value().block_list, 8); }},
    {"cut record at the end", list_cut_record},
    {"cut data at the end",
     [](hive_damage &hive, damage_choices &c) {
         hive.add_last_cell(cut_record(c));
         hive.data_cell(c.value().value, hive.last_cell());
     }},
    {"cut list at the end",
     [](hive_damage &hive, damage_choices &c) {
         hive.add_last_cell(cut_record(c));
         hive.subkey_list(c.key(), hive.last_cell());
     }},
    {"cut list of blocks at the end", cut_block_list},
    {"dirty",
     [](hive_damage &hive, damage_choices &c) { hive.sequence_numbers(c.number(), c.number()); }},
};

/// What makes libhivex refuse the file more often than not, or hides every key.
constexpr damage_kind file_damages[] = {
    {"cell size",
     [](hive_damage &hive, damage_choices &c) {
         hive.cell_size(c.cell(), static_cast<qint32>(c.number()));
     }},
    {"cut root key at the end",
     [](hive_damage &hive, damage_choices &c) {
         hive.add_last_cell(cut_record("nk", c));
         hive.set_32(regf::base_block::root_cell, stored_offset(hive.last_cell()));
     }},
    {"bins size", [](hive_damage &hive, damage_choices &c) { hive.bins_size(c.number()); }},
    {"truncated at a page",
     [](hive_damage &hive, damage_choices &c) {
         hive.truncate(c.between(0, c.hive_size() / regf::page_size) * regf::page_size);
     }},
    {"truncated",
     [](hive_damage &hive, damage_choices &c) { hive.truncate(c.between(0, c.hive_size())); }},
    {"header field",
     [](hive_damage &hive, damage_choices &c) {
         hive.set_32(4 * c.between(0, regf::base_block::checksum / 4), c.number());
     }},
    {"bin field",
     [](hive_damage &hive, damage_choices &c) {
         hive.set_32(regf::first_bin + 4 * c.between(0, 7), c.number());
     }},
    {"any field",
     [](hive_damage &hive, damage_choices &c) {
         hive.set_32(regf::first_bin + 4 * c.between(0, c.hive_size() / 4), c.number());
     }},
};

template<size_t size>
const damage_kind &pick(const damage_kind (&kinds)[size], byte_choices &choices)
{
    return kinds[choices.up_to(size - 1)];
}

} // namespace

QStringList damage_by_choices(hive_damage &damage, const grown_hive &hive, byte_choices &choices)
{
    QStringList names;
    damage_choices parts(hive, damage.bytes().size(), choices);
    const qsizetype count = choices.pick(QList<qsizetype>{0, 1, 1, 2, 3, 8, 0, 1});
    for (qsizetype i = 0; i < count; ++i) {
        const damage_kind &kind =
            choices.one_in(24) ? pick(file_damages, choices) : pick(record_damages, choices);
        try {
            kind.damage(damage, parts);
            names.append(QString::fromLatin1(kind.name));
        } catch (const std::out_of_range &) {
            // The hive has no such part: the damage does not take place.
        }
    }
    return names;
}

QStringList all_damages()
{
    QStringList names;
    for (const damage_kind &kind : record_damages)
        names.append(QString::fromLatin1(kind.name));
    for (const damage_kind &kind : file_damages)
        names.append(QString::fromLatin1(kind.name));
    return names;
}

} // namespace evidence
