#ifndef PROGRAM_PATHS_H
#define PROGRAM_PATHS_H

#include <QString>

namespace results {

// The forms in which programs of different tables are compared.

/// A path as it can be compared: small letters, "\" between folders, folders of Windows where they
/// lie by default, no "\" at the end. `account` is whose profile the path may be in. Empty if the
/// text is no path.
QString comparable_path(const QString &path, const QString &account);

/// The folder of a comparable path; empty for a drive.
QString folder_of(const QString &comparable);

/// Whether programs of many makers lie in the folder, so that lying there tells nothing: a drive,
/// "Program Files", "Windows", a profile and the like.
bool is_shared_folder(const QString &comparable);

/// The comparable folder of the program in a command that uninstalls; empty for msiexec, and if
/// there is none.
QString folder_of_command(const QString &command);

/// Whether a program uninstalls, by the name of its file: "uninstall" in it, or "unins" in front.
bool is_uninstaller(const QString &comparable);

/// A display name as it can be compared: small letters, without what stands in parentheses and
/// without the version: "GIMP 2.10.36-1" and "Mozilla Firefox (x64 en-US)" are "gimp" and "mozilla
/// firefox".
QString comparable_name(const QString &display_name);

/// The name of a shortcut's file without ".lnk".
QString name_of_shortcut(const QString &path);

} // namespace results

#endif
