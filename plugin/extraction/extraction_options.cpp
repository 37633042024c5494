#include "extraction_options.h"

#include "printable_text.h"

#include <QDir>
#include <QVariantMap>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

struct bool_option
{
    QLatin1StringView key;
    bool extraction_options::*member;
};

constexpr bool_option bool_options[] = {
    {"ignore_letter_case"_L1, &extraction_options::ignore_letter_case},
    {"decode_by_type"_L1, &extraction_options::decode_by_type},
    {"installations_of_users"_L1, &extraction_options::installations_of_users},
    {"keep_hives_open"_L1, &extraction_options::keep_hives_open},
    {"report_unread"_L1, &extraction_options::report_unread},
    {"old_layout"_L1, &extraction_options::old_layout},
};

constexpr auto hive_copies_key = "hive_copies"_L1;

bool is_of_type(const QVariant &value, QMetaType::Type type)
{
    return value.metaType() == QMetaType(type);
}

void read_copies(const QVariantMap &copies, parsed_options &read)
{
    for (auto copy = copies.cbegin(); copy != copies.cend(); ++copy) {
        if (is_of_type(copy.value(), QMetaType::QString))
            read.options.hive_copies.insert(QDir::cleanPath(copy.key()), copy.value().toString());
        else
            read.ignored.append(
                printable_text(u"the copy of %1 is no text and is ignored"_s.arg(copy.key())));
    }
}

std::optional<bool_option> bool_option_of(const QString &key)
{
    for (const bool_option &known : bool_options) {
        if (key == known.key)
            return known;
    }
    return std::nullopt;
}

void read_entry(const QString &key, const QVariant &value, parsed_options &read)
{
    const auto wrong = [&](const QString &reason) {
        read.ignored.append(printable_text(u"%1 %2 and is ignored"_s.arg(key, reason)));
    };
    if (const auto known = bool_option_of(key)) {
        if (is_of_type(value, QMetaType::Bool))
            read.options.*known->member = value.toBool();
        else
            wrong(u"is no bool"_s);
    } else if (key == hive_copies_key) {
        if (is_of_type(value, QMetaType::QVariantMap))
            read_copies(value.toMap(), read);
        else
            wrong(u"is no map of texts"_s);
    } else {
        wrong(u"is no known option"_s);
    }
}

} // namespace

QString extraction_options::file_to_read(const QString &path) const
{
    return hive_copies.isEmpty() ? path : hive_copies.value(QDir::cleanPath(path), path);
}

parsed_options extraction_options_from(const QVariant &property)
{
    parsed_options read;
    if (!property.isValid())
        return read;
    if (!is_of_type(property, QMetaType::QVariantMap)) {
        read.ignored.append(u"the options are no map and are ignored"_s);
        return read;
    }
    const QVariantMap map = property.toMap();
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry)
        read_entry(entry.key(), entry.value(), read);
    return read;
}
