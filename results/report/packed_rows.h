#ifndef PACKED_ROWS_H
#define PACKED_ROWS_H

#include <QString>

#include <string>
#include <unordered_map>
#include <vector>

#include "column.h"

namespace results {

/// The rows of a source as a report holds them: column by column, each distinct value once. Texts
/// are escaped for people (\u202e) and for a script element.
class packed_rows
{
public:
    /// Reads all rows. `subjects` are the places of the columns that name a row, the best first.
    packed_rows(row_source &rows, const QList<int> &subjects);

    qint64 row_count() const { return m_row_count; }
    /// The number of cells that were cut after most_bytes_of_cell.
    qint64 cut_cells() const { return m_cut_cells; }
    const QString &failure() const { return m_failure; }

    /// The rows as JSON without any "<", so that nothing in it ends or begins an element.
    std::string json() const;

    static constexpr size_t most_bytes_of_cell = 16 << 10;

private:
    struct packed_column
    {
        column of;
        std::unordered_map<std::string, quint32> places; ///< of the values, by their JSON
        std::vector<const std::string *> values;
        std::vector<quint32> rows; ///< for each row the place of its value
    };

    void add(const row &of);
    std::string json_of(const cell &value);
    std::string shown_json(std::string_view text);
    static void append_json(std::string &out, const packed_column &packed);

    QString m_name;
    QString m_title;
    QList<int> m_subjects;
    std::vector<packed_column> m_columns;
    qint64 m_row_count = 0;
    qint64 m_cut_cells = 0;
    QString m_failure;
};

/// A text as JSON for a script element, escaped for people.
std::string shown_script_json(const QString &text);

} // namespace results

#endif
