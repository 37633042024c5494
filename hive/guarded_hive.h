#ifndef GUARDED_HIVE_H
#define GUARDED_HIVE_H

#include "hive_file.h"
#include "unguarded_hive.h"
#include "walk_budget.h"

#include <QList>
#include <QString>

#include <vector>

/// Reads a hive through libhivex, and never passes it a cell that extends past the end of the file,
/// nor forged big data. A walk_budget bounds what is read again. A list, name or datum that is not
/// passed to libhivex counts as one that cannot be read.
class guarded_hive : public unguarded_hive
{
public:
    guarded_hive() = default;
    ~guarded_hive() override;

    /// Opens the hive at `path`, a regular file, for reading, and starts a walk. False when it
    /// cannot be read or has no root key. A hive that was open before is closed.
    bool open(const QString &path);

    /// Closes the hive.
    void close();

    /// Whether a hive is open.
    bool is_open() const { return handle() != nullptr; }

    /// Bytes of the hive's file when it was opened.
    qint64 file_length() const { return m_file.length(); }

    /// Starts another walk over the open hive: all of it may be read again.
    void begin_walk();

    /// Whether the walk ended because too much was read again. An ended walk reads nothing more.
    bool is_walk_over() const { return m_budget.is_spent(); }

    /// The path of the key at whose subkeys or values the walk ended, as key_path() gives it.
    QString last_key_path() const { return key_path(m_last_key); }

    /// The path of a key that this walk has listed, below the root and with backslashes between the
    /// names. Empty for the root, and for keys that the walk has not listed. A very long path is
    /// cut to its end, behind an ellipsis.
    QString key_path(unsigned long node) const;

    hivex_handles subkeys(unsigned long node) override;
    hivex_handles values(unsigned long node) override;
    hivex_text key_name(unsigned long node) override;
    hivex_text value_name(unsigned long value) override;
    qint64 last_write_time(unsigned long node) const override;
    value_data data(unsigned long value) override;
    int value_type(unsigned long value) const override;

private:
    bool has_key(unsigned long node) const;
    bool has_value(unsigned long value) const;
    bool may_go_on(bool has_budget, unsigned long key);
    unsigned long parent_of(unsigned long node) const;
    bool read_subkey_lists(qint64 node);
    bool read_value_list(qint64 node);
    bool read_data(qint64 cell, qint64 declared_length);
    bool read_big_data(qint64 record, qint64 declared_length);
    bool read_blocks(qint64 list, qint64 count, qint64 declared_length);

    /// The subkeys of one key, as the walk listed them.
    struct listed_subkeys
    {
        unsigned long parent;
        QList<size_t> subkeys;
    };

    hive_file m_file;
    qint64 m_length = 0; ///< of base block and bins
    walk_budget m_budget;
    std::vector<listed_subkeys> m_listed; ///< a key is listed before its own subkeys are
    unsigned long m_key_of_values = 0;    ///< the key whose values were listed last
    unsigned long m_last_key = 0;         ///< where the walk ended
};

#endif
