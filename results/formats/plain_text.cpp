#include "plain_text.h"

#include <QByteArray>

#include <array>
#include <charconv>
#include <cmath>

#include "characters.h"

namespace results {

namespace {

std::string hex_literal(std::string_view bytes)
{
    const QByteArray hex = QByteArray::fromRawData(bytes.data(), qsizetype(bytes.size())).toHex();
    return "x'" + hex.toStdString() + "'";
}

std::string text_of_integer(qint64 number)
{
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    return {digits.data(), end};
}

/// With as many digits as bring the same number back.
std::string text_of_real(double number)
{
    if (std::isinf(number))
        return number > 0 ? "9e999" : "-9e999";
    const QByteArray digits = QByteArray::number(number, 'g', 17);
    return digits.toStdString();
}

std::string text_of_other(const cell &value)
{
    switch (value.is) {
    case cell::kind::integer:
        return text_of_integer(value.number);
    case cell::kind::real:
        return text_of_real(value.real);
    case cell::kind::blob:
        return hex_literal(value.bytes);
    case cell::kind::text:
        return "CAST(" + hex_literal(value.bytes) + " AS TEXT)";
    case cell::kind::null:
        break;
    }
    return {};
}

} // namespace

plain_form plain_form_of(const cell &value, std::string &scratch)
{
    if (value.is == cell::kind::null)
        return {{}, false};
    if (value.is == cell::kind::text && is_utf_8(value.bytes))
        return {value.bytes, false};
    scratch = text_of_other(value);
    const bool is_number = value.is == cell::kind::integer ||
                           (value.is == cell::kind::real && !std::isinf(value.real));
    return {scratch, !is_number};
}

std::string_view plain_text(const cell &value, std::string &scratch)
{
    return plain_form_of(value, scratch).text;
}

QString shown_text(const cell &value)
{
    std::string scratch;
    const std::string_view text = plain_text(value, scratch);
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

} // namespace results
