#ifndef RESULT_PARSER_H
#define RESULT_PARSER_H

#include <QCommandLineParser>
#include <QList>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <optional>
#include <utility>

#include "time_texts.h"

/// The words that an option takes, and what they stand for.
template<typename Value>
using option_words = QList<std::pair<QString, Value>>;

/// The arguments of a command that looks at results, and the first thing that is wrong with them.
class result_parser
{
public:
    result_parser(const QStringList &options_with_value, const QStringList &switches);

    void parse(const QStringList &arguments);
    /// Keeps the reason, unless there is one.
    void refuse(const QString &reason);
    /// What is wrong; empty if nothing is.
    const QString &misuse() const { return m_misuse; }

    bool is_set(const QString &name) const { return m_parser.isSet(name); }
    QString value(const QString &name) const { return m_parser.value(name); }
    QStringList results() const { return m_parser.positionalArguments(); }
    /// The values of an option that may be repeated, each once.
    QStringList values(const QString &name) const;
    /// The same where one value may hold several names, with commas between.
    QStringList names(const QString &name) const;
    /// A whole number from `least` on; nothing if the option is not given.
    std::optional<qint64> number(const QString &name, qint64 least);
    /// A time; nothing if the option is not given.
    std::optional<results::time_span> span(const QString &name);

    /// What the word of the option stands for; the first one if it is not given.
    template<typename Value>
    Value word(const QString &name, const option_words<Value> &known)
    {
        const QString given = is_set(name) ? value(name) : known.first().first;
        const auto found = std::find_if(known.begin(), known.end(),
                                        [&](const auto &each) { return each.first == given; });
        if (found != known.end())
            return found->second;
        QStringList all;
        for (const auto &each : known)
            all.append(each.first);
        refuse_word(name, given, all);
        return known.first().second;
    }

private:
    void refuse_word(const QString &name, const QString &given, const QStringList &known);

    QCommandLineParser m_parser;
    QString m_misuse;
};

#endif
