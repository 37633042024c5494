#ifndef CREATED_TABLES_H
#define CREATED_TABLES_H

#include <QString>

namespace test_support {

/// Creates all result tables in an SQLite file, which is made when absent. Throws
/// std::runtime_error where that fails.
void create_tables(const QString &path);

} // namespace test_support

#endif
