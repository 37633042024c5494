#include "opened_result.h"

#include <QFileInfo>

#include <algorithm>

#include "table_descriptions.h"

using namespace Qt::StringLiterals;

namespace results {

namespace {

/// The columns that tables of every version have, by which a table of a later one is known.
const QStringList columns_of_every_table{u"INT"_s, u"source_file"_s, u"source_count_name"_s};

bool has_columns_of_every_table(const QStringList &columns)
{
    return std::all_of(columns_of_every_table.begin(), columns_of_every_table.end(),
                       [&](const QString &name) { return columns.contains(name); });
}

/// Why SQLite should not open what lies beside the database: a FIFO would block it for ever.
QString obstacle_beside(const QString &database_file)
{
    for (const auto suffix : {"-journal"_L1, "-wal"_L1, "-shm"_L1}) {
        const QFileInfo info(database_file + suffix);
        if (info.exists() && !info.isFile())
            return u"the result database cannot be read: %1 is no plain file"_s.arg(
                info.filePath());
    }
    return {};
}

} // namespace

opened_result::opened_result(const QString &database_file) : m_file(database_file)
{
    if (!QFileInfo(m_file).isFile()) {
        m_failure = u"%1 is no file"_s.arg(m_file);
        return;
    }
    m_failure = obstacle_beside(m_file);
    if (!m_failure.isEmpty())
        return;
    connect();
    if (m_connection->code() != SQLITE_OK) {
        m_failure =
            u"the result database %1 cannot be read: %2"_s.arg(m_file, m_connection->failure());
        return;
    }
    m_data_version = m_connection->data_version();
    list_tables();
    if (m_tables.isEmpty())
        m_failure =
            u"the database %1 is no result of this program: it has none of its tables"_s.arg(
                m_file);
}

void opened_result::connect()
{
    if (has_write_ahead_log(m_file))
        return connect_to_copy(u"it keeps a write-ahead log"_s);
    m_connection.emplace(sqlite_connection::read_only(m_file));
    if (needs_copy(m_connection->code(), m_file))
        connect_to_copy(u"its last transaction was never finished"_s);
}

void opened_result::connect_to_copy(const QString &reason)
{
    m_connection.reset();
    m_copy = std::make_unique<readable_copy>(m_file);
    m_connection.emplace(sqlite_connection::own_copy(m_copy->file()));
    m_remarks.append(u"the database %1 is read in a copy, because %2"_s.arg(m_file, reason));
}

void opened_result::list_tables()
{
    sqlite_statement statement =
        m_connection->prepare("SELECT name, sql FROM sqlite_master WHERE type = 'table'");
    while (statement.step())
        accept_table(statement.text(0), statement.text(1));
    const QStringList described = described_tables();
    const auto rank = [&](const QString &table) {
        const qsizetype place = described.indexOf(table);
        return place < 0 ? described.size() : place;
    };
    std::stable_sort(m_tables.begin(), m_tables.end(),
                     [&](const QString &a, const QString &b) { return rank(a) < rank(b); });
    if (m_tables.contains(table_of_finds))
        m_remarks.append(u"these rows are recovered from deleted records"_s);
    for (const QString &table : described) {
        if (!m_tables.isEmpty() && !m_tables.contains(table))
            m_remarks.append(u"the database has no table %1"_s.arg(table));
    }
}

void opened_result::accept_table(const QString &table, const QString &statement)
{
    const bool is_virtual = statement.startsWith("CREATE VIRTUAL"_L1, Qt::CaseInsensitive);
    if (is_virtual || !has_columns_of_every_table(columns_of(table)))
        return;
    m_tables.append(table);
    if (title_of(table).isEmpty())
        m_remarks.append(u"table %1 is unknown to this program"_s.arg(table));
    else
        tell_unknown_columns(table);
}

void opened_result::tell_unknown_columns(const QString &table)
{
    QStringList unknown;
    for (const QString &name : columns_of(table)) {
        if (described_column(table, name).meaning.isEmpty())
            unknown.append(name);
    }
    if (!unknown.isEmpty())
        m_remarks.append(u"table %1 has columns that are unknown to this program: %2"_s.arg(
            table, unknown.join(", "_L1)));
}

/// Without generated columns, which would be code of a foreign schema.
QStringList opened_result::columns_of(const QString &table) const
{
    sqlite_statement statement =
        m_connection->prepare("SELECT name FROM pragma_table_xinfo(?) WHERE hidden = 0");
    statement.bind(1, table);
    QStringList names;
    while (statement.step())
        names.append(statement.text(0));
    return names;
}

table_layout opened_result::layout_of(const QString &table, bool with_derived) const
{
    return {table, columns_of(table), with_derived};
}

QStringList opened_result::values_of(const QStringList &tables, const QString &column) const
{
    QStringList values;
    for (const QString &table : tables) {
        if (!columns_of(table).contains(column))
            continue;
        sqlite_statement statement =
            m_connection->prepare("SELECT DISTINCT " + quoted(column) + " FROM " + quoted(table));
        while (statement.step())
            values.append(statement.text(0));
    }
    values.removeAll(QString());
    values.removeDuplicates();
    values.sort();
    return values;
}

std::optional<qint64> opened_result::row_count(const QString &table) const
{
    sqlite_statement statement = m_connection->prepare("SELECT count(*) FROM " + quoted(table));
    return statement.step() ? std::optional(statement.number(0)) : std::nullopt;
}

bool opened_result::has_changed() const
{
    return m_connection->data_version() != m_data_version;
}

QString opened_result::text_of_change()
{
    return u"the database was written to while it was read: rows of before and after may stand side "
           "by side"_s;
}

} // namespace results
