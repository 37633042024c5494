#include "characters.h"

#include <QChar>

#include <cstdint>
#include <cstring>

namespace results {

namespace {

/// The first byte of a character of several bytes: how many follow, and its bits of the character.
struct lead
{
    int followers = 0;
    char32_t bits = 0;
    char32_t least = 0; ///< smaller characters would be overlong
};

lead lead_of(unsigned char byte)
{
    if (byte >= 0xc2 && byte < 0xe0)
        return {1, byte & 0x1fU, 0x80};
    if (byte >= 0xe0 && byte < 0xf0)
        return {2, byte & 0x0fU, 0x800};
    if (byte >= 0xf0 && byte < 0xf5)
        return {3, byte & 0x07U, 0x1'0000};
    return {};
}

char32_t character_of_several(const char *&at, const char *end)
{
    const lead first = lead_of(static_cast<unsigned char>(*at++));
    if (first.followers == 0 || end - at < first.followers)
        return no_character;
    char32_t character = first.bits;
    for (int i = 0; i < first.followers; ++i) {
        const auto byte = static_cast<unsigned char>(at[i]);
        if ((byte & 0xc0U) != 0x80)
            return no_character;
        character = character << 6U | (byte & 0x3fU);
    }
    const bool is_surrogate = character >= 0xd800 && character < 0xe000;
    if (character < first.least || character > 0x10'ffff || is_surrogate)
        return no_character;
    at += first.followers;
    return character;
}

void append_escape(std::string &text, char letter, int digits, uint32_t value)
{
    constexpr char hex[] = "0123456789abcdef";
    text += '\\';
    text += letter;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        text += hex[value >> static_cast<unsigned>(shift) & 0xfU];
}

void append_escape(std::string &text, char32_t character)
{
    if (character < 0x100)
        append_escape(text, 'x', 2, character);
    else if (character < 0x1'0000)
        append_escape(text, 'u', 4, character);
    else
        append_escape(text, 'U', 8, character);
}

} // namespace

char32_t next_character(const char *&at, const char *end)
{
    const auto byte = static_cast<unsigned char>(*at);
    if (byte >= 0x80)
        return character_of_several(at, end);
    ++at;
    return byte;
}

void append_character(std::string &text, char32_t character)
{
    const auto follower = [&](unsigned shift) {
        return static_cast<char>(0x80U | (character >> shift & 0x3fU));
    };
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xc0U | character >> 6U);
        text += follower(0);
    } else if (character < 0x1'0000) {
        text += static_cast<char>(0xe0U | character >> 12U);
        text += {follower(6), follower(0)};
    } else {
        text += static_cast<char>(0xf0U | character >> 18U);
        text += {follower(12), follower(6), follower(0)};
    }
}

bool is_utf_8(std::string_view text)
{
    const char *at = text.data();
    const char *const end = at + text.size();
    while (at != end) {
        // Nearly all texts are ASCII, so eight bytes are looked at together.
        constexpr uint64_t high_bits = 0x8080'8080'8080'8080;
        uint64_t bytes = 0;
        if (end - at >= 8) {
            std::memcpy(&bytes, at, 8);
            if ((bytes & high_bits) == 0) {
                at += 8;
                continue;
            }
        }
        if (next_character(at, end) == no_character)
            return false;
    }
    return true;
}

bool must_be_escaped(char32_t character)
{
    if (character < 0x7f)
        return character < 0x20;
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

std::string escaped(std::string_view text)
{
    std::string result;
    const char *at = text.data();
    const char *const end = at + text.size();
    while (at != end) {
        const char *const begin = at;
        const char32_t character = next_character(at, end);
        if (character == no_character)
            append_escape(result, 'x', 2, static_cast<unsigned char>(*begin));
        else if (must_be_escaped(character))
            append_escape(result, character);
        else
            result.append(begin, at);
    }
    return result;
}

} // namespace results
