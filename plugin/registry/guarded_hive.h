#ifndef GUARDED_HIVE_H
#define GUARDED_HIVE_H

#include "hive_file.h"
#include "hivex_memory.h"
#include "walk_budget.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QPair>
#include <QString>

#include <memory>

struct hive_h;

/// What walkers read of a hive, through libhivex: no cell that leaves the file gets to it, forged
/// big data neither, and the walk's budget bounds what is read. A key or a value is its offset in
/// the file, as libhivex has it. What was not opened here, with a handle of its own, is read
/// without guard or budget.
class guarded_hive
{
public:
    /// The data of a value.
    struct value_data
    {
        hivex_text bytes; ///< null when they cannot be read
        qsizetype length = 0;
    };

    /// Opens the hive at `path`, a regular file, and starts the budget of a walk. False when that
    /// cannot be read or has no root key; what was opened is closed again.
    bool open(const QString &path);

    /// Ends the walk and forgets what is known of the hive.
    void close();

    hive_h *handle() const { return m_handle.get(); }

    /// The root key of the hive that is open; 0 when it has none.
    unsigned long root() const;

    /// What the walk may still read.
    walk_budget &budget() { return m_budget; }

    /// The direct subkeys of the key at `node`, or its values, in the order of the hive. Empty
    /// when libhivex refuses the list, when the key leaves the file, and once the budget is spent.
    QList<size_t> subkeys(hive_h *hive, unsigned long node);
    QList<size_t> values(hive_h *hive, unsigned long node);

    /// The name of a key, or of a value, in UTF-8. Null when it cannot be read, which differs from
    /// an empty name, and once the budget is spent.
    hivex_text key_name(hive_h *hive, unsigned long node);
    hivex_text value_name(hive_h *hive, unsigned long value);

    /// The last-write time of the key at `node`, a FILETIME; -1 when it cannot be read.
    qint64 last_write_time(hive_h *hive, unsigned long node) const;

    /// The data of a value; without bytes when they cannot be read and once the budget is spent.
    value_data data(hive_h *hive, unsigned long value);

    /// The same as a byte array. Large data that several values share are kept once.
    QByteArray bytes(hive_h *hive, unsigned long value);

    /// The registry type code of a value; 0 when it cannot be read.
    static int value_type(hive_h *hive, unsigned long value);

private:
    /// Closes an opened hive; nothing is ever committed, so closing cannot lose anything.
    struct closer
    {
        void operator()(hive_h *hive) const;
    };

    /// hivex_node_children() or hivex_node_values().
    using list_operation = size_t *(*)(hive_h *, size_t);

    QList<size_t> list_of(hive_h *hive, unsigned long node, list_operation list);
    hivex_text affordable(hivex_text name, size_t record, const named_record &layout);

    std::unique_ptr<hive_h, closer> m_handle;
    hive_file m_file;
    walk_budget m_budget;
    QHash<QPair<size_t, size_t>, QByteArray> m_large_data; ///< by data cell and length
};

#endif
