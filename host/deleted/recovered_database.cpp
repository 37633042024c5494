#include "recovered_database.h"

#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

#include "deleted_texts.h"
#include "row_counter.h"
#include "table_descriptions.h"

using namespace Qt::StringLiterals;

namespace {

const auto connection_name = u"artifact_host deleted records"_s;

const auto create_finds =
    u"CREATE TABLE IF NOT EXISTS deleted_records(INT INTEGER PRIMARY KEY,"
    "system_account VARCHAR(100),kind VARCHAR(100),key_path VARCHAR(1024),"
    "value_name VARCHAR(1024),value_type INTEGER,data_size INTEGER,value_data VARCHAR(4096),"
    "key_written_timestamp INTEGER,state VARCHAR(500),path_state VARCHAR(100),offset INTEGER,"
    "evidence_file VARCHAR(500),source_file VARCHAR(500),source_count_name VARCHAR(500))"_s;

const auto insert_find =
    u"INSERT INTO deleted_records(system_account,kind,key_path,value_name,value_type,data_size,"
    "value_data,key_written_timestamp,state,path_state,offset,evidence_file,source_file,"
    "source_count_name) VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?)"_s;

struct added_column
{
    QLatin1StringView name;
    QLatin1StringView type;
};

constexpr added_column added_columns[] = {
    {"offset"_L1, "INTEGER"_L1},
    {"state"_L1, "VARCHAR(500)"_L1},
    {"path_state"_L1, "VARCHAR(100)"_L1},
    {"evidence_file"_L1, "VARCHAR(500)"_L1},
};

QString kind_of(const deleted_key &key, const deleted_value *value)
{
    if (value == nullptr)
        return u"key"_s;
    if (key.path == path_state::unknown)
        return u"value of an unknown key"_s;
    return key.is_alive ? u"value of a living key"_s : u"value"_s;
}

} // namespace

recovered_database::recovered_database(const QString &file)
    : m_database(QSqlDatabase::addDatabase(u"QSQLITE"_s, connection_name))
{
    m_database.setDatabaseName(file);
    if (!m_database.open())
        m_failure = m_database.lastError().databaseText();
    run(create_finds);
}

recovered_database::~recovered_database()
{
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(connection_name);
}

bool recovered_database::run(QSqlQuery &query)
{
    if (!m_failure.isEmpty())
        return false;
    if (!query.exec())
        m_failure = query.lastError().databaseText();
    return m_failure.isEmpty();
}

void recovered_database::run(const QString &statement)
{
    QSqlQuery query(m_database);
    query.prepare(statement);
    run(query);
}

void recovered_database::add_finds(const deleted_records &records, const find_origin &origin,
                                   const cancel_test &cancelled)
{
    run(u"BEGIN"_s);
    QSqlQuery insert(m_database);
    insert.prepare(insert_find);
    for (const deleted_key &key : records.keys()) {
        if (is_cancelled(cancelled))
            break;
        if (!key.is_alive && key.path != path_state::unknown)
            add_find(insert, records, key, nullptr, origin);
        for (const deleted_value &value : key.values) {
            if (is_cancelled(cancelled))
                break;
            add_find(insert, records, key, &value, origin);
        }
    }
    insert.finish();
    run(u"COMMIT"_s);
}

void recovered_database::add_find(QSqlQuery &insert, const deleted_records &records,
                                  const deleted_key &key, const deleted_value *value,
                                  const find_origin &origin)
{
    const bool is_value = value != nullptr;
    const bool is_known = key.path != path_state::unknown;
    const QVariantList values{origin.account,
                              kind_of(key, value),
                              records.path_of(key).join(u'\\'),
                              is_value ? records.name_of(*value) : QVariant(),
                              is_value ? value->type : QVariant(),
                              is_value ? value->data_size : QVariant(),
                              is_value ? text_of_data(value->type, records.data_of(*value))
                                       : QVariant(),
                              is_known ? unix_seconds_of(key.last_write) : 0,
                              is_value ? state_of(*value, key) : state_of(key),
                              text_of(key.path),
                              is_value ? value->offset : key.offset,
                              origin.evidence_file,
                              u'/' + origin.evidence_file,
                              origin.source_count_name};
    for (const QVariant &each : values)
        insert.addBindValue(each);
    run(insert);
}

