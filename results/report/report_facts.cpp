#include "report_facts.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <iterator>

#include "html_text.h"
#include "shell_word.h"

using namespace Qt::StringLiterals;

namespace results {

namespace {

QString json_of(const QJsonValue &value)
{
    const QByteArray json = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(json.mid(1, json.size() - 2));
}

QString text_in(const QJsonObject &object, QLatin1StringView name)
{
    const QJsonValue value = object.value(name);
    if (value.isBool())
        return value.toBool() ? u"yes"_s : u"no"_s;
    return value.isDouble() ? json_of(value) : value.toString();
}

/// The texts of a list. What is none, as no run writes it, stands as its JSON.
QStringList texts_in(const QJsonObject &object, QLatin1StringView name)
{
    const QJsonValue list = object.value(name);
    if (!list.isArray())
        return list.isUndefined() ? QStringList() : QStringList{json_of(list)};
    QStringList texts;
    for (const QJsonValue value : list.toArray())
        texts.append(value.isString() ? value.toString() : json_of(value));
    return texts;
}

QString command_of(const QJsonObject &run)
{
    QStringList words;
    for (const QString &argument : texts_in(run, "command_line"_L1))
        words.append(shell_word(argument));
    return words.join(u' ');
}

/// Those that are not empty.
QString joined(QStringList texts)
{
    texts.removeAll(QString());
    return texts.join(", "_L1);
}

/// The text with a word before it, if there is a text.
QString named(const QString &word, const QString &text)
{
    return text.isEmpty() ? QString() : word + u' ' + text;
}

QString program_of(const QJsonObject &run, QLatin1StringView name)
{
    const QJsonObject program = run.value(name).toObject();
    return joined({text_in(program, "file"_L1), named(u"version"_s, text_in(program, "version"_L1)),
                   named(u"SHA-256"_s, text_in(program, "sha256"_L1))});
}

std::string facts_of(const QJsonObject &run)
{
    const QJsonObject source = run.value("source"_L1).toObject();
    const QJsonObject options = run.value("options"_L1).toObject();
    return html_facts({
        {u"Source as given"_s, text_in(source, "given"_L1)},
        {u"Volume"_s, text_in(source, "volume"_L1)},
        {u"Number of the source"_s, text_in(source, "number"_L1)},
        {u"Outcome"_s, text_in(run, "outcome"_L1)},
        {u"Begin"_s, text_in(run, "begin"_L1)},
        {u"End"_s, text_in(run, "end"_L1)},
        {u"Accounts"_s, texts_in(options, "accounts"_L1).join(", "_L1)},
        {u"Options of reading"_s, texts_in(options, "extraction_options"_L1).join(", "_L1)},
        {u"Transaction logs replayed"_s, text_in(options, "replays_logs"_L1)},
        {u"Command line"_s, command_of(run)},
        {u"Program"_s, program_of(run, "program"_L1)},
        {u"Library"_s, program_of(run, "library"_L1)},
        {u"Machine"_s, joined({text_in(run, "machine"_L1), text_in(run, "system"_L1)})},
    });
}

/// The hash of a file, or of its state before and after where they differ.
QString hash_of(const QJsonObject &file)
{
    const QString before = text_in(file, "sha256_before"_L1);
    const QString after = text_in(file, "sha256_after"_L1);
    if (before.isEmpty())
        return after.isEmpty() ? u"not hashed"_s : after + " (after)"_L1;
    if (after.isEmpty())
        return before + " (before)"_L1;
    return before == after ? before + " (before and after)"_L1
                           : before + " before, "_L1 + after + " after: CHANGED"_L1;
}

std::string files_of(const QJsonObject &run)
{
    QList<QStringList> lines;
    for (const QJsonValue value : run.value("files"_L1).toArray()) {
        const QJsonObject file = value.toObject();
        lines.append({text_in(file, "path"_L1), text_in(file, "size"_L1),
                      text_in(file, "modified"_L1), text_in(file, "state"_L1),
                      texts_in(file, "transaction_logs"_L1).join(", "_L1), hash_of(file),
                      text_in(file, "failure"_L1)});
    }
    if (lines.isEmpty())
        return {};
    return html_folded(u"Files that were read (%1)"_s.arg(lines.size()),
                       html_table({u"path"_s, u"bytes"_s, u"last written"_s, u"state"_s,
                                   u"transaction logs"_s, u"SHA-256"_s, u"failure"_s},
                                  lines));
}

QString keys_of(const QJsonObject &hive)
{
    const QJsonObject keys = hive.value("keys"_L1).toObject();
    if (keys.isEmpty())
        return {};
    return u"%1 keys before, %2 after: %3 added, %4 changed, %5 removed"_s.arg(
        text_in(keys, "before"_L1), text_in(keys, "after"_L1), text_in(keys, "added"_L1),
        text_in(keys, "changed"_L1), text_in(keys, "removed"_L1));
}

std::string replayed_of(const QJsonObject &run)
{
    QList<QStringList> lines;
    for (const QJsonValue value : run.value("replayed_hives"_L1).toArray()) {
        const QJsonObject hive = value.toObject();
        QStringList logs;
        for (const QJsonValue log : hive.value("logs"_L1).toArray())
            logs.append(text_in(log.toObject(), "name"_L1) + ": "_L1 +
                        text_in(log.toObject(), "result"_L1));
        lines.append({text_in(hive, "path"_L1), logs.join("; "_L1), keys_of(hive),
                      text_in(hive, "copy"_L1), text_in(hive, "copy_sha256"_L1),
                      text_in(hive, "failure"_L1)});
    }
    if (lines.isEmpty())
        return {};
    return html_folded(u"Hives with transaction logs (%1)"_s.arg(lines.size()),
                       html_table({u"hive"_s, u"logs"_s, u"keys"_s, u"copy that was read"_s,
                                   u"SHA-256 of the copy"_s, u"failure"_s},
                                  lines));
}

std::string tabs_of(const QJsonObject &run)
{
    QList<QStringList> lines;
    for (const QJsonValue value : run.value("tabs"_L1).toArray()) {
        const QJsonObject tab = value.toObject();
        lines.append({text_in(tab, "name"_L1), text_in(tab, "rows"_L1),
                      QString::number(tab.value("seconds"_L1).toDouble(), 'f', 3),
                      text_in(tab, "done"_L1)});
    }
    if (lines.isEmpty())
        return {};
    return html_folded(u"Tables of the run (%1)"_s.arg(lines.size()),
                       html_table({u"table"_s, u"rows"_s, u"seconds"_s, u"done"_s}, lines));
}

std::string warnings_of(const QJsonObject &run)
{
    struct kind
    {
        QLatin1StringView name;
        QLatin1StringView title;
    };
    constexpr kind kinds[] = {{"not_read"_L1, "What was not read"_L1},
                              {"early_ends"_L1, "Hives that were left before their end"_L1},
                              {"problems"_L1, "Problems of the run"_L1},
                              {"remarks"_L1, "Remarks"_L1}};
    std::string out;
    for (const kind &each : kinds) {
        const QStringList texts = texts_in(run, each.name);
        if (!texts.isEmpty())
            out += html_warning(u"%1 (%2)"_s.arg(each.title).arg(texts.size()), texts);
    }
    const QString outcome = text_in(run, "outcome"_L1);
    const bool has_lists =
        std::all_of(std::begin(kinds), std::end(kinds),
                    [&run](const kind &each) { return run.value(each.name).isArray(); });
    if (out.empty() && has_lists && outcome == "complete"_L1)
        return "<p>Everything that was selected was read. The run noted no warnings.</p>\n";
    return out;
}

} // namespace

std::string html_of_run(const QJsonObject &run, const QString &title)
{
    return "<h3>" + html(title) + "</h3>\n" + warnings_of(run) + facts_of(run) + files_of(run) +
           replayed_of(run) + tabs_of(run);
}

} // namespace results
