#include "deleted_run.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <cstdio>

#include "deleted_records.h"
#include "hive_precheck.h"
#include "interrupt_watch.h"
#include "log_files.h"
#include "new_file.h"
#include "private_copy.h"
#include "rebuilt_generations.h"
#include "recovered_database.h"
#include "recovered_keys.h"
#include "sha256.h"

using namespace Qt::StringLiterals;

namespace {

/// The search of a run's hives, and then the making of their rows.
class deleted_run
{
public:
    deleted_run(artifact_plugin &plugin, const extraction_plan &plan,
                const result_location &location, const source_volume &volume,
                const QHash<QString, QString> &accounts_by_hive)
        : m_plugin(plugin),
          m_plan(plan),
          m_location(location),
          m_volume(volume),
          m_accounts(accounts_by_hive),
          m_keys(recovered_keys(plugin, plan.tabs, plan.options.installations_of_users)),
          m_folder(location.plugin_directory + "/deleted-XXXXXX"_L1)
    {
    }

    deleted_outcome run();

private:
    struct rebuilt
    {
        QString path;
        bool is_of_users;
        std::vector<rebuilt_generation> generations;
    };

    bool prepare();
    void search_all();
    searched_hive search(const QString &path, const cancel_test &cancelled);
    void write_rows();
    bool write_generation(size_t number);
    QString copy_of(const rebuilt &hive, size_t number);
    QString copy_of_nothing();
    bool extract(const extraction_plan &plan);
    void finish();
    QStringList tabs() const;
    QString rows_name(const QString &path) const;

