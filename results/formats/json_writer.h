#ifndef JSON_WRITER_H
#define JSON_WRITER_H

#include <QStringList>

#include "row_writer.h"

namespace results {

/// Appends a text that must be UTF-8 as a JSON string. What could steer a terminal is an escape.
void append_json_string(std::string &out, std::string_view text);

/// Appends a value: a number, a string or null. What is no text becomes a string with its SQL
/// literal; returns whether it did.
bool append_json_value(std::string &out, const cell &value);

/// JSON Lines: one object a row, with "table", a member for each column, and, if cells of the row
/// hold no text of their own, their names in "sql_literals".
class json_writer : public row_writer
{
public:
    explicit json_writer(text_sink sink) : m_out(std::move(sink)) {}

    bool begin(const row_source &source, const QList<int> &places) override;
    bool write(const row &of) override;
    bool finish() override { return m_out.flush(); }

private:
    struct member
    {
        int place;
        std::string name;   ///< as a JSON string
        std::string before; ///< what stands before the value
    };

    buffered_text m_out;
    std::string m_beginning;
    std::vector<member> m_members;
    std::string m_literals; ///< the names of the row's cells that hold no text of their own
};

} // namespace results

#endif
