#include "created_tables.h"

#include "artifact_list.h"
#include "result_file.h"

namespace test_support {

using namespace Qt::StringLiterals;

void create_tables(const QString &path)
{
    sqlite_connection connection(path);
    execute(connection.database, u"pragma synchronous = off"_s);
    connection.database.transaction();
    for (const artifact *extracted : artifact_list())
        execute(connection.database, extracted->table.create_statement);
    connection.database.commit();
}

} // namespace test_support
