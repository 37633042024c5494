#include "uninstall_key.h"

#include "conversions.h"
#include "hive_rows.h"
#include "parse_installed_applications.h"

using namespace Qt::StringLiterals;

bool write_uninstall_key(extraction &run)
{
    const QString reg_path = run.extracted().key.path;
    return write_rows_of_key<parse_installed_applications>(
        run, &registry::installed_apps_records,
        [&](const hive_rows &, const registry::struct_installed_apps &app,
            qsizetype) -> std::optional<QStringList> {
            return QStringList{app.key_name,
                               app.display_name,
                               app.display_version,
                               app.publisher,
                               app.install_location,
                               app.install_source,
                               app.url_info_about,
                               app.uninstall_string,
                               u"SOFTWARE"_s,
                               u"Uninstall"_s,
                               reg_path,
                               shown_install_date(app.install_date),
                               app.modified_timestamp};
        });
}
