#include "finding.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype most_shown_at_once = 20;
constexpr qsizetype shown_of_a_kind = 3;
constexpr qsizetype most_kinds = 8; // names of the evidence may look like kinds

struct finding_kind
{
    QString name;
    QStringList texts;
};

/// What stands behind the path, without numbers and names. A name of the evidence with a colon in
/// it makes a kind of its own, which changes nothing but the summary.
QString kind_of(const QString &text)
{
    static const QRegularExpression details(u"[,;:(]"_s);
    const QString said = text.mid(text.indexOf(": "_L1) + 1);
    return said.left(said.indexOf(details)).trimmed();
}

QList<finding_kind> sorted_by_kind(const QStringList &texts)
{
    QList<finding_kind> kinds;
    QHash<QString, qsizetype> places;
    for (const QString &text : texts) {
        const QString name = kind_of(text);
        const auto place = places.constFind(name);
        if (place != places.cend()) {
            kinds[*place].texts.append(text);
            continue;
        }
        places.insert(name, kinds.size());
        kinds.append({name, {text}});
    }
    return kinds;
}

} // namespace

void append_left_out(QList<finding> &findings, const QStringList &texts)
{
    for (const QString &text : texts)
        findings.append(finding(text));
}

void append_remarks(QList<finding> &findings, const QStringList &texts)
{
    for (const QString &text : texts)
        findings.append(finding(text, false));
}

QStringList texts_of(const QList<finding> &findings)
{
    QStringList texts;
    for (const finding &each : findings)
        texts.append(each.text);
    return texts;
}

bool is_any_left_out(const QList<finding> &findings)
{
    return std::any_of(findings.begin(), findings.end(),
                       [](const finding &each) { return each.is_left_out; });
}

QStringList summed_up(const QStringList &texts)
{
    if (texts.size() <= most_shown_at_once)
        return texts;
    QStringList lines;
    qsizetype told = 0;
    const QList<finding_kind> kinds = sorted_by_kind(texts);
    for (const finding_kind &kind : kinds.first(std::min(most_kinds, kinds.size()))) {
        lines += kind.texts.first(std::min(shown_of_a_kind, kind.texts.size()));
        if (kind.texts.size() > shown_of_a_kind)
            lines.append(u"%1 more: %2"_s.arg(kind.texts.size() - shown_of_a_kind).arg(kind.name));
        told += kind.texts.size();
    }
    if (told < texts.size())
        lines.append(u"%1 more of other kinds"_s.arg(texts.size() - told));
    lines.append(u"%1 in all"_s.arg(texts.size()));
    return lines;
}
