#ifndef COLUMN_H
#define COLUMN_H

#include <QList>
#include <QString>

#include <vector>

#include "cell.h"

namespace results {

/// What the values of a column are, which decides how they are shown and what is derived of them.
enum class column_kind
{
    text,
    path,
    account,
    program,      ///< a name of UserAssist or of the Compatibility Assistant's Store
    package,      ///< the name of a package folder
    install_date, ///< a day, "06/11/2023" where the installer wrote one
    unix_time,    ///< Unix seconds; 0 for none
    utc_time,     ///< ISO 8601 text
    run_count,
    number,
    row_id, ///< of the row in its table
    suite   ///< for a forensics suite to fill; empty after a run of this program
};

/// What a time tells in the terms of file times, for formats that know nothing else.
enum class file_time : char
{
    none,
    modified,
    accessed,
    created
};

/// One column, and what there is to know about it.
struct column
{
    QString name;
    QString meaning; ///< half a sentence; empty for columns of an unknown version
    column_kind kind = column_kind::text;
    bool is_derived = false; ///< made by this program, and in no database
    bool is_shown =
        false; ///< in the tables that a person looks at; as described: or what is derived
    bool is_subject = false; ///< names what the row is about
    file_time time = file_time::none;
};

/// One row: a cell for each column.
struct row
{
    qint64 id = 0; ///< of the row in its table, by which it is cited; 0 for rows that are made
    std::vector<cell> cells;
};

/// The place of the column of that name, by its exact spelling; -1 if there is none.
int place_of(const QList<column> &columns, const QString &name);

/// The place of the first column of that kind; -1 if there is none.
int place_of(const QList<column> &columns, column_kind kind);

/// The cell at the place; an empty one for the place -1.
const cell &cell_at(const row &of, int place);

/// A source of rows, one after the other, all of the same columns.
class row_source
{
public:
    row_source() = default;
    virtual ~row_source() = default;
    Q_DISABLE_COPY_MOVE(row_source)

    /// The table, or what the rows are of.
    virtual QString name() const = 0;
    /// Half a sentence that tells what the rows are.
    virtual QString title() const = 0;
    virtual const QList<column> &columns() const = 0;
    /// The next row, which stays as it is until the next call; null at the end and after a failure.
    virtual const row *next() = 0;
    /// Why the rows ended early; empty if they did not.
    virtual QString failure() const { return {}; }
};

} // namespace results

#endif
