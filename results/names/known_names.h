#ifndef KNOWN_NAMES_H
#define KNOWN_NAMES_H

#include <string_view>

namespace results {

/// A known folder of Windows: results/data/known_folders.csv.
struct known_folder
{
    std::string_view name; ///< Microsoft's constant without FOLDERID_
    std::string_view
        place; ///< "%ProgramFiles%"; the name in brackets if it has no documented place
};

/// An application that registers itself by a hash: results/data/known_applications.csv.
struct known_application
{
    std::string_view name;
    std::string_view display_name; ///< of its Uninstall key, without the version
    std::string_view folder;       ///< where it is installed to have this hash
};

/// The folder of a GUID with its braces, in any letter case; null for an unknown one.
const known_folder *known_folder_of(std::string_view guid);

/// The display name of the application that is called `name`, in any letter case; empty for an
/// unknown one.
std::string_view display_name_of(std::string_view name);

/// The application of a hash of 16 hexadecimal digits in capitals; null for an unknown one.
const known_application *known_application_of(std::string_view hash);

} // namespace results

#endif
