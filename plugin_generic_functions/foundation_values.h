#ifndef FOUNDATION_VALUES_H
#define FOUNDATION_VALUES_H

#include <QString>

#include <optional>

/// Reads Foundation objects, handed over as untyped pointers, into texts. Nothing comes back for
/// nil, for an object of another class, for a key that is missing, and in a build without
/// Foundation. No Objective-C exception leaves these functions and they keep no object.
namespace foundation_values {

/// The text of an NSString or CFStringRef.
std::optional<QString> string_text(const void *string);
/// The NSString under the key.
std::optional<QString> string_under_key(const void *dictionary, const void *key);
/// The decimal text of the NSNumber under the key.
std::optional<QString> number_under_key(const void *dictionary, const void *key);
/// The same with "NO" and "YES" for booleans of value 0 and 1.
std::optional<QString> number_or_yes_no_under_key(const void *dictionary, const void *key);
/// The elements of the NSArray under the key, joined.
std::optional<QString> array_under_key(const void *dictionary, const void *key,
                                       const QString &separator);
/// An NSDate in UTC in the pattern "dd-MMM-yyyy,HH:mm:ss a", months and halves of the day in
/// English. Nothing for dates before 15 October 1582, which that text does not distinguish.
std::optional<QString> date_text(const void *date);
/// A key as the log shows it: its text, or its description when it is no NSString.
QString key_text(const void *key);

} // namespace foundation_values

#endif
