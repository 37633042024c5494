#include "key_check.h"

#include <QSet>

#include <algorithm>
#include <utility>
#include <vector>

#include "checked_hive.h"
#include "walk_limits.h"

using namespace Qt::StringLiterals;

namespace {

/// Places of which something cannot be listed, most of them only counted.
class unlisted_places
{
public:
    void add(const QString &place)
    {
        if (m_count++ == 0)
            m_first = place;
    }

    /// "the content of FIRST [and of N more keys] CONSEQUENCE", or nothing.
    void append_to(QStringList &findings, QLatin1StringView consequence) const
    {
        if (m_count == 0)
            return;
        const QString more = m_count == 1 ? QString() : u" and of %1 more keys"_s.arg(m_count - 1);
        findings.append("the content of "_L1 + m_first + more + consequence);
    }

private:
    QString m_first;
    qint64 m_count = 0;
};

/// Cut where only a forged hive goes on.
QString shown(const QString &path)
{
    constexpr qsizetype longest_path = 500;
    return path.size() > longest_path ? path.left(longest_path) + u'…' : path;
}

/// What a row costs for repeating the name of a key.
qint64 cost_of_repeating(const QString &name)
{
    using namespace walk_limits;
    const qint64 excess = std::max(name.size() - longest_key_name, qint64(0));
    return (name.size() - excess) * cost_of_an_excess_letter / letters_for_one +
           excess * cost_of_an_excess_letter;
}

qint64 cost_of_further_drives(const QByteArray &program)
{
    const qint64 drives = program.count("C:\\") + program.count("C:/");
    return walk_limits::cost_of_a_drive * std::max(drives - 1, qint64(0));
}

/// Lists one key as the plug-in does and notes what cannot be listed.
class key_survey
{
public:
    key_survey(checked_hive &hive, const listed_key &key) : m_hive(hive), m_key(key) {}

    QStringList findings();

private:
    /// A key that was reached, from the one at `parent` among those that were reached before.
    struct reached_key
    {
        hive_node_h node;
        QByteArray name;
        size_t parent;
        int level;
        qint64 cost_of_repeating; ///< in each row of its values
    };

    void survey_all();
    QStringList findings_of_named_keys();
    qint64 cost_of_icons() const;
    bool reach_start();
    std::optional<hive_node_h> subkey_named(hive_node_h parent, const QByteArray &wanted);
    void survey(size_t position);
    void survey_values(size_t position);
    void survey_value(hive_value_h value, const char *name, const reached_key &key);
    void survey_subkeys(size_t position);
    qint64 cost_of_repeating_below(size_t position, const char *name) const;
    QString path_of(size_t position) const;

