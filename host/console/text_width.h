#ifndef TEXT_WIDTH_H
#define TEXT_WIDTH_H

#include <string>
#include <string_view>

/// How many columns of a terminal a character takes: 0 for combining marks, 2 for the wide
/// characters of East Asian scripts and most emoji, else 1.
int width_of(char32_t character);

/// The columns of a text in UTF-8 without control characters.
int width_of(std::string_view text);

/// The text, or as much of its beginning as fits into `width` columns with a "…" behind it.
std::string cut_to_width(std::string_view text, int width);

#endif
