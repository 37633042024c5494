#ifndef CHARACTERS_H
#define CHARACTERS_H

#include <string>
#include <string_view>

namespace results {

/// What next_character() returns for bytes that are no UTF-8.
inline constexpr char32_t no_character = 0xffff'ffff;

/// Reads the character at `at`, which must be before `end`, and moves behind it. Bytes that are no
/// UTF-8 (surrogates, overlong forms and cut characters included) give `no_character`, one at a
/// time.
char32_t next_character(const char *&at, const char *end);

/// Appends the character as UTF-8.
void append_character(std::string &text, char32_t character);

/// Whether all of the text is UTF-8.
bool is_utf_8(std::string_view text);

/// Whether a character may steer a terminal, reorder a line or end one: a control, format,
/// line-breaking character, or a surrogate.
bool must_be_escaped(char32_t character);

/// `text` with such characters as escapes (\x1b, \u202e, \U000e0041), so that it can neither steer
/// a terminal nor fake a line. Bytes that are no UTF-8 become \xff and the like.
std::string escaped(std::string_view text);

} // namespace results

#endif
