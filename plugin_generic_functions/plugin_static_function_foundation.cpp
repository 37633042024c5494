#include "plugin_static_function.h"

#include "foundation_values.h"

#include <QLatin1StringView>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

using optional_text = std::optional<QString>;

constexpr auto pair_separator = ":+:"_L1;
constexpr auto element_separator = ";"_L1;

// What a reader logs when there is no value; the pair readers log as the reader of their values.
struct failure_report
{
    QLatin1StringView message;
    QLatin1StringView function_info;
};

constexpr failure_report string_failure = {
    "[get_nsstring_values]-----FAILED----- to get value: "_L1,
    "static QString plugin_static_function::get_nsstring_values(void*, void*)"_L1};
constexpr failure_report number_failure = {
    "[get_nsnumber_values]-----FAILED----- to get value: "_L1,
    "static QString plugin_static_function::get_nsnumber_values(void*, void*)"_L1};
constexpr failure_report yes_no_failure = {
    "[get_nsnumber_values_yes_no]-----FAILED----- to get value: "_L1,
    "static QString plugin_static_function::get_nsnumber_values_yes_no(void*, void*)"_L1};
constexpr failure_report array_failure = {
    "[get_nsarray_key_and_values]-----FAILED----- to get value: "_L1,
    "static QString plugin_static_function::get_nsarray_key_and_values(void*, void*, QString)"_L1};

optional_text reported(const optional_text &value, const failure_report &failure, const void *key)
{
    if (!value)
        plugin_static_function::app_debug(failure.message + foundation_values::key_text(key),
                                          failure.function_info);
    return value;
}

optional_text string_value(const void *dictionary, const void *key)
{
    return reported(foundation_values::string_under_key(dictionary, key), string_failure, key);
}

optional_text number_value(const void *dictionary, const void *key)
{
    return reported(foundation_values::number_under_key(dictionary, key), number_failure, key);
}

optional_text yes_no_value(const void *dictionary, const void *key)
{
    return reported(foundation_values::number_or_yes_no_under_key(dictionary, key), yes_no_failure,
                    key);
}

optional_text array_value(const void *dictionary, const void *key)
{
    return reported(foundation_values::array_under_key(dictionary, key, element_separator),
                    array_failure, key);
}

QString text_of(const optional_text &value)
{
    return value.value_or(QString());
}

QString pair_of(const QString &label, const optional_text &value)
{
    return value ? label + pair_separator + *value : QString();
}

} // namespace

QString plugin_static_function::convert_cfstring_to_qstring(const void *cf_string)
{
    return text_of(foundation_values::string_text(cf_string));
}

QString plugin_static_function::get_nsstring_values(const void *dictionary, const void *key)
{
    return text_of(string_value(dictionary, key));
}

QString plugin_static_function::get_nsnumber_values(const void *dictionary, const void *key)
{
    return text_of(number_value(dictionary, key));
}

QString plugin_static_function::get_nsnumber_values_yes_no(const void *dictionary, const void *key)
{
    return text_of(yes_no_value(dictionary, key));
}

QString plugin_static_function::get_nsstring_key_and_values(const void *dictionary, const void *key,
                                                            const QString &label)
{
    return pair_of(label, string_value(dictionary, key));
}

QString plugin_static_function::get_nsnumber_key_and_values(const void *dictionary, const void *key,
                                                            const QString &label)
{
    return pair_of(label, number_value(dictionary, key));
}

QString plugin_static_function::get_nsnumber_key_and_value_yes_no(const void *dictionary,
                                                                  const void *key,
                                                                  const QString &label)
{
    return pair_of(label, yes_no_value(dictionary, key));
}

QString plugin_static_function::get_nsarray_key_and_values(const void *dictionary, const void *key,
                                                           const QString &label)
{
    return pair_of(label, array_value(dictionary, key));
}

QString plugin_static_function::convert_nsdate_to_epoch(const void *ns_date)
{
    // The text differs from that of a mail's date in its separators and the half of the day only.
    QString text = foundation_values::date_text(ns_date).value_or(QString());
    return convert_human_readable_to_epoch(text.replace(u'-', u' ').replace(u',', u' '));
}
