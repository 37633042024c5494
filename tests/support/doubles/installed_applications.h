#ifndef INSTALLED_APPLICATIONS_H
#define INSTALLED_APPLICATIONS_H

#include "application_keys.h"
#include "worker_fixture.h"

namespace test_support::installed_applications {

/// The table of the native view.
inline const QString native = QStringLiteral("install_apps_64");

/// What a row of an application holds; the rest is the same for all of them.
struct application
{
    QString key_name;
    QString modified_timestamp;
    QString display_name = {};
    QString display_version = {};
    QString publisher = {};
    QString install_location = {};
    QString install_source = {};
    QString url = {};
    QString uninstall_string = {};
    QString install_date = {};
    QString source_file = QStringLiteral("/Windows/System32/config/SOFTWARE");
};

/// The row of an application.
inline QStringList row_of(const application &app, const QString &key = evidence::uninstall_key)
{
    return {null_text,
            app.key_name,
            app.display_name,
            app.display_version,
            app.publisher,
            app.install_location,
            app.install_source,
            app.url,
            app.uninstall_string,
            QStringLiteral("SOFTWARE"),
            QStringLiteral("Uninstall"),
            key,
            app.install_date,
            app.modified_timestamp,
            app.source_file,
            QStringLiteral("Windows"),
            QStringLiteral("Source3")};
}

/// The key of an application in the native view, last written at 0.
inline evidence::hive_key &application_key(evidence::evidence_volume &volume, const QString &name)
{
    return volume.software().key(evidence::uninstall_key).key(name).last_write_unix(0);
}

/// The texts of one column after a run over the native view.
inline QStringList column_of_run(worker_fixture &fixture, const QString &column)
{
    fixture.find_files();
    fixture.extract(native);
    return fixture.database().column(native, column);
}

} // namespace test_support::installed_applications

#endif
