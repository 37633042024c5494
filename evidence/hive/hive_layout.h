#ifndef HIVE_LAYOUT_H
#define HIVE_LAYOUT_H

#include "hive_bins.h"
#include "hive_key.h"

#include <QByteArray>
#include <deque>

namespace evidence {

/// Lays the keys of a hive out as a file image and notes in each key where its cells came to lie.
/// It goes over the keys in a loop, so that trees of any depth can be written.
class hive_layout
{
public:
    explicit hive_layout(quint32 minor_version);

    /// Lays the keys out; the first one is the root and parents stand before their subkeys.
    QByteArray bytes(std::deque<hive_key> &keys);

private:
    qint64 place_security(size_t key_count);
    void place_key(hive_key &key);
    void place_values(hive_key &key);
    void place_value(hive_key::value_entry &value);
    void place_data(hive_key::value_entry &value);
    void place_big_data(hive_key::value_entry &value);
    void place_subkeys(hive_key &key);
    qint64 place_offsets(const QList<qint64> &cells);

    quint32 m_minor_version;
    hive_bins m_bins;
};

} // namespace evidence

#endif
