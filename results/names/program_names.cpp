#include "program_names.h"

#include <algorithm>

#include "known_names.h"

namespace results {

namespace {

constexpr size_t guid_size = 38; // with braces
constexpr size_t hash_size = 16;
constexpr size_t publisher_id_size = 13;

bool is_digit(char character)
{
    return character >= '0' && character <= '9';
}

bool is_letter(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool is_hash(std::string_view name)
{
    return name.size() == hash_size && std::all_of(name.begin(), name.end(), [](char character) {
               return is_digit(character) || (character >= 'A' && character <= 'F');
           });
}

bool is_publisher_id(std::string_view text)
{
    return text.size() == publisher_id_size &&
           std::all_of(text.begin(), text.end(), [](char character) {
               return is_digit(character) || (character >= 'a' && character <= 'z');
           });
}

bool is_package_name(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char character) {
        return is_digit(character) || is_letter(character) || character == '.' || character == '-';
    });
}

bool starts_with_guid(std::string_view name)
{
    return name.size() >= guid_size && name[0] == '{' && name[guid_size - 1] == '}' &&
           (name.size() == guid_size || name[guid_size] == '\\');
}

bool is_path(std::string_view name)
{
    const bool has_drive =
        name.size() >= 3 && is_letter(name[0]) && name[1] == ':' && name[2] == '\\';
    return has_drive || name.substr(0, 2) == "\\\\" || name.substr(0, 1) == "%";
}

bool is_shortcut(std::string_view name)
{
    constexpr std::string_view suffix = ".lnk";
    return name.size() > suffix.size() &&
           std::equal(suffix.begin(), suffix.end(), name.end() - std::ptrdiff_t(suffix.size()),
                      [](char expected, char found) { return expected == (found | 0x20); });
}

/// Windows XP says in front how the program was started.
std::string_view without_way_of_starting(std::string_view name)
{
    for (const std::string_view way : {"UEME_RUNPATH:", "UEME_RUNPIDL:", "UEME_RUNCPL:"}) {
        if (name.substr(0, way.size()) == way && name.size() > way.size())
            return name.substr(way.size());
    }
    return name;
}

/// The known folder at the name's start in its place; false if the folder is unknown.
bool resolve_folder(std::string &name)
{
    const known_folder *folder = known_folder_of(std::string_view(name).substr(0, guid_size));
    if (folder == nullptr)
        return false;
    name.replace(0, guid_size, folder->place);
    return true;
}

/// The application of a package: "Name_publisher!Application".
bool resolve_package(std::string_view stored, program_name &name)
{
    const size_t mark = stored.find('!');
    const auto parts = split_package_name(stored.substr(0, std::min(mark, stored.size())));
    if (!parts)
        return false;
    name.package = parts->name;
    name.publisher_id = parts->publisher_id;
    return true;
}

void resolve_hash(program_name &name)
{
    const known_application *application = known_application_of(name.resolved);
    name.form = application == nullptr ? name_form::unknown_hash : name_form::known_hash;
    if (application != nullptr)
        name.resolved = application->name;
}

} // namespace

std::optional<package_name> split_package_name(std::string_view name)
{
    const size_t first = name.find('_');
    const size_t last = name.rfind('_');
    if (first == std::string_view::npos)
        return std::nullopt;
    const package_name parts{name.substr(0, first), name.substr(last + 1)};
    const bool is_split = is_package_name(parts.name) && is_publisher_id(parts.publisher_id);
    return is_split ? std::optional(parts) : std::nullopt;
}

std::string_view text_of(name_form form)
{
    switch (form) {
    case name_form::path:
        return "path";
    case name_form::known_folder_path:
        return "path below a known folder";
    case name_form::unknown_folder_path:
        return "path below an unknown folder";
    case name_form::shortcut:
        return "shortcut";
    case name_form::package:
        return "application of a package";
    case name_form::known_hash:
        return "hash of a known application";
    case name_form::unknown_hash:
        return "hash of an unknown application";
    case name_form::application_id:
        return "application id";
    }
    return {};
}

program_name resolve_program_name(std::string_view stored)
{
    program_name name;
    name.resolved = without_way_of_starting(stored);
    std::replace(name.resolved.begin(), name.resolved.end(), '/', '\\');
    if (is_hash(stored))
        resolve_hash(name);
    else if (starts_with_guid(name.resolved))
        name.form = resolve_folder(name.resolved) ? name_form::known_folder_path
                                                  : name_form::unknown_folder_path;
    else if (is_path(name.resolved))
        name.form = name_form::path;
    else if (resolve_package(stored, name))
        name.form = name_form::package;
    if (name.form != name_form::package && is_shortcut(name.resolved))
        name.form = name_form::shortcut;
    return name;
}

} // namespace results
