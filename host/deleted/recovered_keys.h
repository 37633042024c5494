#ifndef RECOVERED_KEYS_H
#define RECOVERED_KEYS_H

#include <QList>
#include <QString>
#include <QStringList>

#include "wanted_keys.h"

class QObject;

/// How the rows of a table name the record that they come from.
struct row_rule
{
    bool is_of_keys = false; ///< a row comes from a key; otherwise from a value
    QString group_column;    ///< has the name of the key one level below; often none
    QString name_column;     ///< has the name of the key, or value; empty if no column has it
    bool is_rotated = false; ///< letters of the value's name are rotated by 13 places in the row
};

/// A registry key that tabs are filled from.
struct recovered_key
{
    wanted_key key;
    QList<wanted_key> lookups; ///< keys of the same hive that name what the rows are about
    QStringList tabs;
    row_rule rule;
    bool is_of_users = false; ///< in the hives of the users, not of the machine
};

/// The keys that the plug-in object tells of in its property "artifacts" for the tabs; those of the
/// users' installations only if they are read. Tabs whose rows cannot be told apart are left out.
QList<recovered_key> recovered_keys(const QObject &plugin, const QStringList &tabs,
                                    bool with_installations_of_users);

/// The keys and lookups of the users' hives, or of the machine's, to look for.
QList<wanted_key> wanted_of(const QList<recovered_key> &keys, bool is_of_users);

/// Those of the tabs that are filled from the keys, in their order.
QStringList tabs_of(const QList<recovered_key> &keys, QStringList tabs);

#endif
