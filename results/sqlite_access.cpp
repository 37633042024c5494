#include "sqlite_access.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace results {

namespace {

/// How long a reading waits for a writer, which locks readers out for the moment of a commit.
constexpr int patience_ms = 5000;

} // namespace

sqlite_statement::sqlite_statement(sqlite3 *connection, const QByteArray &text)
{
    sqlite3_stmt *statement = nullptr;
    m_code =
        sqlite3_prepare_v2(connection, text.constData(), int(text.size()), &statement, nullptr);
    if (m_code != SQLITE_OK)
        m_code = sqlite3_extended_errcode(connection);
    m_statement.reset(statement);
}

void sqlite_statement::bind(int number, qint64 value)
{
    sqlite3_bind_int64(m_statement.get(), number, value);
}

void sqlite_statement::bind(int number, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    sqlite3_bind_text(m_statement.get(), number, bytes.constData(), int(bytes.size()),
                      SQLITE_TRANSIENT); // NOLINT(cppcoreguidelines-*,performance-no-int-to-ptr)
}

bool sqlite_statement::step()
{
    if (!m_statement)
        return false;
    m_code = sqlite3_step(m_statement.get());
    return m_code == SQLITE_ROW;
}

void sqlite_statement::reset()
{
    sqlite3_reset(m_statement.get());
}

void sqlite_statement::read(int column, cell &into) const
{
    sqlite3_stmt *const statement = m_statement.get();
    const auto size = [&] { return size_t(sqlite3_column_bytes(statement, column)); };
    switch (sqlite3_column_type(statement, column)) {
    case SQLITE_INTEGER:
        into.set_number(sqlite3_column_int64(statement, column));
        break;
    case SQLITE_FLOAT:
        into.is = cell::kind::real;
        into.real = sqlite3_column_double(statement, column);
        break;
    case SQLITE_TEXT: {
        const auto *text = static_cast<const char *>(sqlite3_column_blob(statement, column));
        into.set_text({text, text == nullptr ? 0 : size()});
        break;
    }
    case SQLITE_BLOB: {
        const auto *bytes = static_cast<const char *>(sqlite3_column_blob(statement, column));
        into.is = cell::kind::blob;
        into.bytes.assign(bytes == nullptr ? "" : bytes, bytes == nullptr ? 0 : size());
        break;
    }
    default:
        into.set_null();
    }
}

QString sqlite_statement::text(int column) const
{
    cell value;
    read(column, value);
    return QString::fromUtf8(value.text().data(), qsizetype(value.text().size()));
}

qint64 sqlite_statement::number(int column) const
{
    return sqlite3_column_int64(m_statement.get(), column);
}

sqlite_connection sqlite_connection::read_only(const QString &file)
{
    return {file, SQLITE_OPEN_READONLY};
}

sqlite_connection sqlite_connection::own_copy(const QString &file)
{
    return {file, SQLITE_OPEN_READWRITE};
}

// A plain file name, and no URI: a name with "?" would be read for options. Nothing is declared
// immutable, because even a medium that is mounted for reading only may change elsewhere.
sqlite_connection::sqlite_connection(const QString &file, int flags)
{
    sqlite3 *connection = nullptr;
    // Without mutexes, which take a tenth of the time: no connection is used by two threads.
    m_code = sqlite3_open_v2(QFile::encodeName(file).constData(), &connection,
                             flags | SQLITE_OPEN_NOMUTEX, nullptr);
    m_connection.reset(connection);
    if (m_code == SQLITE_OK)
        configure();
}

void sqlite_connection::configure()
{
    sqlite3 *const connection = m_connection.get();
    sqlite3_extended_result_codes(connection, 1);
    sqlite3_busy_timeout(connection, patience_ms);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    for (const char *setting : {"PRAGMA cell_size_check = ON", "PRAGMA temp_store = MEMORY",
                                "SELECT count(*) FROM sqlite_master"}) {
        sqlite_statement statement = prepare(setting);
        while (statement.step()) {
        }
        if (statement.code() != SQLITE_DONE)
            m_code = statement.code();
    }
}

QString sqlite_connection::failure() const
{
    return m_code == SQLITE_OK ? QString::fromUtf8(sqlite3_errmsg(m_connection.get()))
                               : QString::fromUtf8(sqlite3_errstr(m_code));
}

qint64 sqlite_connection::data_version() const
{
    sqlite_statement statement = prepare("PRAGMA data_version");
    return statement.step() ? statement.number(0) : -1;
}

QByteArray quoted(const QString &name)
{
    return '"' + name.toUtf8().replace('"', "\"\"") + '"';
}

} // namespace results
