#include "deleted_run.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <cstdio>

#include "deleted_search.h"
#include "interrupt_watch.h"
#include "new_file.h"
#include "private_copy.h"
#include "recovered_database.h"
#include "sha256.h"

using namespace Qt::StringLiterals;

namespace {

/// The search of a run's hives, and then the making of their rows.
class deleted_run
{
public:
    deleted_run(artifact_plugin &plugin, const extraction_plan &plan,
                const result_location &location, const source_volume &volume,
                const QHash<QString, QString> &accounts_by_hive,
                const std::function<void()> &tell_search)
        : m_plugin(plugin),
          m_plan(plan),
          m_location(location),
          m_volume(volume),
          m_accounts(accounts_by_hive),
          m_tell_search(tell_search),
          m_keys(recovered_keys(plugin, plan.tabs, plan.options.installations_of_users)),
          m_folder(location.plugin_directory + "/deleted-XXXXXX"_L1)
    {
    }

    deleted_outcome run();

private:
    bool prepare();
    void search_all();
    void write_rows();
    bool write_generation(size_t number);
    QString copy_of(const searched_records &hive, size_t number);
    QString copy_of_nothing();
    bool extract(const extraction_plan &plan);
    void finish();
    QString rows_name(const QString &path) const;

    artifact_plugin &m_plugin;
    const extraction_plan &m_plan;
    const result_location &m_location;
    const source_volume &m_volume;
    const QHash<QString, QString> &m_accounts;
    const std::function<void()> &m_tell_search;
    QList<recovered_key> m_keys;
    QTemporaryDir m_folder;
    result_location m_private; ///< where the plug-in writes
    std::optional<recovered_database> m_database;
    std::vector<searched_records> m_searched;
    deleted_outcome m_outcome;
};

deleted_outcome deleted_run::run()
{
    if (m_keys.isEmpty())
        return m_outcome;
    if (prepare()) {
        search_all();
        write_rows();
        if (m_outcome.failure.isEmpty())
            m_outcome.failure = m_database->failure();
        m_database.reset();
    }
    finish();
    return m_outcome;
}

/// The database is made in a folder of its own, and moved when it is whole.
bool deleted_run::prepare()
{
    m_private = locate_result(m_folder.path(), m_plugin.pub_get_artifact_name());
    if (!m_folder.isValid() || create_result_directory(m_private)) {
        m_outcome.failure = u"no folder can be made in %1"_s.arg(m_location.plugin_directory);
        return false;
    }
    if (m_plan.keep_rows)
        QFile::copy(m_location.deleted_database, m_private.database_file);
    m_database.emplace(m_private.database_file);
    m_outcome.failure = m_database->failure();
    return m_outcome.failure.isEmpty();
}

void deleted_run::search_all()
{
    QStringList paths = m_accounts.keys();
    paths.sort();
    std::atomic<bool> is_interrupted = false;
    const interrupt_watch interrupts([&is_interrupted] { is_interrupted = true; });
    m_tell_search();
    const cancel_test cancelled = [&is_interrupted] { return is_interrupted.load(); };
    for (const QString &path : std::as_const(paths)) {
        searched_records hive =
            search_hive(m_volume, path, m_accounts.value(path), m_keys, cancelled);
        if (hive.records)
            m_database->add_finds(*hive.records,
                                  {path, hive.account, u"Source%1"_s.arg(m_plan.source_number)},
                                  cancelled);
        hive.records.reset(); // with the bytes of the hive
        m_outcome.is_cancelled = cancelled();
        if (m_outcome.is_cancelled)
            return;
        m_outcome.finds += hive.told.finds;
        m_outcome.hives.append(hive.told);
        m_searched.push_back(std::move(hive));
    }
}

/// One generation at least is read, so that the database has all tables.
void deleted_run::write_rows()
{
    if (m_outcome.finds == 0)
        return;
    size_t generations = 1;
    for (const searched_records &hive : m_searched)
        generations = std::max(generations, hive.generations.all.size());
    for (size_t number = 0; number < generations && !m_outcome.is_cancelled; ++number) {
        if (!write_generation(number))
            return;
    }
    m_outcome.rows_without_origin = m_database->rows_removed();
    for (const QString &tab : tabs_of(m_keys, m_plan.tabs))
        m_outcome.rows += m_database->count_in(tab);
}

QString deleted_run::copy_of(const searched_records &hive, size_t number)
{
    const QByteArray bytes = hive.generations.all[number].hive.bytes();
    const QString sha256 = sha256_of_bytes(bytes);
    const QString wanted = m_location.rebuilt_directory +
                           u"/Source%1/%2/%3"_s.arg(QString::number(m_plan.source_number),
                                                    QString::number(number + 1), hive.told.path);
    QString copy = private_copy(bytes, sha256, wanted, {m_volume.source_root()}, m_outcome.failure);
    if (!copy.isEmpty())
        m_outcome.rebuilt.append({hive.told.path, int(number) + 1, copy, sha256});
    return copy;
}

/// A hive without keys, which is read where a hive has no records in a generation.
QString deleted_run::copy_of_nothing()
{
    const QString file = m_folder.filePath(u"nothing"_s);
    if (!QFileInfo::exists(file))
        m_outcome.failure = write_new_file(file, rebuilt_hive().bytes());
    return m_outcome.failure.isEmpty() ? file : QString();
}

/// The path by which rows name the hive of a user; empty for the machine's.
QString deleted_run::rows_name(const QString &path) const
{
    return m_accounts.value(path).isEmpty() ? QString() : u'/' + path;
}

/// Lets the plug-in read the hives of one generation in the place of the evidence's.
bool deleted_run::write_generation(size_t number)
{
    const QString nothing = copy_of_nothing();
    extraction_plan plan = m_plan;
    plan.result_directory = m_private.result_directory;
    plan.debug_log.clear();
    plan.tabs = tabs_of(m_keys, m_plan.tabs);
    plan.keep_rows = true;
    plan.accounts.clear();
    plan.hive_copies.clear();
    for (const QString &path : {m_volume.software_hive(), m_volume.software_backup()})
        plan.hive_copies.insert(m_volume.root() + path, nothing);
    QHash<QString, QHash<QString, placed_record>> by_hive;
    QHash<QString, QString> evidence_files;
    for (const searched_records &hive : m_searched) {
        if (number >= hive.generations.all.size())
            continue;
        const QString copy = copy_of(hive, number);
        if (copy.isEmpty())
            return false;
        plan.hive_copies.insert(m_volume.root() + hive.told.path, copy);
        if (!hive.account.isEmpty())
            plan.accounts.append(m_accounts.value(hive.told.path));
        by_hive.insert(rows_name(hive.told.path), hive.generations.all[number].by_row);
        evidence_files.insert(rows_name(hive.told.path), hive.told.path);
    }
    if (nothing.isEmpty() || !extract(plan))
        return false;
    m_database->tell_origins(m_keys, by_hive, evidence_files);
    return m_database->failure().isEmpty();
}

bool deleted_run::extract(const extraction_plan &plan)
{
    const run_hooks hooks{
        [&] {
            m_database->extend_tables(plan.tabs);
            return m_database->failure();
        },
        [] {},
        [](const QString &) -> std::optional<qint64> { return std::nullopt; },
    };
    const run_outcome outcome = run_extraction(m_plugin, plan, progress_style::none, hooks);
    m_outcome.is_cancelled = outcome.cancelled;
    if (!outcome.trouble.isEmpty())
        m_outcome.failure = outcome.trouble;
    else if (outcome.failures > 0)
        m_outcome.failure = outcome.first_failure;
    return m_outcome.failure.isEmpty();
}

/// Without finds there is no database: one of an earlier run would not be of this one.
void deleted_run::finish()
{
    const QString &database = m_location.deleted_database;
    const bool is_any = m_outcome.finds > 0 || (m_plan.keep_rows && QFileInfo::exists(database));
    if (m_outcome.is_cancelled || !m_outcome.failure.isEmpty())
        return;
    if (!is_any) {
        QFile::remove(database);
        return;
    }
    if (std::rename(QFile::encodeName(m_private.database_file).constData(),
                    QFile::encodeName(database).constData()) == 0)
        m_outcome.database = database;
    else
        m_outcome.failure = u"the database cannot be moved to %1"_s.arg(database);
}

} // namespace

deleted_outcome recover_deleted(artifact_plugin &plugin, const extraction_plan &plan,
                                const result_location &location, const source_volume &volume,
                                const QHash<QString, QString> &accounts_by_hive,
                                const std::function<void()> &tell_search)
{
    return deleted_run(plugin, plan, location, volume, accounts_by_hive, tell_search).run();
}
