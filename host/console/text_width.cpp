#include "text_width.h"

#include <QChar>

#include <algorithm>
#include <iterator>

#include "characters.h"

namespace {

struct character_range
{
    char32_t first;
    char32_t last;
};

/// Wide and full-width characters: Unicode 15, EastAsianWidth.txt, with the unassigned ones
/// between.
constexpr character_range wide_characters[] = {
    {0x1100, 0x115f},   {0x231a, 0x231b},   {0x2329, 0x232a},   {0x23e9, 0x23ec},
    {0x23f0, 0x23f0},   {0x23f3, 0x23f3},   {0x25fd, 0x25fe},   {0x2614, 0x2615},
    {0x2648, 0x2653},   {0x267f, 0x267f},   {0x2693, 0x2693},   {0x26a1, 0x26a1},
    {0x26aa, 0x26ab},   {0x26bd, 0x26be},   {0x26c4, 0x26c5},   {0x26ce, 0x26ce},
    {0x26d4, 0x26d4},   {0x26ea, 0x26ea},   {0x26f2, 0x26f3},   {0x26f5, 0x26f5},
    {0x26fa, 0x26fa},   {0x26fd, 0x26fd},   {0x2705, 0x2705},   {0x270a, 0x270b},
    {0x2728, 0x2728},   {0x274c, 0x274c},   {0x274e, 0x274e},   {0x2753, 0x2755},
    {0x2757, 0x2757},   {0x2795, 0x2797},   {0x27b0, 0x27b0},   {0x27bf, 0x27bf},
    {0x2b1b, 0x2b1c},   {0x2b50, 0x2b50},   {0x2b55, 0x2b55},   {0x2e80, 0x303e},
    {0x3041, 0x4dbf},   {0x4e00, 0xa4cf},   {0xa960, 0xa97c},   {0xac00, 0xd7a3},
    {0xf900, 0xfaff},   {0xfe10, 0xfe19},   {0xfe30, 0xfe6f},   {0xff01, 0xff60},
    {0xffe0, 0xffe6},   {0x16fe0, 0x18aff}, {0x1aff0, 0x1b2ff}, {0x1f004, 0x1f004},
    {0x1f0cf, 0x1f0cf}, {0x1f18e, 0x1f18e}, {0x1f191, 0x1f19a}, {0x1f200, 0x1f320},
    {0x1f32d, 0x1f335}, {0x1f337, 0x1f37c}, {0x1f37e, 0x1f393}, {0x1f3a0, 0x1f3ca},
    {0x1f3cf, 0x1f3d3}, {0x1f3e0, 0x1f3f0}, {0x1f3f4, 0x1f3f4}, {0x1f3f8, 0x1f43e},
    {0x1f440, 0x1f440}, {0x1f442, 0x1f4fc}, {0x1f4ff, 0x1f53d}, {0x1f54b, 0x1f54e},
    {0x1f550, 0x1f567}, {0x1f57a, 0x1f57a}, {0x1f595, 0x1f596}, {0x1f5a4, 0x1f5a4},
    {0x1f5fb, 0x1f64f}, {0x1f680, 0x1f6c5}, {0x1f6cc, 0x1f6cc}, {0x1f6d0, 0x1f6d2},
    {0x1f6d5, 0x1f6d7}, {0x1f6dc, 0x1f6df}, {0x1f6eb, 0x1f6ec}, {0x1f6f4, 0x1f6fc},
    {0x1f7e0, 0x1f7eb}, {0x1f7f0, 0x1f7f0}, {0x1f90c, 0x1f93a}, {0x1f93c, 0x1f945},
    {0x1f947, 0x1f9ff}, {0x1fa70, 0x1faff}, {0x20000, 0x2fffd}, {0x30000, 0x3fffd},
};

bool is_wide(char32_t character)
{
    const auto after = std::upper_bound(
        std::begin(wide_characters), std::end(wide_characters), character,
        [](char32_t value, const character_range &range) { return value < range.first; });
    return after != std::begin(wide_characters) && character <= std::prev(after)->last;
}

bool is_combining(char32_t character)
{
    constexpr char32_t first_hangul_vowel = 0x1160;
    constexpr char32_t last_hangul_final = 0x11ff;
    const QChar::Category category = QChar::category(character);
    return category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing ||
           (character >= first_hangul_vowel && character <= last_hangul_final);
}

} // namespace

int width_of(char32_t character)
{
    if (character < 0x300)
        return 1;
    if (is_combining(character))
        return 0;
    return is_wide(character) ? 2 : 1;
}

int width_of(std::string_view text)
{
    int width = 0;
    const char *at = text.data();
    const char *const end = at + text.size();
    while (at != end)
        width += width_of(results::next_character(at, end));
    return width;
}

std::string cut_to_width(std::string_view text, int width)
{
    int taken = 0;
    const char *at = text.data();
    const char *const end = at + text.size();
    const char *last_that_leaves_room = at;
    while (at != end) {
        taken += width_of(results::next_character(at, end));
        if (taken > width)
            return std::string(text.data(), last_that_leaves_room) + "…";
        if (taken < width)
            last_that_leaves_room = at;
    }
    return std::string(text);
}
