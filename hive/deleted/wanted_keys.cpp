#include "wanted_keys.h"

#include <algorithm>

namespace {

constexpr qsizetype most_names = 64;
constexpr qsizetype most_keys = 32;

quint64 bit(qsizetype number)
{
    return quint64(1) << number;
}

} // namespace

wanted_keys::wanted_keys(const QList<wanted_key> &keys)
{
    for (const wanted_key &key : keys) {
        const QStringList names = key.path.split(u'\\', Qt::SkipEmptyParts);
        if (names.isEmpty() || m_names.size() + names.size() > most_names ||
            m_keys.size() == most_keys)
            break;
        m_keys.append(key);
        m_first |= bit(m_names.size());
        m_names += names;
        m_last |= bit(m_names.size() - 1);
        m_last_places.append(int(m_names.size()) - 1);
    }
}

wanted_place wanted_keys::below(const wanted_place &parent, const QString &name) const
{
    wanted_place place;
    place.below = parent.below;
    place.level = static_cast<quint16>(std::min(parent.level + 1, 0xffff));
    return entered((parent.at & ~m_last) << 1, place, name);
}

wanted_place wanted_keys::entered(quint64 candidates, wanted_place place, const QString &name) const
{
    for (qsizetype i = 0; i < m_names.size(); ++i) {
        if ((candidates & bit(i)) != 0 && m_names.at(i).compare(name, Qt::CaseInsensitive) == 0)
            place.at |= bit(i);
    }
    if ((place.at & m_last) == 0)
        return place;
    place.level = 0;
    place.below = 0;
    for (qsizetype key = 0; key < m_keys.size(); ++key) {
        if ((place.at & bit(m_last_places.at(key))) != 0)
            place.below |= quint32(bit(key));
    }
    return place;
}

bool wanted_keys::is_wanted(const wanted_place &place) const
{
    if (place.level > most_levels)
        return false;
    for (qsizetype key = 0; key < m_keys.size(); ++key) {
        if ((place.below & bit(key)) != 0 && place.level <= m_keys.at(key).last_level)
            return true;
    }
    return false;
}

bool wanted_keys::are_values_wanted(const wanted_place &place) const
{
    for (qsizetype key = 0; key < m_keys.size(); ++key) {
        if ((place.below & bit(key)) != 0 && place.level >= m_keys.at(key).first_value_level &&
            place.level <= m_keys.at(key).last_level)
            return place.level <= most_levels;
    }
    return false;
}
