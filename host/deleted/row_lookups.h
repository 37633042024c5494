#ifndef ROW_LOOKUPS_H
#define ROW_LOOKUPS_H

#include <QByteArray>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include "deleted_records.h"
#include "recovered_keys.h"

/// A value that tells what rows of other keys are about.
struct lookup_value
{
    QStringList path;
    QString name;
    quint32 type;
    QByteArray data;
};

/// The values of a hive that its rows show besides their own: of keys that live, and of deleted
/// ones where none lives. They have 1 MiB together at most.
class row_lookups
{
public:
    row_lookups(const deleted_records &records, const QList<recovered_key> &keys)
        : m_records(records), m_keys(keys)
    {
    }

    QList<lookup_value> values() { return living_lookups() + deleted_lookups(); }

private:
    bool is_lookup(const QStringList &path) const;
    void append_lookup(QList<lookup_value> &lookups, const lookup_value &value);
    QList<lookup_value> living_lookups();
    QList<lookup_value> deleted_lookups();

    const deleted_records &m_records;
    const QList<recovered_key> &m_keys;
    qsizetype m_lookup_bytes = 0;
    QSet<QString> m_lookup_keys;
};

#endif
