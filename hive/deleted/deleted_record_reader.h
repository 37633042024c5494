#ifndef DELETED_RECORD_READER_H
#define DELETED_RECORD_READER_H

#include "claimed_bytes.h"
#include "deleted_records.h"
#include "living_lists.h"
#include "value_owners.h"

/// Fills what a scan of a hive found. A helper of deleted_records.
///
/// Lists claim their bytes before data do: what a list holds shows that it is one, which data
/// cannot.
class deleted_record_reader
{
public:
    deleted_record_reader(deleted_records &records, const cancel_test &cancelled)
        : m_records(records),
          m_cancelled(cancelled),
          m_hive(records.m_hive),
          m_parts(m_hive, records.m_space, records.m_places)
    {
    }

    void read();

private:
    using claim = claimed_bytes::claim;

    void add_deleted_keys();
    void check_lists();
    void read_lists();
    void drop_other_keys();
    void add_values_of_living_keys();
    void add_values_of_no_key();
    void check_data();

    template<typename function>
    void for_each_listed(function visit) const;
    bool is_wanted(const deleted_key &key) const;
    deleted_value value_at(qint64 offset) const;
    deleted_key &living_key(quint32 number, path_state path);
    std::vector<deleted_value *> found_values();

    deleted_records &m_records;
    const cancel_test &m_cancelled;
    QByteArrayView m_hive;
    record_parts m_parts;
    claimed_bytes m_claims;
    std::vector<quint8> m_named; ///< for each deleted value, whether lists name it: 2 if several do
    std::vector<value_owner> m_rest_of_lists; ///< what lists of keys in use have behind their end
};

#endif