    artifact_plugin &m_plugin;
    const extraction_plan &m_plan;
    const result_location &m_location;
    const source_volume &m_volume;
    const QHash<QString, QString> &m_accounts;
    QList<recovered_key> m_keys;
    QTemporaryDir m_folder;
    result_location m_private; ///< where the plug-in writes
    std::optional<recovered_database> m_database;
    std::vector<rebuilt> m_rebuilt;
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

QStringList deleted_run::tabs() const
{
    QStringList tabs;
    for (const recovered_key &key : m_keys)
        tabs += key.tabs;
    QStringList in_order;
    for (const QString &tab : m_plan.tabs) {
        if (tabs.contains(tab))
            in_order.append(tab);
    }
    return in_order;
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
    const cancel_test cancelled = [&is_interrupted] { return is_interrupted.load(); };
    for (const QString &path : std::as_const(paths)) {
        searched_hive hive = search(path, cancelled);
        m_outcome.is_cancelled = cancelled();
        if (m_outcome.is_cancelled)
            return;
        m_outcome.finds += hive.finds;
        m_outcome.hives.append(hive);
    }
}

searched_hive deleted_run::search(const QString &path, const cancel_test &cancelled)
{
    searched_hive hive;
    hive.path = path;
    const QString account = m_accounts.value(path);
    const std::optional<QByteArray> bytes = bytes_of_hive(m_volume.file_of(path));
    if (!bytes) {
        hive.failure = u"it cannot be read"_s;
        return hive;
    }
    const bool is_of_users = !account.isEmpty();
    const deleted_records records(*bytes, wanted_of(m_keys, is_of_users), cancelled);
    hive.free_bytes = records.free_bytes();
    hive.bytes_behind_bins = records.bytes_behind_bins();
    hive.keys_in_free_space = records.keys_in_free_space();
    hive.values_in_free_space = records.values_in_free_space();
    for (const deleted_key &key : records.keys())
        hive.finds +=
            qint64(key.values.size()) + (key.is_alive || key.path == path_state::unknown ? 0 : 1);
    m_database->add_finds(records, {path, account, u"Source%1"_s.arg(m_plan.source_number)},
                          cancelled);
    rebuilt_generations generations = rebuild(records, m_keys, is_of_users, cancelled);
    hive.without_row = generations.without_place;
    m_rebuilt.push_back({path, is_of_users, std::move(generations.all)});
    return hive;
}

/// One generation at least is read, so that the database has all tables.
void deleted_run::write_rows()
{
    if (m_outcome.finds == 0)
        return;
    size_t generations = 1;
    for (const rebuilt &hive : m_rebuilt)
        generations = std::max(generations, hive.generations.size());
    for (size_t number = 0; number < generations && !m_outcome.is_cancelled; ++number) {
        if (!write_generation(number))
            return;
    }
    for (const QString &tab : tabs())
        m_outcome.rows += m_database->count_in(tab);
}

QString deleted_run::copy_of(const rebuilt &hive, size_t number)
{
    const QByteArray bytes = hive.generations[number].hive.bytes();
    const QString sha256 = sha256_of_bytes(bytes);
    const QString wanted = m_location.rebuilt_directory +
                           u"/Source%1/%2/%3"_s.arg(QString::number(m_plan.source_number),
                                                    QString::number(number + 1), hive.path);
    QString copy = private_copy(bytes, sha256, wanted, {m_volume.source_root()}, m_outcome.failure);
    if (!copy.isEmpty())
        m_outcome.rebuilt.append({hive.path, int(number) + 1, copy, sha256});
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

/// The name by which rows know the hive of a user; the machine's is the one without an account.
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
    plan.tabs = tabs();
    plan.keep_rows = true;
    plan.accounts.clear();
    plan.hive_copies.clear();
    for (const QString &path : {m_volume.software_hive(), m_volume.software_backup()})
        plan.hive_copies.insert(m_volume.root() + path, nothing);
    QHash<QString, QHash<QString, placed_record>> by_hive;
    QHash<QString, QString> evidence_files;
    for (const rebuilt &hive : m_rebuilt) {
        if (number >= hive.generations.size())
            continue;
        const QString copy = copy_of(hive, number);
        if (copy.isEmpty())
            return false;
        plan.hive_copies.insert(m_volume.root() + hive.path, copy);
        if (hive.is_of_users)
            plan.accounts.append(m_accounts.value(hive.path));
        by_hive.insert(rows_name(hive.path), hive.generations[number].by_row);
        evidence_files.insert(rows_name(hive.path), hive.path);
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
                                const QHash<QString, QString> &accounts_by_hive)
{
    return deleted_run(plugin, plan, location, volume, accounts_by_hive).run();
}

QString line_about(const deleted_outcome &outcome)
{
    if (outcome.is_cancelled)
        return u"deleted records: the search was cancelled; no database of them was written"_s;
    if (!outcome.failure.isEmpty())
        return u"deleted records: no database of them was written"_s;
    const QString hives = u"%1 hives searched"_s.arg(outcome.hives.size());
    if (outcome.finds == 0)
        return u"deleted records: none found, %1; no database of them was written"_s.arg(hives);
    return u"deleted records: %1 found, %2; rows made of them: %3; database: %4"_s.arg(
        QString::number(outcome.finds), hives, QString::number(outcome.rows), outcome.database);
}

QStringList warnings_about(const deleted_outcome &outcome)
{
    QStringList warnings;
    for (const searched_hive &hive : outcome.hives) {
        if (!hive.failure.isEmpty())
            warnings.append(
                u"%1: not searched for deleted records: %2"_s.arg(hive.path, hive.failure));
        if (hive.without_row > 0)
            warnings.append(u"%1: %2 deleted records would give the same rows as %3 others each, "
                            "and have none"_s.arg(hive.path, QString::number(hive.without_row),
                                                  QString::number(most_generations)));
    }
    return warnings;
}

std::optional<refusal> check_deleted_database(const result_location &location)
{
    const QString &file = location.deleted_database;
    const QFileInfo info(file);
    if (!info.exists() && !info.isSymLink())
        return std::nullopt;
    if (info.isFile() && !info.isSymLink() && recovered_database::is_one(file))
        return std::nullopt;
    return refusal{exit_result,
                   u"the file %1 is no database of deleted records and stays as it is"_s.arg(file)};
}
