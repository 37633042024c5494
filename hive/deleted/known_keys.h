#ifndef KNOWN_KEYS_H
#define KNOWN_KEYS_H

#include "record_places.h"
#include "wanted_keys.h"

#include <QByteArrayView>
#include <QStringList>

#include <vector>

/// How far the path of a key is known.
enum class path_state
{
    whole,
    /// A deleted key on the way was written later than its parent, so that another key may have
    /// taken the parent's place. Or only the rest of a list says whose a value is.
    doubtful,
    partial, ///< a parent is gone; the path begins with the first key that is known
    unknown  ///< of a value that no list names
};

/// All keys of a hive, those in use and deleted ones, with their parents. Parents are followed as
/// far as they are sound records; each is looked at once.
class known_keys
{
public:
    struct key
    {
        quint32 place = 0;  ///< see free_region
        quint32 parent = 0; ///< number of the parent; none for a key whose parent is unknown
        quint16 depth = 0;  ///< how many known keys are above it
        bool is_deleted = false;
        bool is_resolved = false;
        bool is_on_way = false; ///< while parents are followed
        path_state path = path_state::partial;
        wanted_place wanted;
    };

    static constexpr quint32 none = 0xffffffff;

    known_keys(QByteArrayView hive, const free_space &space, const std::vector<quint32> &deleted,
               const wanted_keys &wanted, const cancel_test &cancelled);

    const std::vector<key> &all() const { return m_keys; }
    const key &at(quint32 number) const { return m_keys[number]; }

    /// The key's cell by its own size.
    QByteArrayView cell_of(quint32 number) const;
    qint64 offset_of(quint32 number) const;

    /// The names from below the root, or from the first known key, down to the key.
    QStringList path_of(quint32 number) const;

private:
    void add(quint32 place, bool is_deleted);
    quint32 number_of(qint64 offset) const;
    quint32 parent_of(quint32 number) const;
    void resolve(quint32 number);
    void settle(quint32 number);
    bool is_doubtful(const key &child, const key &parent) const;

    QByteArrayView m_hive;
    const free_space &m_space;
    const wanted_keys &m_wanted;
    qint64 m_root;
    std::vector<key> m_keys;
    std::vector<quint32> m_way; ///< keys whose parents are followed, from the first one up
};

#endif
