#include "result_table_writer.h"

#include "named_connection.h"
#include "plugin_static_function.h"

#include <QSqlError>
#include <QStringConverter>
#include <QVariant>

using namespace Qt::StringLiterals;

namespace {

// Returns the UTF-8 bytes of the text, or the text itself where SQLite would store other bytes:
// SQLite drops a byte order mark at the beginning and converts halves of surrogate pairs in its own
// way. An empty text stays a text, because empty bytes could be stored as NULL.
QVariant utf8_of(const QString &value)
{
    if (value.isEmpty() || value.startsWith(QChar(QChar::ByteOrderMark)) ||
        value.startsWith(QChar(QChar::ByteOrderSwapped)))
        return value;
    QStringEncoder encode(QStringEncoder::Utf8, QStringEncoder::Flag::Stateless);
    const QByteArray bytes = encode(value);
    return encode.hasError() ? QVariant(value) : QVariant(bytes);
}

} // namespace

result_table_writer::result_table_writer(const result_tab &tab, const QString &database_path)
    : m_tab(tab), m_insert_statement(tab.insert_statement), m_database_path(database_path)
{
}

result_table_writer::~result_table_writer()
{
    close();
}

void result_table_writer::close()
{
    if (!m_query)
        return;
    m_query.reset(); // an open query would keep the connection from closing
    m_database.commit();
    m_database.close();
}

bool result_table_writer::open()
{
    m_database = open_named_connection(m_tab.signature, m_database_path);
    if (!m_database.isOpen()) {
        log(m_tab.log_line("Destination Db opening failed "_L1));
        log(m_database.lastError().text());
        return false;
    }
    m_database.transaction();
    m_query.emplace(m_database);
    use_statement(m_tab.insert_statement);
    return true;
}

void result_table_writer::use_statement(QLatin1StringView insert_statement)
{
    m_insert_statement = insert_statement;
    expect_columns(insert_statement.count('?'_L1));
}

bool result_table_writer::stores_utf8()
{
    QSqlQuery query(m_database);
    if (query.exec(u"PRAGMA encoding"_s) && query.next())
        return query.value(0).toString() == "UTF-8"_L1;
    m_lock_wait.note(query.lastError(), m_database);
    return false;
}

void result_table_writer::expect_columns(qsizetype count)
{
    m_columns.clear();
    for (qsizetype position = 0; position < count; ++position)
        m_columns.append({u":v"_s + QString::number(position), {}});
    m_is_prepared = false;
}

bool result_table_writer::insert(const QStringList &values)
{
    if (values.size() != m_columns.size()) {
        m_is_named = false;
        expect_columns(values.size());
    }
    if (!m_is_prepared)
        prepare();
    if (execute(values)) {
        m_lock_wait.restore(m_database);
        return true;
    }
    QString error = m_query->lastError().text();
    // Qt words an error differently once a statement has succeeded; the log needs the text that a
    // fresh statement gives. The row is executed again only if preparing fails too. Otherwise a
    // second try could succeed, after a full disk for example, and write the very row that is
    // reported as lost.
    const bool is_of_its_own = !m_is_named && m_is_fresh;
    m_is_named = false;
    if (!is_of_its_own && !prepare()) {
        execute(values);
        error = m_query->lastError().text();
    }
    m_is_prepared = false;
    log_insert_failure(error);
    return false;
}

/// Returns the tab's statement with a name for each placeholder. Qt finds a value faster by a name
/// than by its position: it turns a position into a text each time, which takes longer than
/// SQLite's insertion. Qt binds all values again for each row, and SQLite converts each text from
/// UTF-16 to UTF-8. Bytes that are UTF-8 already only need a cast to text.
QString result_table_writer::named_statement() const
{
    const QStringList parts = QString(m_insert_statement).split(u'?');
    QString statement = parts.first();
    for (qsizetype position = 0; position < m_columns.size(); ++position) {
        const QString &placeholder = m_columns.at(position).placeholder;
        statement += m_takes_utf8 ? "CAST("_L1 + placeholder + " AS TEXT)"_L1 : placeholder;
        statement += parts.at(position + 1);
    }
    return statement;
}

bool result_table_writer::prepare()
{
    m_is_prepared = true;
    m_is_fresh = true;
    for (column &each : m_columns)
        each.is_bound = false;
    // Reading the encoding waits for a locked database, so it is not read before there is a row.
    m_takes_utf8 = m_is_named && stores_utf8();
    return noted(m_query->prepare(m_is_named ? named_statement() : m_insert_statement));
}

// A query keeps its bound values, so only values that differ from the last row are bound again.
bool result_table_writer::execute(const QStringList &values)
{
    for (qsizetype position = 0; position < values.size(); ++position) {
        column &target = m_columns[position];
        if (target.is_bound && target.value == values.at(position))
            continue;
        target.value = values.at(position);
        bind(position);
    }
    const bool executed = noted(m_query->exec());
    m_is_fresh = m_is_fresh && !executed;
    return executed;
}

bool result_table_writer::noted(bool succeeded)
{
    if (!succeeded)
        m_lock_wait.note(m_query->lastError(), m_database);
    return succeeded;
}

void result_table_writer::bind(qsizetype position)
{
    column &target = m_columns[position];
    const QString value = target.value.isNull() ? u""_s : target.value;
    if (m_is_named)
        m_query->bindValue(target.placeholder, m_takes_utf8 ? utf8_of(value) : value);
    else
        m_query->bindValue(static_cast<int>(position), value);
    target.is_bound = true;
}

void result_table_writer::log(const QString &message) const
{
    plugin_static_function::app_debug(message, m_tab.signature);
}

void result_table_writer::log_insert_failure(const QString &error) const
{
    const QString failure = m_tab.log_line(m_tab.insert_failure);
    log(m_tab.failure_names_database ? failure + m_database_path : failure);
    log(error);
    log(m_query->executedQuery());
}
