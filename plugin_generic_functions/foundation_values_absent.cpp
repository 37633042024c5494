#include "foundation_values.h"

// The build without Foundation: there is nothing to read.
namespace foundation_values {

std::optional<QString> string_text(const void * /*string*/)
{
    return std::nullopt;
}

std::optional<QString> string_under_key(const void * /*dictionary*/, const void * /*key*/)
{
    return std::nullopt;
}

std::optional<QString> number_under_key(const void * /*dictionary*/, const void * /*key*/)
{
    return std::nullopt;
}

std::optional<QString> number_or_yes_no_under_key(const void * /*dictionary*/, const void * /*key*/)
{
    return std::nullopt;
}

std::optional<QString> array_under_key(const void * /*dictionary*/, const void * /*key*/,
                                       const QString & /*separator*/)
{
    return std::nullopt;
}

std::optional<QString> date_text(const void * /*date*/)
{
    return std::nullopt;
}

QString key_text(const void * /*key*/)
{
    return {};
}

} // namespace foundation_values
