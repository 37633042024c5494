#include "plugin_static_function.h"

#include <QDateTime>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

constexpr int longest_escape_run = 100000;
constexpr auto list_separator = ";"_L1;

// The second part of a text split at a separator; empty when there is none.
QString second_part(const QString &text, const QString &separator)
{
    return text.split(separator).value(1);
}

// "true" of "<CFBoolean 0x1 [0x2]>{value = true}", untrimmed.
QString braced_value(const QString &printed_value)
{
    QString value = second_part(second_part(printed_value.trimmed(), u"]>{"_s), u"="_s);
    value.chop(1);
    return value;
}

// A text without an offset is read as UTC. Local time would make the result depend on the
// examiner's machine.
QDateTime iso_date(const QString &text)
{
    QDateTime in_utc = QDateTime::fromString(text + u'Z', Qt::ISODate);
    if (in_utc.isValid())
        return in_utc;
    const QDateTime with_offset = QDateTime::fromString(text, Qt::ISODate);
    return with_offset.timeSpec() == Qt::LocalTime ? QDateTime() : with_offset;
}

// The characters of one escape, or of two that form a surrogate pair.
QString unescaped(const QRegularExpressionMatch &escape)
{
    QString characters;
    for (const QString &digits : escape.capturedTexts().mid(1)) {
        if (!digits.isEmpty())
            characters.append(QChar(digits.toUShort(nullptr, 16)));
    }
    return characters;
}

void log_unicode_conversion(const QString &message)
{
    plugin_static_function::app_debug(
        message, u"static QString plugin_static_function::convert_string_to_unicode(QString)"_s);
}

} // namespace

QString plugin_static_function::get_filtered_number_value(const QString &printed_number)
{
    const QStringList parts = printed_number.trimmed().split(u',');
    return parts.size() < 2 ? QString() : second_part(parts.first(), u"+"_s).trimmed();
}

QString plugin_static_function::get_filtered_boolean_value(const QString &printed_boolean)
{
    return braced_value(printed_boolean).trimmed();
}

QString plugin_static_function::get_filtered_cfstring_value(const QString &printed_string)
{
    return braced_value(printed_string).remove(u'"').trimmed();
}

QString plugin_static_function::get_filtered_string_value(const QString &printed_list)
{
    const QString text = printed_list.trimmed();
    if (!text.contains(u','))
        return {};
    QStringList entries;
    for (QString entry : text.split(u','))
        entries.append(entry.remove(u'(').remove(u')').remove(u'"').trimmed());
    QString joined = entries.join(list_separator);
    // The list may end in a separator of its own.
    if (joined.endsWith(list_separator))
        joined.chop(list_separator.size());
    return joined;
}

QString plugin_static_function::get_filtered_wherefrom_value(const QString &printed_origins)
{
    QString origins = printed_origins.trimmed();
    // A printed property list ends with this separator; any other one belongs to an origin.
    if (origins.endsWith(");"_L1))
        origins.chop(list_separator.size());
    origins.remove(u'\n').remove(u'\r').remove("  "_L1).remove("(\""_L1).remove("\")"_L1);
    origins.replace("\","_L1, "\n"_L1).replace(u',', u'\n');
    origins.replace(u'(', u'<').replace(u')', u'>');
    origins.remove(u'"').replace("\\U2019s"_L1, "'s"_L1);
    return origins.trimmed();
}

QString plugin_static_function::get_filtered_date_value(const QString &printed_date)
{
    QString text = printed_date.trimmed().section(u'.', 0, 0);
    // Foundation prints a blank before the offset.
    text.replace(" +"_L1, "+"_L1).replace(" -"_L1, "-"_L1);
    const QDateTime date = iso_date(text);
    return date.isValid() ? QString::number(date.toMSecsSinceEpoch() / 1000) : QString();
}

QString plugin_static_function::convert_string_to_unicode(const QString &escaped_text)
{
    static const QRegularExpression escape(uR"(\\U(?:([dD][89abAB][0-9a-fA-F]{2})\\U)"
                                           uR"(([dD][c-fC-F][0-9a-fA-F]{2})|)"
                                           uR"((?![dD][89a-fA-F])([0-9a-fA-F]{4})))"_s);
    log_unicode_conversion(u" : running"_s);
    QString converted;
    qsizetype end_of_last = 0;
    int count = 0;
    for (const QRegularExpressionMatch &match : escape.globalMatch(escaped_text)) {
        if (++count > longest_escape_run) {
            log_unicode_conversion(u" : infinite loop cross"_s);
            break;
        }
        converted +=
            QStringView(escaped_text).mid(end_of_last, match.capturedStart() - end_of_last);
        converted += unescaped(match);
        end_of_last = match.capturedEnd();
    }
    converted += QStringView(escaped_text).mid(end_of_last);
    return converted;
}
