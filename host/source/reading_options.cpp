#include "reading_options.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

struct named_option
{
    bool reading_options::*member;
    QLatin1StringView key; ///< empty for what the plug-in is not asked for
    QLatin1StringView words;
};

constexpr named_option named_options[] = {
    {&reading_options::ignore_letter_case, "ignore_letter_case"_L1,
     "file names in any letter case"_L1},
    {&reading_options::decode_by_type, "decode_by_type"_L1, "texts decoded by their type"_L1},
    {&reading_options::installations_of_users, "installations_of_users"_L1,
     "installations of users"_L1},
    {&reading_options::old_layout, "old_layout"_L1, "older layouts"_L1},
    {&reading_options::replay_logs, {}, "transaction logs applied"_L1},
};

} // namespace

QVariantMap property_of(const reading_options &options)
{
    QVariantMap property{{u"keep_hives_open"_s, true}, {u"report_unread"_s, true}};
    for (const named_option &option : named_options) {
        if (options.*option.member && !option.key.isEmpty())
            property.insert(option.key, true);
    }
    return property;
}

QString line_about(const reading_options &options)
{
    QStringList words;
    for (const named_option &option : named_options) {
        if (options.*option.member)
            words.append(option.words);
    }
    return words.isEmpty() ? u"read like the suite, without options"_s
                           : u"read with these options: %1"_s.arg(words.join(", "_L1));
}
