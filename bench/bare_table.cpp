#include "bare_table.h"

#include <algorithm>
#include <stdexcept>

namespace {

std::string insert_statement(const std::string &table, const std::string &columns)
{
    std::string statement = "INSERT INTO " + table + "(bookmark," + columns + ") VALUES(0";
    const auto count = 1 + std::count(columns.begin(), columns.end(), ',');
    for (auto column = count; column > 0; --column)
        statement += ",?";
    return statement + ")";
}

} // namespace

bare_table::bare_table(const std::string &database, const std::string &table,
                       const std::string &columns)
{
    open(database);
    execute("BEGIN");
    prepare(insert_statement(table, columns));
}

bare_table::~bare_table()
{
    m_insert.reset();
    sqlite3_exec(m_database.get(), "COMMIT", nullptr, nullptr, nullptr);
}

void bare_table::insert(std::initializer_list<std::string_view> values)
{
    int column = 0;
    for (const std::string_view value : values) {
        // A null pointer would be written as NULL.
        const char *const text = value.data() != nullptr ? value.data() : "";
        sqlite3_bind_text(m_insert.get(), ++column, text, static_cast<int>(value.size()),
                          SQLITE_STATIC);
    }
    require(sqlite3_step(m_insert.get()), SQLITE_DONE);
    sqlite3_reset(m_insert.get());
}

void bare_table::open(const std::string &database)
{
    sqlite3 *opened = nullptr;
    const int result = sqlite3_open_v2(database.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
    m_database.reset(opened); // there is something to close even when that failed
    require(result, SQLITE_OK);
}

void bare_table::prepare(const std::string &statement)
{
    sqlite3_stmt *prepared = nullptr;
    require(sqlite3_prepare_v2(m_database.get(), statement.c_str(), -1, &prepared, nullptr),
            SQLITE_OK);
    m_insert.reset(prepared);
}

void bare_table::execute(const char *statement)
{
    require(sqlite3_exec(m_database.get(), statement, nullptr, nullptr, nullptr), SQLITE_OK);
}

void bare_table::require(int result, int wanted) const
{
    if (result != wanted)
        throw std::runtime_error(sqlite3_errmsg(m_database.get()));
}
