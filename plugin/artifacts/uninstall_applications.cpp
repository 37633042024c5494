#include "uninstall_applications.h"

#include "conversions.h"
#include "hive_rows.h"
#include "parse_installed_applications.h"

using namespace Qt::StringLiterals;

namespace {

QStringList application_columns(const registry::struct_installed_apps &app, const QString &reg_file,
                                const QString &reg_path)
{
    return {app.key_name,
            app.display_name,
            app.display_version,
            app.publisher,
            app.install_location,
            app.install_source,
            app.url_info_about,
            app.uninstall_string,
            reg_file,
            u"Uninstall"_s,
            reg_path,
            shown_install_date(app.install_date),
            app.modified_timestamp};
}

bool write_applications_of_machine(extraction &run)
{
    const QString reg_path = run.extracted().key.path;
    return write_rows_of_machine<parse_installed_applications>(
        run, &registry::installed_apps_records,
        [&](const hive_rows &, const registry::struct_installed_apps &app, qsizetype) {
            return std::make_optional(application_columns(app, u"SOFTWARE"_s, reg_path));
        });
}

bool write_applications_of_users(extraction &run)
{
    const installations_of_users &installations = run.extracted().of_users;
    const QString reg_path = installations.key.path;
    run.use_statement(installations.insert_statement);
    return write_rows_of_users<parse_installed_applications>(
        run, installations.key, &registry::installed_apps_records,
        [&](const hive_rows &hive, const registry::struct_installed_apps &app, qsizetype) {
            return std::make_optional(QStringList(hive.user_name()) +
                                      application_columns(app, u"NTUSER.DAT"_s, reg_path));
        });
}

} // namespace

// The users' hives are read even where the machine's cannot be. A missing closing line then means
// that the machine's hive was not read.
bool write_uninstall_applications(extraction &run)
{
    const bool is_machine_complete = write_applications_of_machine(run);
    if (!run.context().options.installations_of_users)
        return is_machine_complete;
    return write_applications_of_users(run) && is_machine_complete;
}
