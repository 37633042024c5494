#ifndef VOLUME_SIZES_H
#define VOLUME_SIZES_H

#include <QString>
#include <QStringList>

#include <optional>

/// How much of everything the volume of a benchmark holds.
struct volume_sizes
{
    int software_megabytes = 0; ///< length up to which the SOFTWARE hive is padded
    int user_megabytes = 0;     ///< the same of the user's hive
    int applications_64 = 0;    ///< subkeys of the Uninstall key
    int applications_32 = 0;    ///< subkeys of the 32-bit Uninstall key
    int registered = 0;         ///< values of RegisteredApplications
    int user_assist = 0;        ///< UserAssist values, spread over the class ids
    int class_ids = 1;          ///< subkeys of UserAssist
    int uninstall_every = 1;    ///< each n-th UserAssist value names an uninstaller
    int store = 0;              ///< values of the compatibility store
    int hidden_icons = 0;       ///< class ids below HideDesktopIcons
    int names_per_icon = 1;     ///< values of each class id's NameSpace key
    int packages = 0;           ///< entries of the package folder
};

/// One size with the name that it has on the command line.
struct named_size
{
    QString name;
    int volume_sizes::*size;
};

/// Every member of volume_sizes.
const QList<named_size> &named_sizes();

/// The names of the scenarios.
QStringList scenario_names();

/// The sizes of a scenario; nothing for a name that is none.
std::optional<volume_sizes> scenario(const QString &name);

#endif
