#ifndef VOLUME_SEARCH_H
#define VOLUME_SEARCH_H

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

#include "exit_code.h"

/// A Windows volume in the folder that the examiner named.
struct found_volume
{
    QString name;      ///< its path from that folder; "." for the folder itself
    QString directory; ///< its path
};

/// Whether a Windows volume is mounted or extracted at `directory`.
bool is_volume(const QString &directory);

/// The volumes of a source, and what could not be searched.
struct volume_search
{
    QList<found_volume> volumes; ///< by depth, then by name
    QStringList warnings;
};

/// Searches `source`, which passed check_source(), and the folders of a few levels below it, where
/// triage collectors put volumes. Nothing is searched below a volume, and no link is followed.
volume_search find_volumes(const QString &source);

/// The volume to read, or why none is chosen.
struct chosen_volume
{
    found_volume volume;
    QStringList warnings;
    std::optional<refusal> refused;
};

/// The volume of `source` that is called `name`: by its path from there or by the last part of
/// that, whatever the letter case. Without a name, the source itself or the only one in it. If none
/// is found, the source itself, of which a run will tell what is missing.
chosen_volume choose_volume(const QString &source, const QString &name);

#endif
