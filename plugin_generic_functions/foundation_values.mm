#include "foundation_values.h"

#include <QStringList>

#import <Foundation/Foundation.h>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

using optional_text = std::optional<QString>;

#ifdef __APPLE__
constexpr auto boolean_class_name = "__NSCFBoolean"_L1;
#else
constexpr auto boolean_class_name = "NSBoolNumber"_L1;
#endif

// From this second on the formatter's calendar is the Gregorian one.
constexpr NSTimeInterval start_of_gregorian_calendar = -12219292800.0;

id object_of(const void *pointer)
{
    return static_cast<id>(const_cast<void *>(pointer));
}

// Runs a reader with a pool for what Foundation allocates; an exception counts as no value. No
// template: GCC loses the body of an @try in one.
optional_text guarded(const std::function<optional_text()> &reader)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    optional_text text;
    @try {
        text = reader();
    } @catch (id exception) {
        text.reset();
    }
    [pool release];
    return text;
}

QString qstring_of(NSString *string)
{
    QString text(static_cast<qsizetype>([string length]), Qt::Uninitialized);
    [string getCharacters:reinterpret_cast<unichar *>(text.data())
                    range:NSMakeRange(0, [string length])];
    return text;
}

optional_text text_of_string(id value)
{
    if (![value isKindOfClass:[NSString class]])
        return std::nullopt;
    return qstring_of(static_cast<NSString *>(value));
}

optional_text text_of_number(id value)
{
    if (![value isKindOfClass:[NSNumber class]])
        return std::nullopt;
    return qstring_of([static_cast<NSNumber *>(value) stringValue]);
}

bool is_boolean(id value)
{
    return qstring_of(NSStringFromClass([value class])) == boolean_class_name;
}

optional_text yes_no_of_number(id value)
{
    optional_text number = text_of_number(value);
    if (!number || !is_boolean(value))
        return number;
    switch (static_cast<int>([static_cast<NSNumber *>(value) doubleValue])) {
    case 0:
        return u"NO"_s;
    case 1:
        return u"YES"_s;
    default:
        return number;
    }
}

QString text_of_any(id value)
{
    return qstring_of([value description]);
}

optional_text under_key(const void *dictionary, const void *key,
                        const std::function<optional_text(id)> &reader)
{
    return guarded([&]() -> optional_text {
        const id values = object_of(dictionary);
        if (key == nullptr || ![values isKindOfClass:[NSDictionary class]])
            return std::nullopt;
        return reader([static_cast<NSDictionary *>(values) objectForKey:object_of(key)]);
    });
}

NSDateFormatter *utc_formatter()
{
    NSDateFormatter *formatter = [[[NSDateFormatter alloc] init] autorelease];
    [formatter setLocale:[[[NSLocale alloc] initWithLocaleIdentifier:@"en_US_POSIX"] autorelease]];
    [formatter setTimeZone:[NSTimeZone timeZoneForSecondsFromGMT:0]];
    [formatter setDateFormat:@"dd-MMM-yyyy,HH:mm:ss a"];
    return formatter;
}

} // namespace

namespace foundation_values {

std::optional<QString> string_text(const void *string)
{
    return guarded([=] { return text_of_string(object_of(string)); });
}

std::optional<QString> string_under_key(const void *dictionary, const void *key)
{
    return under_key(dictionary, key, text_of_string);
}

std::optional<QString> number_under_key(const void *dictionary, const void *key)
{
    return under_key(dictionary, key, text_of_number);
}

std::optional<QString> number_or_yes_no_under_key(const void *dictionary, const void *key)
{
    return under_key(dictionary, key, yes_no_of_number);
}

std::optional<QString> array_under_key(const void *dictionary, const void *key,
                                       const QString &separator)
{
    const auto joined = [&separator](id value) -> optional_text {
        if (![value isKindOfClass:[NSArray class]])
            return std::nullopt;
        NSArray *array = static_cast<NSArray *>(value);
        QStringList texts;
        for (NSUInteger index = 0; index < [array count]; ++index)
            texts.append(text_of_any([array objectAtIndex:index]));
        return texts.join(separator);
    };
    return under_key(dictionary, key, joined);
}

std::optional<QString> date_text(const void *date)
{
    return guarded([=]() -> optional_text {
        const id value = object_of(date);
        if (![value isKindOfClass:[NSDate class]])
            return std::nullopt;
        // Not-a-number compares as false and is no date either.
        if (!([static_cast<NSDate *>(value) timeIntervalSince1970] >= start_of_gregorian_calendar))
            return std::nullopt;
        return qstring_of([utc_formatter() stringFromDate:static_cast<NSDate *>(value)]);
    });
}

QString key_text(const void *key)
{
    const auto described = [=]() -> optional_text {
        return key == nullptr ? QString() : text_of_any(object_of(key));
    };
    return guarded(described).value_or(QString());
}

} // namespace foundation_values
