#ifndef UNGUARDED_HIVE_H
#define UNGUARDED_HIVE_H

#include "hivex_memory.h"

#include <QByteArray>
#include <QList>

struct hive_h;

/// Reads a hive that somebody else has opened, through libhivex and without any guard. libhivex
/// reads past the end of damaged hives, and may take hours over forged ones. A key or a value is
/// given by its offset in the file, as in libhivex.
class unguarded_hive
{
public:
    /// The data of a value.
    struct value_data
    {
        hivex_text bytes; ///< null when they cannot be read
        qsizetype length = 0;
    };

    /// Reads through `hive`, which stays the caller's and must outlive this object.
    explicit unguarded_hive(hive_h *hive = nullptr) : m_hive(hive) {}
    virtual ~unguarded_hive() = default;
    unguarded_hive(const unguarded_hive &) = delete;
    unguarded_hive &operator=(const unguarded_hive &) = delete;

    hive_h *handle() const { return m_hive; }

    /// Reads through another handle from now on.
    void set_handle(hive_h *hive) { m_hive = hive; }

    /// The root key; 0 when there is none.
    unsigned long root() const;

    /// The direct subkeys of the key at `node`, or its values, in the order of the hive. Null,
    /// which differs from an empty list, when the list cannot be read.
    virtual hivex_handles subkeys(unsigned long node);
    virtual hivex_handles values(unsigned long node);

    /// The name of a key, or of a value, in UTF-8. Null when it cannot be read, which differs from
    /// an empty name.
    virtual hivex_text key_name(unsigned long node);
    virtual hivex_text value_name(unsigned long value);

    /// The last-write time of the key at `node`, a FILETIME; -1 when it cannot be read.
    virtual qint64 last_write_time(unsigned long node) const;

    /// The data of a value; without bytes when they cannot be read.
    virtual value_data data(unsigned long value);

    /// The registry type code of a value; 0 when it cannot be read.
    virtual int value_type(unsigned long value) const;

private:
    hive_h *m_hive;
};

/// The entries of a list that libhivex returned; none of a null one.
QList<size_t> entries_of(const hivex_handles &handles);

#endif
