#ifndef ARTIFACT_H
#define ARTIFACT_H

#include "result_tab.h"

#include <QLatin1StringView>

class extraction;

/// What an artefact is read from.
enum class artifact_input
{
    software_hive,
    user_hives,
    package_folders
};

/// A registry key and what is read below it. Level 0 is the key itself, 1 its subkeys.
struct listed_registry_key
{
    QLatin1StringView path; ///< from the root of the hive; empty for no key
    int first_value_level;  ///< the values of this level and of those below it are read; none if it
                            ///< is beyond last_level
    int last_level;         ///< nothing is read below this level

    static constexpr int all_levels = 1 << 20; ///< as last_level: every level is read

    /// Whether the values of the key itself are read.
    bool has_own_values() const { return first_value_level == 0; }
};

/// Returns the key whose own values are read.
constexpr listed_registry_key values_of(QLatin1StringView path)
{
    return {path, 0, 0};
}

/// Returns the key of which the values of each direct subkey are read.
constexpr listed_registry_key values_of_subkeys_of(QLatin1StringView path)
{
    return {path, 1, 1};
}

/// Returns the key of which the direct subkeys are listed, and no values are read.
constexpr listed_registry_key subkeys_of(QLatin1StringView path)
{
    return {path, 2, 1};
}

/// How the source's root is taken away from the path that a row names as its source file.
enum class root_removal
{
    where_it_stands, ///< from paths that begin with it
    by_its_length    ///< as many characters as it has, whatever they are
};

/// Where the users' hives hold what the machine's hive holds in the artefact's key.
struct installations_of_users
{
    listed_registry_key key;
    QLatin1StringView insert_statement; ///< the table's, with the account in front
};

/// All that there is to know about one artefact: its table, where it is read, and how.
struct artifact
{
    result_tab table;
    artifact_input input;
    listed_registry_key key;         ///< the key whose records become rows; none for folders
    listed_registry_key further_key; ///< of the same hives, read to fill those rows; often none
    root_removal source_file_path;

    installations_of_users of_users; ///< read too if a host asks for it

    /// Writes the rows of a running extraction. False when it was cancelled, or when there is no
    /// hive to read: the run then leaves no closing line.
    bool (*write_rows)(extraction &run);
};

#endif
