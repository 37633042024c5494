#ifndef BARE_TABLE_H
#define BARE_TABLE_H

#include <initializer_list>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <string_view>

/// Inserts rows into one table of an existing database, in one transaction on its own connection.
/// Throws std::runtime_error for whatever SQLite refuses.
class bare_table
{
public:
    /// `columns` are those that get a value, with commas between; `bookmark` gets a 0 before them.
    bare_table(const std::string &database, const std::string &table, const std::string &columns);
    bare_table(const bare_table &) = delete;
    bare_table &operator=(const bare_table &) = delete;

    /// Commits.
    ~bare_table();

    /// Inserts a row, all values as text.
    void insert(std::initializer_list<std::string_view> values);

private:
    void open(const std::string &database);
    void prepare(const std::string &statement);
    void execute(const char *statement);
    void require(int result, int wanted) const;

    struct closer
    {
        void operator()(sqlite3 *database) const { sqlite3_close(database); }
        void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
    };

    std::unique_ptr<sqlite3, closer> m_database;
    std::unique_ptr<sqlite3_stmt, closer> m_insert;
};

#endif
