#include "hive_rows.h"
#include "parse_installed_applications.h"
#include "plugin_static_function.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

constexpr auto mapped_drive = "C:/"_L1;

/// Returns where a program of the evidence lies on the mounted source; empty unless it is on C:.
QString mounted_path(const extraction &run, const QString &windows_path)
{
    const QString &root_path = run.context().source_root_path;
    QString path = windows_path;
    path.replace(u'\\', u'/');
    const bool ignores_case = run.context().options.ignore_letter_case;
    if (path.startsWith(mapped_drive))
        path.replace(mapped_drive, root_path);
    else if (ignores_case && path.startsWith(mapped_drive, Qt::CaseInsensitive))
        path.replace(0, mapped_drive.size(), root_path);
    else
        return {};
    return ignores_case ? run.on_volume(path) : path;
}

/// Where the evidence lies, as an examiner's path and as the place that it leads to.
class source_folder
{
public:
    explicit source_folder(const QString &root_path)
        : m_root_path(root_path),
          m_clean_root(with_slash(QDir::cleanPath(root_path.trimmed()))),
          m_canonical_root(with_slash(QFileInfo(root_path.trimmed()).canonicalFilePath()))
    {
    }

    /// The times of a file of the examiner's machine are no evidence: none when ".." in the
    /// program's name, or a link of the volume, leads out of the source.
    struct_GLOBAL_ARTIFACT_file_times times_of(const QString &path) const
    {
        // What the helper looks up: it trims both parts, and a name may end in a blank.
        const QString relative_path = path.mid(m_root_path.size()).trimmed();
        const QString place = m_root_path.trimmed() + relative_path;
        if (!with_slash(QDir::cleanPath(place)).startsWith(m_clean_root))
            return {};
        const auto times = plugin_static_function::get_posix_timestamp(relative_path, m_root_path);
        if ((times.creation_time | times.last_access_time | times.last_modification_time) == 0)
            return times; // there is no file: most programs that were run once are gone
        const QString target = with_slash(QFileInfo(place).canonicalFilePath());
        return target.startsWith(m_canonical_root) ? times : struct_GLOBAL_ARTIFACT_file_times();
    }

private:
    /// With its slash the root itself counts as within the root, and a longer name does not.
    static QString with_slash(const QString &path)
    {
        return path.endsWith(u'/') ? path : path + u'/';
    }

    QString m_root_path;
    QString m_clean_root;
    QString m_canonical_root;
};

bool write_programs(extraction &run)
{
    const QString reg_path = run.extracted().key.path;
    const extraction_context &context = run.context();
    const source_folder source(context.source_root_path);
    return write_rows_of_users<parse_installed_applications>(
        run, run.extracted().key, &registry::data_records,
        [&](const hive_rows &hive, const registry::struct_data &program,
            qsizetype) -> std::optional<QStringList> {
            const QString path = mounted_path(run, program.name);
            const auto times = source.times_of(path);
            return QStringList{
                hive.user_name(),
                program.name,
                plugin_static_function::get_relative_file_path(
                    run.without_source_root(path), hive.user_name(), context.virtual_source_path),
                u"NTUSER.DAT"_s,
                u"Store"_s,
                reg_path,
                QString::number(times.creation_time),
                QString::number(times.last_modification_time),
                QString::number(times.last_access_time)};
        });
}

} // namespace

extern const artifact third_party_applications_artifact = {
    {
        "third_party_applications"_L1,
        "CREATE TABLE IF NOT EXISTS third_party_applications(bookmark integer,"
        "system_account varchar(100),INT INTEGER PRIMARY KEY,windows_path VARCHAR(500),"
        "file_path VARCHAR(500),reg_file varchar(500),node_name varchar(500),"
        "reg_path varchar(1024),creation_timestamp INTEGER,modification_timestamp INTEGER,"
        "last_access_timestamp INTEGER,arken_tag_value varchar(100),notes_icon VARCHAR(1024),"
        "tags_icon VARCHAR(1024),os_scheme_display VARCHAR(100),"
        "source_count_name VARCHAR(500),source_file varchar(500),"
        "artifacts_relation_source_file VARCHAR(1024),notes varchar(500))"_L1,
        "insert into third_party_applications(bookmark,system_account,windows_path,file_path,"
        "reg_file,node_name,reg_path,creation_timestamp,modification_timestamp,"
        "last_access_timestamp,source_file, os_scheme_display , source_count_name) values(0,"
        "?,?,?,?,?,?,?,?,?,?,?,?)"_L1,
        "void windows_installed_applications_winos::extract_third_party_applications()"_L1,
        "[extract_third_party_applications]"_L1,
        "---STARTS---"_L1,
        " query_insert -----FAILED----- third_party_applications"_L1,
        true,
    },
    artifact_input::user_hives,
    values_of(parse_installed_applications::compatibility_store_key),
    {},
    root_removal::by_its_length,
    {},
    write_programs,
};
