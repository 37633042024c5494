#ifndef CHECKED_HIVE_H
#define CHECKED_HIVE_H

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>

#include <cstdlib>
#include <hivex.h>
#include <memory>
#include <optional>

/// A registry hive, read through libhivex, but asked for no record that leaves the file and for no
/// more than a hive of its size can list: libhivex itself minds neither.
class checked_hive
{
public:
    struct memory_freer
    {
        void operator()(void *memory) const { std::free(memory); }
    };
    using text = std::unique_ptr<char, memory_freer>;

    /// The fixed part of a record that ends with a name.
    struct named_record
    {
        qint64 length;             ///< up to the name, the cell's size included
        qint64 name_length_offset; ///< of the name's length in bytes, a 16-bit number
    };

    /// Opens the regular file for reading and reads all of it.
    explicit checked_hive(const QString &hive_file);

    bool is_open() const { return m_handle != nullptr; }

    /// Bytes of the file.
    qint64 length() const { return m_length; }

    hive_node_h root() const { return hivex_root(m_handle.get()); }

    /// The subkeys of a key; nothing when their list cannot be read.
    std::optional<QList<hive_node_h>> subkeys(hive_node_h key);

    /// The values of a key; nothing when their list cannot be read.
    std::optional<QList<hive_value_h>> values(hive_node_h key);

    /// The name in UTF-8; null when it cannot be read.
    text key_name(hive_node_h key);
    text value_name(hive_value_h value);

    /// Reads the data of a value for nothing but their length: what they cost a walk, and whether
    /// libhivex refuses them, is not told by what the value claims. 0 when they cannot be read.
    qint64 data_length(hive_value_h value);

    /// Lets as much be read again as the plug-in reads in one walk.
    void begin_walk();

    /// Whether what this walk has read would not fit into the file if it listed everything once,
    /// or stands below an index such as no intact hive has. Nothing more is read then.
    bool is_exhausted() const { return m_left < 0; }

    /// Bytes that this walk has read, what libhivex refused included.
    qint64 cost_of_walk() const { return m_size - m_left; }

    /// Counts bytes that the plug-in's walk repeats.
    void spend(qint64 bytes) { m_left -= bytes; }

    /// Counts the lists that the plug-in asks for where there is no key.
    void spend_refusals(qint64 count) { spend(count * refusal_cost()); }

private:
    struct hive_closer
    {
        void operator()(hive_h *hive) const { hivex_close(hive); }
    };
    using list_operation = size_t *(*)(hive_h *, size_t);
    using name_operation = char *(*)(hive_h *, size_t);

    qint64 refusal_cost() const;
    bool holds(size_t record, qint64 length) const;
    qint64 number_at(qint64 offset);
    QByteArray bytes_at(qint64 offset, qint64 length);
    qint64 block_list_length(qint64 cell, qint64 declared_length);
    bool is_index(qint64 list);
    QList<qint64> cells_at(qint64 offset, qint64 count);
    void spend_on_index(hive_node_h key, qsizetype subkey_count);
    std::optional<QList<size_t>> list_of(hive_node_h key, list_operation list);
    text name_of(size_t record, const named_record &layout, name_operation name);

    QFile m_file;
    std::unique_ptr<hive_h, hive_closer> m_handle;
    qint64 m_length;
    qint64 m_size; ///< of a walk
    qint64 m_left;
};

#endif
