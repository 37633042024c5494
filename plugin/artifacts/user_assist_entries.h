#ifndef USER_ASSIST_ENTRIES_H
#define USER_ASSIST_ENTRIES_H

#include "artifact.h"

#include <QString>

#include <functional>
#include <optional>

// What the artefacts of the UserAssist key share.

/// The key. Its subkeys are class ids, whose own values are no entries; those below them are.
inline constexpr listed_registry_key user_assist_entries_key = {
    QLatin1StringView("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\UserAssist"), 2,
    listed_registry_key::all_levels};

/// Writes one row for each UserAssist entry of every user's hive. `displayed_name` turns the
/// decoded name of an entry into the name to show, or into nothing for an entry without a row.
/// Returns as artifact::write_rows.
bool write_user_assist_entries(
    extraction &run, const std::function<std::optional<QString>(const QString &)> &displayed_name);

#endif
