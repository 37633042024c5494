#ifndef APPLICATION_KEYS_H
#define APPLICATION_KEYS_H

#include <QString>

namespace evidence {

// The keys that name applications, from the root of the hive that holds them.

inline const QString uninstall_key =
    QStringLiteral("Microsoft\\Windows\\CurrentVersion\\Uninstall");
inline const QString uninstall_key_32 =
    QStringLiteral("WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall");
inline const QString registered_applications_key = QStringLiteral("RegisteredApplications");
inline const QString compatibility_store_key =
    QStringLiteral("SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\AppCompatFlags\\"
                   "Compatibility Assistant\\Store");
inline const QString user_assist_key =
    QStringLiteral("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\UserAssist");
inline const QString hide_desktop_icons_key =
    QStringLiteral("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\HideDesktopIcons");
inline const QString name_space_key =
    QStringLiteral("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Desktop\\NameSpace");

} // namespace evidence

#endif
