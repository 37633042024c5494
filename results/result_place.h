#ifndef RESULT_PLACE_H
#define RESULT_PLACE_H

#include <QLatin1StringView>
#include <QString>

namespace results {

/// How the name of a database ends that has the rows of deleted records, beside the result's own.
inline constexpr auto end_of_recovered_database = QLatin1StringView("_recovered.sqlite");

/// Where a result lies, or why there is none.
struct result_place
{
    QString database_file;
    QString record_file; ///< the run record beside the database; it may not be there
    QString failure;     ///< empty when the database file is there
};

/// Finds the result at `path`: the folder that a run was given for its results, the folder of a
/// database, or the database itself. The rows of deleted records are found by their database alone.
/// Opens no file.
result_place find_result(const QString &path);

} // namespace results

#endif
