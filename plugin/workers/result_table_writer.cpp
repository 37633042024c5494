#include "result_table_writer.h"

#include "plugin_static_function.h"

#include <QSqlError>

using namespace Qt::StringLiterals;

namespace {

QString literal(QString value)
{
    return u'\'' + value.replace(u'\'', "''"_L1) + u'\'';
}

/// Whether SQLite makes the same of a literal as of a bound text: a statement ends at a zero
/// character, half of a surrogate pair takes the quotation mark for its other half, and only a
/// bound text loses a byte order mark. Very long statements are refused.
bool reads_back_as_it_is(const QString &value)
{
    constexpr qsizetype longest_literal = 4096;
    return value.size() <= longest_literal && value.isValidUtf16() && !value.contains(u'\0') &&
           !value.startsWith(QChar(QChar::ByteOrderMark)) &&
           !value.startsWith(QChar(QChar::ByteOrderSwapped));
}

} // namespace

result_table_writer::result_table_writer(const result_tab &tab, const QString &database_path)
    : m_tab(tab), m_database_path(database_path)
{
}

result_table_writer::~result_table_writer()
{
    if (!m_query)
        return;
    m_query.reset(); // an open query would keep the connection from closing
    m_database.commit();
    m_database.close();
}

bool result_table_writer::open()
{
    QSqlDatabase::removeDatabase(m_tab.signature);
    m_database = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_tab.signature);
    m_database.setDatabaseName(m_database_path);
    if (!m_database.open()) {
        log(m_tab.log_line("Destination Db opening failed "_L1));
        log(m_database.lastError().text());
        return false;
    }
    m_database.transaction();
    m_query.emplace(m_database);
    expect_columns(m_tab.insert_statement.count('?'_L1));
    return true;
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
    if (!m_is_prepared || !are_literals_right(values))
        prepare_without_literals();
    if (execute(values)) {
        if (m_is_named && m_executions == rows_before_literals)
            write_literals();
        return true;
    }
    QString error = m_query->lastError().text();
    // Qt words the failure of a statement that has inserted rows before differently from that of a
    // fresh one; the log tells what the tab's own statement, prepared for this row alone, meets. It
    // is executed again only where it cannot succeed: a full disk has rolled back the rows before,
    // and a second try would write the very row that is reported as lost.
    const bool is_fresh = !m_is_named && m_executions == 0;
    m_is_named = false;
    if (!is_fresh && !prepare_without_literals()) {
        execute(values);
        error = m_query->lastError().text();
    }
    m_is_prepared = false;
    log_insert_failure(error);
    return false;
}

bool result_table_writer::are_literals_right(const QStringList &values) const
{
    for (qsizetype position = 0; position < values.size(); ++position) {
        const column &candidate = m_columns.at(position);
        if (candidate.is_literal && candidate.value != values.at(position))
            return false;
    }
    return true;
}

void result_table_writer::write_literals()
{
    bool is_any_new = false;
    for (column &candidate : m_columns) {
        const bool is_new =
            !candidate.is_literal && !candidate.has_changed && reads_back_as_it_is(candidate.value);
        candidate.is_literal = candidate.is_literal || is_new;
        is_any_new = is_any_new || is_new;
    }
    if (is_any_new)
        prepare(named_statement());
}

/// The tab's statement with a name, or a literal, for each placeholder. Qt finds a value by its
/// placeholder's name; by position it makes a text of the number each time, which takes longer
/// than SQLite takes to insert the value.
QString result_table_writer::named_statement() const
{
    const QStringList parts = QString(m_tab.insert_statement).split(u'?');
    QString statement = parts.first();
    for (qsizetype position = 0; position < m_columns.size(); ++position) {
        const column &next = m_columns.at(position);
        statement += next.is_literal ? literal(next.value) : next.placeholder;
        statement += parts.at(position + 1);
    }
    return statement;
}

bool result_table_writer::prepare_without_literals()
{
    for (column &each : m_columns)
        each.is_literal = false;
    return prepare(m_is_named ? named_statement() : QString(m_tab.insert_statement));
}

bool result_table_writer::prepare(const QString &statement)
{
    m_is_prepared = true;
    m_executions = 0;
    for (column &each : m_columns)
        each.is_bound = each.has_changed = false;
    return m_query->prepare(statement);
}

// A query keeps what is bound to it: what is the same as in the row before stays.
bool result_table_writer::execute(const QStringList &values)
{
    for (qsizetype position = 0; position < values.size(); ++position) {
        column &target = m_columns[position];
        if (target.is_literal || (target.is_bound && target.value == values.at(position)))
            continue;
        target.has_changed = target.is_bound;
        target.value = values.at(position);
        bind(position);
    }
    const bool executed = m_query->exec();
    m_executions += executed ? 1 : 0;
    return executed;
}

void result_table_writer::bind(qsizetype position)
{
    column &target = m_columns[position];
    const QString value = target.value.isNull() ? u""_s : target.value;
    if (m_is_named)
        m_query->bindValue(target.placeholder, value);
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