    checked_hive &m_hive;
    const listed_key &m_key;
    QString m_hidden; ///< why the key itself cannot be found; empty when it can, or is absent
    unlisted_places m_refused;
    unlisted_places m_partly_read;
    std::vector<reached_key> m_keys;
    QSet<hive_node_h> m_seen;
    bool m_is_any_key_repeated = false;
    QList<QByteArray> m_names_of_keys; ///< the values' own, when they name keys
    qint64 m_value_count = 0;
    qint64 m_data_length = 0; ///< of all values
};

QStringList key_survey::findings()
{
    survey_all();
    if (m_hive.is_exhausted())
        return {
            u"%1 lists more than a hive of this size can hold, so part of it may not be read"_s.arg(
                shown(m_key.key_path))};
    QStringList findings;
    if (!m_hidden.isEmpty())
        findings.append(m_hidden);
    m_refused.append_to(findings, " cannot be listed, so it is not read"_L1);
    if (m_is_any_key_repeated)
        findings.append(
            u"%1 lists a key more than once, so part of it may not be read"_s.arg(m_key.key_path));
    m_partly_read.append_to(findings, " holds names that cannot be read, so part is not read"_L1);
    return findings + findings_of_named_keys();
}

void key_survey::survey_all()
{
    m_hive.begin_walk();
    if (!reach_start())
        return;
    for (size_t position = 0; position < m_keys.size(); ++position)
        survey(position);
}

/// Each named key is a walk of its own, which the plug-in limits together as well. Of those that
/// cannot be listed the first is told.
QStringList key_survey::findings_of_named_keys()
{
    using namespace walk_limits;
    qint64 left = std::max(least_icon_budget, icon_budget_in_hive_lengths * m_hive.length());
    QStringList findings;
    for (const QByteArray &name : std::as_const(m_names_of_keys)) {
        const listed_key named{m_key.key_of_named_keys + u'\\' + QString::fromUtf8(name), 0, 0};
        key_survey survey(m_hive, named);
        const QStringList found = survey.findings();
        if (m_hive.is_exhausted())
            return findings + found;
        if (findings.isEmpty())
            findings = found;
        left -= m_hive.length() / icon_walks_per_hive_length + survey.cost_of_icons();
        if (left < 0)
            return findings
                   << u"%1 lists more icons than are looked up, so the last of them may not be read"_s
                          .arg(m_key.key_path);
    }
    return findings;
}

/// What the walk cost and the rows of its values cost.
qint64 key_survey::cost_of_icons() const
{
    return m_hive.cost_of_walk() + m_value_count * walk_limits::cost_of_an_icon +
           m_data_length * walk_limits::cost_of_a_letter;
}

bool key_survey::reach_start()
{
    hive_node_h key = m_hive.root();
    QString parent = u"the root key"_s;
    const QStringList names = m_key.key_path.split(u'\\', Qt::SkipEmptyParts);
    for (qsizetype i = 0; i < names.size(); ++i) {
        const auto subkey = subkey_named(key, names[i].toUtf8());
        if (!subkey)
            m_hidden = u"the keys in %1 cannot be listed, so %2 is not read"_s.arg(
                shown(parent), shown(m_key.key_path));
        key = subkey.value_or(0);
        if (key == 0) {
            m_hive.spend_refusals(names.size() - i); // the plug-in goes on without a key
            break;
        }
        parent = names[i];
    }
    if (m_key.first_value_level == 0)
        m_hive.key_name(key); // which the plug-in reads as well
    if (key == 0)
        return false;
    m_keys.push_back({key, {}, 0, 0, 0});
    return true;
}

/// 0 when there is none, and nothing when the list, or a name before it, keeps it from being found.
std::optional<hive_node_h> key_survey::subkey_named(hive_node_h parent, const QByteArray &wanted)
{
    const auto subkeys = m_hive.subkeys(parent);
    if (!subkeys)
        return std::nullopt;
    for (const hive_node_h key : *subkeys) {
        const auto name = m_hive.key_name(key);
        if (name == nullptr)
            return std::nullopt;
        if (qstricmp(name.get(), wanted.constData()) == 0)
            return key;
    }
    return 0;
}

void key_survey::survey(size_t position)
{
    const hive_node_h node = m_keys[position].node;
    const int level = m_keys[position].level;
    if (m_seen.contains(node)) {
        m_is_any_key_repeated = true;
        return;
    }
    m_seen.insert(node);
    if (level >= m_key.first_value_level)
        survey_values(position);
    if (level < m_key.last_level)
        survey_subkeys(position);
}

void key_survey::survey_values(size_t position)
{
    const auto values = m_hive.values(m_keys[position].node);
    if (!values)
        return m_refused.add(path_of(position));
    for (const hive_value_h value : *values) {
        const auto name = m_hive.value_name(value);
        if (name == nullptr)
            return m_partly_read.add(path_of(position));
        survey_value(value, name.get(), m_keys[position]);
    }
}

void key_survey::survey_value(hive_value_h value, const char *name, const reached_key &key)
{
    ++m_value_count;
    m_data_length += m_hive.data_length(value);
    m_hive.spend(key.cost_of_repeating);
    if (m_key.repeated == listed_key::repetition::further_drives)
        m_hive.spend(cost_of_further_drives(name));
    if (!m_key.key_of_named_keys.isEmpty())
        m_names_of_keys.append(name);
}

void key_survey::survey_subkeys(size_t position)
{
    const auto subkeys = m_hive.subkeys(m_keys[position].node);
    if (!subkeys)
        return m_refused.add(path_of(position));
    bool is_whole = true;
    for (const hive_node_h subkey : *subkeys) {
        if (const auto name = m_hive.key_name(subkey))
            m_keys.push_back({subkey, name.get(), position, m_keys[position].level + 1,
                              cost_of_repeating_below(position, name.get())});
        else
            is_whole = false;
    }
    if (!is_whole)
        m_partly_read.add(path_of(position));
}

/// Of the key of that name below the one at `position`.
qint64 key_survey::cost_of_repeating_below(size_t position, const char *name) const
{
    if (m_key.repeated != listed_key::repetition::first_key)
        return 0;
    const reached_key &parent = m_keys[position];
    return parent.level == 0 ? cost_of_repeating(QString::fromUtf8(name))
                             : parent.cost_of_repeating;
}

QString key_survey::path_of(size_t position) const
{
    constexpr int deepest_level_told = 8; // only a forged hive goes on
    QString path;
    for (; m_keys[position].level > 0; position = m_keys[position].parent) {
        if (m_keys[position].level <= deepest_level_told)
            path.prepend(u'\\' + QString::fromUtf8(m_keys[position].name));
    }
    return shown(path.prepend(m_key.key_path));
}

} // namespace

bool opens_as_hive(const QString &hive_file)
{
    return checked_hive(hive_file).is_open();
}

QStringList key_findings(const QString &hive_file, const QList<listed_key> &keys)
{
    checked_hive hive(hive_file);
    if (!hive.is_open())
        return {u"cannot be opened as a registry hive, so it is not read"_s};
    QStringList findings;
    for (const listed_key &key : keys)
        findings += key_survey(hive, key).findings();
    findings.removeDuplicates();
    return findings;
}
