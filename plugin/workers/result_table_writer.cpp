#include "result_table_writer.h"

#include "plugin_static_function.h"

#include <QSqlError>

using namespace Qt::StringLiterals;

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
    name_placeholders();
    return true;
}

/// Qt finds a value by its placeholder's name; by position it makes a text of the number each time,
/// which takes longer than SQLite takes to insert the value.
void result_table_writer::name_placeholders()
{
    const QString statement = m_tab.insert_statement;
    for (const QChar character : statement) {
        if (character != u'?') {
            m_named_statement += character;
            continue;
        }
        m_placeholders.append(u":v"_s + QString::number(m_placeholders.size()));
        m_named_statement += m_placeholders.last();
    }
}

bool result_table_writer::insert(const QStringList &values)
{
    if (values.size() != m_placeholders.size())
        m_placeholders.clear();
    if (!m_is_prepared || values.size() != m_bound_values.size())
        prepare(m_placeholders.isEmpty() ? QString(m_tab.insert_statement) : m_named_statement);
    if (execute(values))
        return true;
    QString error = m_query->lastError().text();
    // Qt words the failure of a statement that has inserted rows before differently from that of a
    // fresh one; the log tells what the tab's own statement, prepared for this row alone, meets. It
    // is executed again only where it cannot succeed: a full disk has rolled back the rows before,
    // and a second try would write the very row that is reported as lost.
    const bool is_fresh = m_placeholders.isEmpty() && !m_has_executed;
    m_placeholders.clear();
    if (!is_fresh && !prepare(m_tab.insert_statement)) {
        execute(values);
        error = m_query->lastError().text();
    }
    m_is_prepared = false;
    log_insert_failure(error);
    return false;
}

bool result_table_writer::prepare(const QString &statement)
{
    m_is_prepared = true;
    m_has_executed = false;
    m_bound_values.clear();
    return m_query->prepare(statement);
}

// A query keeps what is bound to it: what is the same as in the row before stays.
bool result_table_writer::execute(const QStringList &values)
{
    for (qsizetype column = 0; column < values.size(); ++column) {
        const QString &value = values.at(column);
        if (column >= m_bound_values.size() || value != m_bound_values.at(column))
            bind(column, value.isNull() ? u""_s : value);
    }
    m_bound_values = values;
    const bool executed = m_query->exec();
    m_has_executed = m_has_executed || executed;
    return executed;
}

void result_table_writer::bind(qsizetype column, const QString &value)
{
    if (m_placeholders.isEmpty())
        m_query->bindValue(static_cast<int>(column), value);
    else
        m_query->bindValue(m_placeholders.at(column), value);
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
