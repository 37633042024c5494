#ifndef HIVE_BASE_BLOCK_H
#define HIVE_BASE_BLOCK_H

#include <QByteArray>

/// The base block, with which a hive file begins. It shows the file's state. A transaction log
/// begins with a copy of the base block's fields.
class hive_base_block
{
public:
    /// `bytes`: the file's first bytes, regf::base_block::size of them or, of a shorter file, all.
    explicit hive_base_block(const QByteArray &bytes) : m_bytes(bytes) {}

    /// Whether the bytes are enough for a base block.
    bool is_whole() const;

    /// Whether the bytes are enough for the fields. If not, none may be read.
    bool has_fields() const;

    /// Whether the signature is that of a hive.
    bool is_of_a_hive() const;

    /// Whether the checksum is right. libhivex opens no hive whose checksum is wrong.
    bool is_checksum_right() const;

    /// Whether the hive was not closed cleanly: its newest changes stand in its transaction logs.
    bool is_dirty() const { return primary_sequence() != secondary_sequence(); }

    quint32 primary_sequence() const;
    quint32 secondary_sequence() const;

    /// When Windows wrote the hive last, as a FILETIME.
    quint64 last_written() const;

    /// Whether the file is a hive or a log, and of which format: regf::base_block::type_of_...
    quint32 file_type() const;

    /// Bytes of all bins.
    quint32 bins_size() const;

    /// The flags, of which the lowest one changes with a log's entries.
    quint32 flags() const;

    /// The length of the file according to the base block: the base block and all bins.
    qint64 told_length() const;

    /// Whether a file of `length` bytes ends before the length that the base block gives.
    bool is_cut_off(qint64 length) const { return told_length() > length; }

    /// Whether a file of `length` bytes ends within the first fields of a bin that the base block
    /// counts in. libhivex would read them beyond its buffer before it refuses the file.
    bool ends_within_a_bin_head(qint64 length) const;

    /// The checksum that belongs to the fields, of which `bytes` has as many as has_fields() asks
    /// for.
    static quint32 checksum_of(const QByteArray &bytes);

private:
    quint32 field_at(qint64 offset) const;

    QByteArray m_bytes;
};

#endif
