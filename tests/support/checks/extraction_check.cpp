#include "extraction_check.h"

#include "artifact_list.h"
#include "host_double.h"
#include "result_database.h"
#include "volume_generator.h"
#include "volume_snapshot.h"
#include "windows_installed_applications.h"

#include <QVariantMap>

#include <stdexcept>

namespace test_support {

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

void require(bool holds, const QString &reason)
{
    if (!holds)
        throw std::logic_error(reason.toStdString());
}

qint64 rows_in_all_tables(const result_database &database)
{
    qint64 rows = 0;
    const QStringList tables = all_tabs();
    for (const QString &table : tables)
        rows += database.row_count(table);
    return rows;
}

void check_database(const host_double &host)
{
    const result_database database(host.database_path());
    const QString verdict = database.integrity_check();
    require(verdict == u"ok"_s, u"integrity check: "_s + verdict);
    const QString rows = u"records %1"_s.arg(rows_in_all_tables(database));
    require(host.events().last() == rows,
            u"%1 in the tables, but signalled %2"_s.arg(rows, host.events().last()));
}

void check_tabs(const host_double &host)
{
    for (int tab = 1; tab <= all_tabs().size(); ++tab)
        require(host.events().count(u"tabs %1"_s.arg(tab)) == 1, u"tab %1 not counted"_s.arg(tab));
}

void set_accounts(host_double &host, const QStringList &accounts)
{
    for (const QString &account : accounts)
        host.settings.source.system_account_list.append({account, {}});
}

/// Whatever a host asks for, the same holds.
QVariantMap chosen_options(byte_choices &choices)
{
    QVariantMap options;
    for (const QString &name :
         {u"ignore_letter_case"_s, u"decode_by_type"_s, u"installations_of_users"_s,
          u"keep_hives_open"_s, u"old_layout"_s, u"report_unread"_s}) {
        if (choices.one_in(2))
            options.insert(name, true);
    }
    return options;
}

} // namespace

void check_extraction(const QByteArray &bytes)
{
    byte_choices choices(bytes);
    const bool cancels = choices.one_in(8);
    const qint64 last_row = 1 + choices.byte();

    evidence_volume volume;
    const QStringList accounts = generate_volume(volume, choices, described_artifacts());
    const QStringList before = volume_snapshot(volume.root());

    host_double host(volume, cancels ? row_progress::every_row : row_progress::throttled);
    set_accounts(host, accounts);
    if (choices.one_in(2))
        host.plugin().setProperty("extraction_options", chosen_options(choices));
    if (cancels)
        host.cancel_at_row(last_row);
    host.run();

    check_database(host);
    check_tabs(host);
    require(volume_snapshot(volume.root()) == before, u"the volume was altered"_s);
}

} // namespace test_support
