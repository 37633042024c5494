#ifndef CSV_WRITER_H
#define CSV_WRITER_H

#include <QStringList>

#include "row_writer.h"

namespace results {

/// How CSV differs from the plain form.
struct csv_options
{
    bool byte_order_mark = false;  ///< in front, for spreadsheets that guess the encoding
    bool spreadsheet_safe = false; ///< a "'" before texts that a spreadsheet takes for a formula
};

/// CSV by RFC 4180 in UTF-8, with one header for all sources: "table", the columns and
/// "sql_literals", which names the cells of the row that hold no text of their own. NULL is an
/// empty field, an empty text "".
class csv_writer : public row_writer
{
public:
    csv_writer(text_sink sink, const QStringList &columns, const csv_options &options = {});

    bool begin(const row_source &source, const QList<int> &places) override;
    bool write(const row &of) override;
    bool finish() override;

private:
    void write_header();
    void append_field(std::string_view text);
    void append_cell(const cell &value, const std::string &name);

    buffered_text m_out;
    QStringList m_columns;
    std::vector<std::string> m_names;
    csv_options m_options;
    bool m_has_header = false;
    std::string m_table;
    std::vector<int> m_places; ///< of each column in the source; -1 where it has none
    std::string m_scratch;
    std::string m_literals;
};

} // namespace results

#endif
