#include "key_check.h"

#include <QSet>

#include <utility>
#include <vector>

#include "checked_hive.h"

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
    };

    bool reach_start();
    std::optional<hive_node_h> subkey_named(hive_node_h parent, const QByteArray &wanted);
    void survey(size_t position);
    void survey_values(size_t position);
    void survey_subkeys(size_t position);
    QString path_of(size_t position) const;

    checked_hive &m_hive;
    const listed_key &m_key;
    QString m_hidden; ///< why the key itself cannot be found; empty when it can, or is absent
    unlisted_places m_refused;
    unlisted_places m_partly_read;
    std::vector<reached_key> m_keys;
    QSet<hive_node_h> m_seen;
    bool m_is_any_key_repeated = false;
    qint64 m_value_count = 0;
};

QStringList key_survey::findings()
{
    m_hive.begin_walk();
    if (reach_start()) {
        for (size_t position = 0; position < m_keys.size(); ++position)
            survey(position);
    }
    if (m_hive.is_exhausted())
        return {
            u"%1 lists more than a hive of this size can hold, so part of it may not be read"_s.arg(
                m_key.key_path)};
    QStringList findings;
    if (!m_hidden.isEmpty())
        findings.append(m_hidden);
    m_refused.append_to(findings, " cannot be listed, so it is not read"_L1);
    if (m_is_any_key_repeated)
        findings.append(
            u"%1 lists a key more than once, so part of it may not be read"_s.arg(m_key.key_path));
    if (m_value_count > m_key.most_values)
        findings.append(u"%1 lists %2 values, so the last of them may not be read"_s.arg(
            m_key.key_path, QString::number(m_value_count)));
    m_partly_read.append_to(findings, " holds names that cannot be read, so part is not read"_L1);
    return findings;
}

bool key_survey::reach_start()
{
    hive_node_h key = m_hive.root();
    QString parent = u"the root key"_s;
    for (const QString &name : m_key.key_path.split(u'\\')) {
        const auto subkey = subkey_named(key, name.toUtf8());
        if (!subkey)
            m_hidden =
                u"the keys in %1 cannot be listed, so %2 is not read"_s.arg(parent, m_key.key_path);
        if (!subkey || *subkey == 0)
            return false;
        key = *subkey;
        parent = name;
    }
    m_keys.push_back({key, {}, 0, 0});
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
    m_value_count += values->size();
    for (const hive_value_h value : *values) {
        if (m_hive.value_name(value) == nullptr)
            return m_partly_read.add(path_of(position));
    }
}

void key_survey::survey_subkeys(size_t position)
{
    const auto subkeys = m_hive.subkeys(m_keys[position].node);
    if (!subkeys)
        return m_refused.add(path_of(position));
    bool is_whole = true;
    for (const hive_node_h subkey : *subkeys) {
        if (const auto name = m_hive.key_name(subkey))
            m_keys.push_back({subkey, name.get(), position, m_keys[position].level + 1});
        else
            is_whole = false;
    }
    if (!is_whole)
        m_partly_read.add(path_of(position));
}

/// Cut where only a forged hive goes on.
QString key_survey::path_of(size_t position) const
{
    constexpr int deepest_level_told = 8;
    constexpr qsizetype longest_path = 500;
    QString path;
    for (; m_keys[position].level > 0; position = m_keys[position].parent) {
        if (m_keys[position].level <= deepest_level_told)
            path.prepend(u'\\' + QString::fromUtf8(m_keys[position].name));
    }
    path.prepend(m_key.key_path);
    return path.size() > longest_path ? path.left(longest_path) + u'…' : path;
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
