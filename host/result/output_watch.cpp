#include "output_watch.h"

using namespace Qt::StringLiterals;

void output_watch::note(const QString &name, const QString &path)
{
    if (const auto facts = facts_of(path))
        m_places.append({name, path, facts->identity});
}

QStringList output_watch::problems() const
{
    QStringList problems;
    for (const watched_place &place : m_places) {
        const auto facts = facts_of(place.path);
        if (!facts || !(facts->identity == place.identity))
            problems.append(u"%1 %2 was exchanged or removed during the run, so what was written "
                            "may have gone elsewhere"_s.arg(place.name, place.path));
    }
    return problems;
}
