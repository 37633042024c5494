#ifndef HIVE_KEY_H
#define HIVE_KEY_H

#include "hive_name.h"
#include "registry_data.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <deque>
#include <vector>

namespace evidence {

/// How the list of a key's subkeys is stored.
enum class subkey_list
{
    automatic, ///< lh; lists of lh below an ri when there are more than Windows puts into one
    li,        ///< offsets only
    lf,        ///< each offset with the first four bytes of the name
    lh,        ///< each offset with a hash of the name
    ri         ///< a list of lh lists
};

/// Where the cells of a key lie in the file; 0 means that there is no such cell.
struct key_cells
{
    qint64 key = 0;              ///< "nk" cell; also libhivex's handle of the node
    qint64 subkey_list = 0;      ///< the list that the key points at
    QList<qint64> subkey_leaves; ///< the lists below it when it is an "ri"
    qint64 value_list = 0;
};

/// Where the cells of a value lie in the file; 0 means that there is no such cell.
struct value_cells
{
    qint64 value = 0;      ///< "vk" cell; also libhivex's handle of the value
    qint64 data = 0;       ///< the data's cell, or the "db" cell of big data
    qint64 block_list = 0; ///< of big data
    QList<qint64> blocks;  ///< of big data
};

/// One registry key under construction. Its setters return the key, so that they chain.
class hive_key
{
public:
    /// The key at `path` (parts separated by backslashes) below this one; missing keys are made.
    /// Parts are compared without regard to letter case; of duplicates the first is meant.
    hive_key &key(const QString &path);

    /// A new subkey, whatever subkeys there are already.
    hive_key &add_key(const hive_name &name);

    /// Adds a value, whatever values there are already. `type` may be any number.
    hive_key &value(const hive_name &name, quint32 type, const QByteArray &data);

    /// Adds a text in UTF-16LE with its terminator.
    hive_key &text(const hive_name &name, const QString &text, quint32 type = reg_sz);

    /// Adds a value of the type that the name says.
    hive_key &multi_text(const hive_name &name, const QStringList &texts);
    hive_key &binary(const hive_name &name, const QByteArray &data);
    hive_key &dword(const hive_name &name, quint32 number);
    hive_key &qword(const hive_name &name, quint64 number);

    /// Sets the last-write time: a FILETIME of any sign, or Unix seconds.
    hive_key &last_write(qint64 filetime);
    hive_key &last_write_unix(qint64 seconds);

    /// Sets how the subkeys are listed. More subkeys than one list can hold become an ri.
    hive_key &list_kind(subkey_list kind);

    bool has_values() const { return !m_values.empty(); }

    /// Where the key's cells lie, as of the last hive_builder::bytes().
    const key_cells &cells() const { return m_cells; }

    /// Where the cells of the first value of this name, or of the value added as number `index`,
    /// lie, as of the last hive_builder::bytes(). Throws std::out_of_range when there is none.
    const value_cells &cells_of_value(const QString &name) const;
    const value_cells &cells_of_value(qsizetype index) const;

private:
    friend class hive_builder;
    friend class hive_layout;

    struct value_entry
    {
        hive_name name;
        quint32 type;
        QByteArray data;
        value_cells cells;
    };

    /// `arena` owns every key of the hive; `parent` is null for the root.
    hive_key(std::deque<hive_key> &arena, hive_key *parent, const hive_name &name);

    hive_key &subkey(const QString &name);
    void sort_subkeys();

    std::deque<hive_key> &m_arena;
    hive_key *m_parent;
    hive_name m_name;
    qint64 m_last_write;
    subkey_list m_list_kind = subkey_list::automatic;
    std::vector<hive_key *> m_subkeys;
    QHash<QString, hive_key *> m_first_by_folded_name;
    std::vector<value_entry> m_values;
    key_cells m_cells;
};

} // namespace evidence

#endif
