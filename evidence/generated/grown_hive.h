#ifndef GROWN_HIVE_H
#define GROWN_HIVE_H

#include "byte_choices.h"
#include "hive_builder.h"
#include "hive_generator.h"

#include <QList>
#include <QStringList>
#include <QVariantList>

namespace evidence {

/// An intact hive whose keys and values follow from a byte string, with the parts noted that can be
/// damaged afterwards.
class grown_hive
{
public:
    /// Grows the keys that each hive of the kind has, and then those of the described artefacts,
    /// see generate_hive().
    grown_hive(byte_choices &choices, hive_kind kind, const QVariantList &artifacts);

    /// The hive file; from then on the cells of keys and values are known.
    QByteArray bytes() { return m_hive.bytes(); }

    /// The keys in the order of their making; the root is the first.
    const QList<const hive_key *> &keys() const { return m_keys; }
    /// The cells of the values, in the order of their making.
    QList<value_cells> values() const;

private:
    struct value_place
    {
        const hive_key *key;
        qsizetype index;
    };

    /// What grows below a key that the plug-in reads.
    struct growth
    {
        QString path;
        QStringList subkey_names;
        QStringList value_names;
        int levels; ///< how deep below the path keys shall grow
    };

    static QList<growth> usual_growths(hive_kind kind);
    static QList<growth> growths_of(hive_kind kind, const QVariantList &artifacts);
    hive_key &key_at(const QString &path);
    hive_key &added_key(hive_key &parent, const growth &plan);
    void grow(hive_key &key, const growth &plan, int levels);
    void grow_values(hive_key &key, const growth &plan);
    qsizetype count();
    hive_name name(const QStringList &usual);
    QByteArray value_data();
    qint64 last_write();

    byte_choices &m_choices;
    hive_builder m_hive;
    QList<const hive_key *> m_keys;
    QList<value_place> m_values;
};

} // namespace evidence

#endif
