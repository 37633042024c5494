#include "result_parser.h"

using namespace Qt::StringLiterals;

result_parser::result_parser(const QStringList &options_with_value, const QStringList &switches)
{
    for (const QString &name : options_with_value) {
        const QStringList names =
            name == "output"_L1 ? QStringList{u"o"_s, name} : QStringList{name};
        m_parser.addOption(QCommandLineOption(names, {}, u"VALUE"_s));
    }
    for (const QString &name : switches)
        m_parser.addOption(QCommandLineOption(name));
    m_parser.addOption(QCommandLineOption(QStringList{u"h"_s, u"help"_s}));
}

void result_parser::parse(const QStringList &arguments)
{
    // The parser expects the program's name as the first argument.
    if (!m_parser.parse(QStringList(u"artifact_host"_s) + arguments))
        refuse(m_parser.errorText());
}

void result_parser::refuse(const QString &reason)
{
    if (m_misuse.isEmpty())
        m_misuse = reason;
}

void result_parser::refuse_word(const QString &name, const QString &given, const QStringList &known)
{
    refuse(u"unknown %1 \"%2\"; there are %3"_s.arg(name, given, known.join(", "_L1)));
}

QStringList result_parser::values(const QString &name) const
{
    QStringList values = m_parser.values(name);
    values.removeDuplicates();
    return values;
}

QStringList result_parser::names(const QString &name) const
{
    return values(name).join(u',').split(u',', Qt::SkipEmptyParts);
}

std::optional<qint64> result_parser::number(const QString &name, qint64 least)
{
    if (!is_set(name))
        return std::nullopt;
    bool is_number = false;
    const qint64 number = value(name).toLongLong(&is_number);
    if (!is_number || number < least)
        refuse(u"--%1 takes a whole number from %2 on"_s.arg(name).arg(least));
    return number;
}

std::optional<results::time_span> result_parser::span(const QString &name)
{
    if (!is_set(name))
        return std::nullopt;
    const auto span = results::written_time(value(name));
    if (!span)
        refuse(u"--%1 takes a time such as 2023-12-28, 2023-12-28T08:30 or "
               "2023-12-28T08:30:44+01:00, in UTC unless it says otherwise"_s.arg(name));
    return span;
}
