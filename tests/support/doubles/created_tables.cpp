#include "created_tables.h"

#include "result_file.h"
#include "windows_installed_applications_winos.h"

namespace test_support {

using namespace Qt::StringLiterals;

void create_tables(const QString &path)
{
    sqlite_connection connection(path);
    execute(connection.database, u"pragma synchronous = off"_s);
    connection.database.transaction();
    for (const result_tab *tab : windows_installed_applications_winos::result_tabs())
        execute(connection.database, tab->create_statement);
    connection.database.commit();
}

} // namespace test_support
