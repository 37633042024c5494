#ifndef DELETED_RECORDS_H
#define DELETED_RECORDS_H

#include "cancel_test.h"
#include "free_space.h"
#include "known_keys.h"
#include "living_lists.h"
#include "record_parts.h"
#include "record_places.h"
#include "wanted_keys.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>
#include <vector>

/// A deleted value.
struct deleted_value
{
    qint64 offset = 0; ///< of its cell in the file
    quint32 type = 0;
    quint32 data_size = 0; ///< as it was
    record_flaw data = record_flaw::none;
};

/// A key of which something was deleted: the key itself with its values, or some of its values.
struct deleted_key
{
    quint32 number = known_keys::none; ///< among all keys; none if it is not known
    qint64 offset = 0;                 ///< of its cell in the file; 0 if it is not known
    bool is_alive = false;             ///< only the values given here were deleted
    path_state path = path_state::unknown;
    quint64 last_write = 0;  ///< a FILETIME
    quint32 values_told = 0; ///< how many the key had; of a key that is alive, those given here
    record_flaw list = record_flaw::none;
    std::vector<deleted_value> values; ///< those that are still there

    /// Whether key, list, values and data are all there.
    bool is_whole() const;
};

/// The deleted keys and values that a hive file has in free cells and behind its last bin.
///
/// Nothing of the result is a copy: names and data are read from the hive when they are asked for.
/// Keys that are not of interest are counted only. The work grows with the hive's length, and with
/// the logarithm of the number of records in it.
class deleted_records
{
public:
    /// Looks through the hive file with these bytes, which has a sound base block, for keys and
    /// values of the wanted keys. Ends early, with nothing found, when `cancelled` says so.
    deleted_records(const QByteArray &hive, const QList<wanted_key> &wanted,
                    const cancel_test &cancelled = {});
    ~deleted_records();
    Q_DISABLE_COPY_MOVE(deleted_records)

    bool is_cancelled() const { return m_is_cancelled; }

    /// Deleted keys and keys of which values were deleted, in the order of their places. The last
    /// one, if its number is none, has the values whose key is not known.
    const std::vector<deleted_key> &keys() const { return m_found; }

    /// The names from below the root, or from the first known key on, down to the key.
    QStringList path_of(const deleted_key &key) const;
    QString name_of(const deleted_value &value) const;
    /// The data of a value that has no flaw.
    QByteArray data_of(const deleted_value &value) const;

    /// The values that keys in use have below a wanted key, in the order of their keys.
    const std::vector<living_value> &living_values() const { return m_living; }
    QStringList path_of(const living_value &value) const;
    quint64 last_write_of(const living_value &value) const;
    QString name_of(const living_value &value) const;
    quint32 type_of(const living_value &value) const;
    QByteArray data_of(const living_value &value) const;

    /// All deleted records of the hive, of interest or not.
    qint64 keys_in_free_space() const { return qint64(m_places.keys.size()); }
    qint64 values_in_free_space() const { return qint64(m_places.values.size()); }
    qint64 free_bytes() const { return m_space.free_bytes(); }
    qint64 bytes_behind_bins() const { return m_space.bytes_behind_bins(); }

private:
    friend class deleted_record_reader;

    QByteArrayView cell_at(qint64 offset) const;
    QByteArrayView used_cell_at(qint64 offset) const;

    QByteArray m_hive;
    wanted_keys m_wanted;
    free_space m_space;
    record_places m_places;
    known_keys m_keys;
    bool m_is_cancelled = false;
    std::vector<deleted_key> m_found;
    std::vector<living_value> m_living;
};

#endif
