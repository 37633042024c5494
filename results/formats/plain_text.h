#ifndef PLAIN_TEXT_H
#define PLAIN_TEXT_H

#include <string>
#include <string_view>

#include "cell.h"

namespace results {

/// The value as UTF-8: texts and numbers as they are, NULL as the empty text. What is no text is
/// written as the SQL literal that makes it: x'00ff' for bytes, CAST(x'41ff' AS TEXT) for a text
/// that is no UTF-8, 9e999 for a number without end. `scratch` may hold the text; it lasts as long
/// as that and the cell.
std::string_view plain_text(const cell &value, std::string &scratch);

/// The same, and whether it is an SQL literal, and no text or number of its own.
struct plain_form
{
    std::string_view text;
    bool is_sql_literal;
};
plain_form plain_form_of(const cell &value, std::string &scratch);

/// The value as a QString, as plain_text() gives it.
QString shown_text(const cell &value);

} // namespace results

#endif
