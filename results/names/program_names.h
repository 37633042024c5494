#ifndef PROGRAM_NAMES_H
#define PROGRAM_NAMES_H

#include <optional>
#include <string>
#include <string_view>

namespace results {

/// The parts of a package's name.
struct package_name
{
    std::string_view name;         ///< "Microsoft.WindowsCalculator"
    std::string_view publisher_id; ///< "8wekyb3d8bbwe"
};

/// Splits a family name ("Name_publisher") or a full name
/// ("Name_version_architecture_..._publisher"). Nothing if the text is neither.
std::optional<package_name> split_package_name(std::string_view name);

/// What kind of name a program has.
enum class name_form
{
    path,
    known_folder_path,   ///< below a known folder that is named
    unknown_folder_path, ///< below a folder whose GUID is in no list
    shortcut,            ///< any path of a shortcut
    package,             ///< an application of a package
    known_hash,          ///< a hash that results/data/known_applications.csv names
    unknown_hash,
    application_id ///< any other name, such as Microsoft.Windows.Explorer
};

/// The name of the form for people: "path", "path below a known folder", ...
std::string_view text_of(name_form form);

/// A program's name, decoded.
struct program_name
{
    name_form form = name_form::application_id;
    std::string resolved;     ///< known folders and hashes by name, "\" between folders
    std::string package;      ///< of an application of a package
    std::string publisher_id; ///< the same
};

/// Decodes the name of a UserAssist entry, or of a program in the Compatibility Assistant's Store.
program_name resolve_program_name(std::string_view stored);

} // namespace results

#endif
