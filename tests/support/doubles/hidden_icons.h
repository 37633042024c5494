#ifndef HIDDEN_ICONS_H
#define HIDDEN_ICONS_H

#include "application_keys.h"
#include "worker_fixture.h"

namespace test_support::hidden_icons {

inline const QString operation = QStringLiteral("extract_hidden_desktop_icons");
inline const QString table = QStringLiteral("hidden_desktop_icons_app");

inline const QString recycle_bin = QStringLiteral("{645FF040-5081-101B-9F08-00AA002F954E}");
inline const QString computer = QStringLiteral("{20D04FE0-3AEA-1069-A2D8-08002B30309D}");

/// A row of the table.
inline QStringList row_of(const QString &account, const QString &name, const QString &hidden)
{
    return {account,
            name,
            hidden,
            QStringLiteral("NTUSER.DAT"),
            QStringLiteral("HideDesktopIcons"),
            evidence::hide_desktop_icons_key,
            QStringLiteral("/Users/") + account + QStringLiteral("/NTUSER.DAT"),
            QStringLiteral("Windows"),
            QStringLiteral("Source3")};
}

/// The subkey of HideDesktopIcons for the current start menu.
inline evidence::hive_key &start_panel(evidence::evidence_volume &volume, const QString &account)
{
    return volume.user(account)
        .key(evidence::hide_desktop_icons_key)
        .key(QStringLiteral("NewStartPanel"));
}

/// The key that names the icon of a class id.
inline evidence::hive_key &name_space(evidence::evidence_volume &volume, const QString &account,
                                      const QString &class_id)
{
    return volume.user(account).key(evidence::name_space_key).key(class_id);
}

/// The name and the flag of each row after a run, as "NAME|FLAG".
inline QStringList icons_of_run(worker_fixture &fixture)
{
    fixture.extract(table);
    return fixture.database().column(table, QStringLiteral("app_name || '|' || hidden"));
}

} // namespace test_support::hidden_icons

#endif
