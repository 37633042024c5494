#ifndef WANTED_KEYS_H
#define WANTED_KEYS_H

#include <QList>
#include <QString>
#include <QStringList>

/// A key below which deleted records are looked for. Level 0 is the key itself, 1 its subkeys.
struct wanted_key
{
    QString path;              ///< from the root of the hive, with backslashes between the names
    int first_value_level = 0; ///< values of this level and of those below it are of interest
    int last_level = 0;        ///< nothing below this level is
};

/// Where a key stands in the paths of wanted keys, as far as the keys above it are known.
struct wanted_place
{
    quint64 at = 0;    ///< a bit for each name of the paths that the key may be
    quint32 below = 0; ///< a bit for each wanted key that it is, or lies below
    quint16 level = 0; ///< how far below
};

/// The paths of wanted keys. Names are compared without regard to letter case, as Windows does.
class wanted_keys
{
public:
    /// Keys of which the paths have more than 64 names together are left out, from the first on
    /// that does not fit.
    explicit wanted_keys(const QList<wanted_key> &keys);

    /// The place of a key below the root, of one below another key, and of one whose parent is
    /// unknown, which may be any name of the paths.
    wanted_place below_root(const QString &name) const { return entered(m_first, {}, name); }
    wanted_place below(const wanted_place &parent, const QString &name) const;
    wanted_place anywhere(const QString &name) const { return entered(~quint64(0), {}, name); }

    /// Whether keys at the place, or their values, are of interest.
    bool is_wanted(const wanted_place &place) const;
    bool are_values_wanted(const wanted_place &place) const;

    /// Further levels are not looked at, whatever is asked for: no key of interest lies there.
    static constexpr int most_levels = 8;

private:
    wanted_place entered(quint64 candidates, wanted_place place, const QString &name) const;

    QList<wanted_key> m_keys;
    QStringList m_names;      ///< of all paths, one after the other
    quint64 m_first = 0;      ///< a bit for each first name of a path
    quint64 m_last = 0;       ///< the same for the last names
    QList<int> m_last_places; ///< of each path
};

#endif