void recovered_database::extend_tables(const QStringList &tables)
{
    for (const QString &table : tables) {
        const QSqlRecord columns = m_database.record(table);
        for (const added_column &column : added_columns) {
            if (!columns.contains(column.name))
                run(u"ALTER TABLE \"%1\" ADD COLUMN %2 %3"_s.arg(table, column.name, column.type));
        }
    }
}

void recovered_database::tell_origins(const QList<recovered_key> &keys,
                                      const QHash<QString, QHash<QString, placed_record>> &by_hive,
                                      const QHash<QString, QString> &evidence_files)
{
    run(u"BEGIN"_s);
    QStringList done;
    for (const recovered_key &key : keys) {
        for (const QString &tab : key.tabs) {
            if (!done.contains(tab))
                tell_origins_in(tab, key.rule, by_hive, evidence_files);
            done.append(tab);
        }
    }
    run(u"COMMIT"_s);
}

void recovered_database::tell_origins_in(
    const QString &tab, const row_rule &rule,
    const QHash<QString, QHash<QString, placed_record>> &by_hive,
    const QHash<QString, QString> &evidence_files)
{
    const auto column = [](const QString &name) { return name.isEmpty() ? u"''"_s : name; };
    QSqlQuery rows(m_database);
    rows.setForwardOnly(true);
    rows.prepare(
        u"SELECT INT, coalesce(system_account, ''), source_file, %1, %2 FROM \"%3\" "
        "WHERE state IS NULL"_s.arg(column(rule.group_column), column(rule.name_column), tab));
    if (!run(rows))
        return;
    QSqlQuery tell(m_database);
    tell.prepare(u"UPDATE \"%1\" SET offset = ?, state = ?, path_state = ?, evidence_file = ? "
                 "WHERE INT = ?"_s.arg(tab));
    QVariantList without_origin;
    while (rows.next()) {
        const bool is_of_machine = rows.value(1).toString().isEmpty();
        const QString hive = is_of_machine ? QString() : rows.value(2).toString();
        const auto records = by_hive.value(hive);
        const auto origin =
            records.constFind(row_id(tab, rows.value(3).toString(), rows.value(4).toString()));
        if (origin == records.cend()) {
            without_origin.append(rows.value(0));
            continue;
        }
        for (const QVariant &each : QVariantList{origin->offset, origin->state, origin->path_state,
                                                 evidence_files.value(hive), rows.value(0)})
            tell.addBindValue(each);
        run(tell);
    }
    rows.finish();
    tell.prepare(u"DELETE FROM \"%1\" WHERE INT = ?"_s.arg(tab));
    for (const QVariant &row : without_origin) {
        tell.addBindValue(row);
        run(tell);
    }
    m_rows_removed += without_origin.size();
}

qint64 recovered_database::count_in(const QString &table)
{
    QSqlQuery query(m_database);
    query.prepare(u"SELECT COUNT(*) FROM \"%1\""_s.arg(table));
    return run(query) && query.next() ? query.value(0).toLongLong() : 0;
}

std::optional<refusal> check_deleted_database(const result_location &location)
{
    const QString &file = location.deleted_database;
    const QFileInfo info(file);
    if (!info.exists() && !info.isSymLink())
        return std::nullopt;
    if (info.isFile() && !info.isSymLink() && tables_in(file).contains(results::table_of_finds))
        return std::nullopt;
    return refusal{exit_result,
                   u"the file %1 is no database of deleted records and stays as it is"_s.arg(file)};
}
