#ifndef CELL_H
#define CELL_H

#include <QString>

#include <string>
#include <string_view>

namespace results {

/// One value of a row, as SQLite keeps it.
struct cell
{
    enum class kind
    {
        null,
        integer,
        real,
        text, ///< meant as UTF-8, which nobody has checked
        blob
    };

    kind is = kind::null;
    qint64 number = 0; ///< of an integer
    double real = 0;
    std::string bytes; ///< of a text or a blob

    void set_null() { is = kind::null; }
    void set_number(qint64 value)
    {
        is = kind::integer;
        number = value;
    }
    void set_text(std::string_view text)
    {
        is = kind::text;
        bytes.assign(text);
    }

    /// Whether there is nothing to show: NULL, or a text without characters.
    bool is_empty() const { return is == kind::null || (is == kind::text && bytes.empty()); }

    /// The text of a text, and nothing of other values.
    std::string_view text() const { return is == kind::text ? std::string_view(bytes) : ""; }

    /// The integer, and 0 of other values.
    qint64 integer() const { return is == kind::integer ? number : 0; }
};

} // namespace results

#endif
