#include "host_test.h"

#include "application_keys.h"
#include "artifact_list.h"
#include "files.h"

#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <stdexcept>

namespace test_support {

using namespace Qt::StringLiterals;
using namespace evidence;

const QString software_file = u"Windows/System32/config/SOFTWARE"_s;
const QString backup_file = u"Windows/System32/config/RegBack/SOFTWARE"_s;

const QStringList recorded{u"--plugin"_s, QStringLiteral(RECORDING_PLUGIN)};

int small_volume_rows(const QString &table)
{
    static const QHash<QString, int> rows{{u"install_apps_64"_s, 2},
                                          {u"install_apps_32"_s, 1},
                                          {u"uninstall_apps"_s, 1},
                                          {u"registered_apps"_s, 1},
                                          {u"metro_apps"_s, 2},
                                          {u"previously_executed_apps"_s, 2},
                                          {u"third_party_applications"_s, 1},
                                          {u"hidden_desktop_icons_app"_s, 1}};
    return rows.value(table, 0);
}

namespace {

QString report_line(const QString &name, int rows)
{
    return name.leftJustified(26) + QString::number(rows).rightJustified(10);
}

QStringList report_of_small_volume()
{
    QStringList lines;
    for (const artifact *extracted : artifact_list())
        lines.append(report_line(extracted->table.name, small_volume_rows(extracted->table.name)));
    return lines << report_line(u"total"_s, 11);
}

QStringList progress_of_small_volume()
{
    QStringList lines{progress_line(0, 0)};
    int rows = 0;
    for (const artifact *extracted : artifact_list()) {
        rows += small_volume_rows(extracted->table.name);
        lines.append(progress_line(int(lines.size()), rows));
    }
    return lines;
}

} // namespace

const QStringList small_volume_report = report_of_small_volume();
const QStringList small_volume_progress = progress_of_small_volume();

const QString bob_has_no_hive = u"artifact_host: warning: Users/bob/NTUSER.DAT: not found"_s;

const QString every_option =
    u"artifact_host: read with these options: file names in any letter case, texts decoded by "
    "their type, installations of users, older layouts, transaction logs applied"_s;
const QString no_option = u"artifact_host: read like the suite, without options"_s;

QString next_line(const QString &folder)
{
    return "artifact_host: look at what was found: artifact_host show "_L1 + folder;
}

QString host_test::canonical_folder() const
{
    return QFileInfo(folder()).canonicalFilePath();
}

QString host_test::database_path() const
{
    return canonical_folder() + "/results/Artifacts_Result/Windows_Installed_Applications/"
                                "Windows_Installed_Applications.sqlite"_L1;
}

QString host_test::record_path() const
{
    return QFileInfo(database_path()).path() + "/run.json"_L1;
}

QList<QJsonObject> host_test::recorded_runs() const
{
    const QJsonObject record = QJsonDocument::fromJson(read_file(record_path())).object();
    QList<QJsonObject> runs;
    for (const QJsonValue &run : record.value("runs"_L1).toArray())
        runs.append(run.toObject());
    if (record.value("format"_L1).toInt() != 1 || runs.isEmpty())
        throw std::runtime_error("no run record");
    return runs;
}

QStringList host_test::arguments(const QString &source, const QStringList &more) const
{
    return QStringList{u"extract"_s, source, u"--result"_s, result_path()} + more;
}

host_result host_test::extract(const evidence_volume &volume, const QStringList &more) const
{
    return host_process().run(arguments(volume.root(), more));
}

QString of_all_tabs(int done)
{
    return u"%1 of %2 tabs"_s.arg(done).arg(artifact_list().size());
}

QString progress_line(int done, int rows)
{
    return u"artifact_host: %1, %2 rows, 0:00"_s.arg(of_all_tabs(done)).arg(rows);
}

QString total_line(const host_result &result)
{
    return result.output.value(result.output.size() - 2);
}

void fill_software(hive_builder &hive)
{
    hive_key &installed = hive.key(uninstall_key);
    installed.key(u"Seven Zip"_s).text(u"DisplayName"_s, u"7-Zip"_s);
    installed.key(u"Browser"_s).text(u"DisplayName"_s, u"Browser"_s);
    hive.key(uninstall_key_32).key(u"Player"_s).text(u"DisplayName"_s, u"Player"_s);
    hive.key(registered_applications_key).text(u"Mail"_s, u"Software\\Mail\\Capabilities"_s);
}

void fill_user(hive_builder &hive)
{
    // Names are rotated by 13 letters.
    hive_key &count = hive.key(user_assist_key + "\\{CEBFF5CD}\\Count"_L1);
    count.binary(u"pnyp.rkr"_s, QByteArray(72, '\0'));
    count.binary(u"havafgnyy.rkr"_s, QByteArray(72, '\0'));
    hive.key(compatibility_store_key).binary(u"C:\\Games\\chess.exe"_s, "x");
    hive.key(hide_desktop_icons_key + "\\NewStartPanel"_L1).dword(u"{20D04FE0}"_s, 1);
    hive.key(name_space_key + "\\{20D04FE0}"_L1).text(QString(), u"This PC"_s);
}

std::unique_ptr<evidence_volume> small_volume()
{
    auto volume = std::make_unique<evidence_volume>();
    fill_software(volume->software());
    fill_user(volume->user(u"ann"_s));
    volume->package(u"ann"_s, u"Calculator"_s).package(u"bob"_s, u"Weather"_s);
    volume->folder(u"Users/Public"_s);
    volume->write();
    return volume;
}

} // namespace test_support
