#ifndef OUTPUT_WATCH_H
#define OUTPUT_WATCH_H

#include <QList>
#include <QString>
#include <QStringList>

#include "file_identity.h"

/// Notices when what a run writes to is exchanged while it runs: rows then went somewhere else
/// than the examiner believes, perhaps through a link into evidence.
class output_watch
{
public:
    /// Remembers what lies at `path` now; nothing when there is nothing. `name` begins the line
    /// that tells of an exchange.
    void note(const QString &name, const QString &path);

    /// One line for each place where something else lies by now, or nothing any more.
    QStringList problems() const;

private:
    struct watched_place
    {
        QString name;
        QString path;
        file_identity identity;
    };

    QList<watched_place> m_places;
};

#endif
