#include "key_check.h"

#include <QSet>

#include <optional>
#include <vector>

#include "guarded_hive.h"

using namespace Qt::StringLiterals;

namespace {

/// Places of which something cannot be listed. The first is named, the others are counted.
class unlisted_places
{
public:
    /// `place` returns the path; it is called for the first place only.
    template<typename function>
    void add(function place)
    {
        if (m_count++ == 0)
            m_first = place();
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

/// Cut at a length that only forged hives reach.
QString shown(const QString &path)
{
    constexpr qsizetype longest_path = 500;
    return path.size() > longest_path ? path.left(longest_path) + u'…' : path;
}

/// Lists one key as the plug-in does and notes what cannot be listed.
class key_survey
{
public:
    key_survey(guarded_hive &hive, const listed_key &key) : m_hive(hive), m_key(key) {}

    QStringList findings();

private:
    /// A key that was reached, from the key at `parent` in the list of those reached before.
    struct reached_key
    {
        unsigned long node;
        QByteArray name;
        size_t parent;
        int level;
    };

    unsigned long start_key();
    std::optional<unsigned long> subkey_named(unsigned long parent, const QByteArray &wanted);
    void survey(size_t position);
    void survey_values(size_t position);
    void survey_subkeys(size_t position);
    void note_refused(size_t position);
    QString path_of(size_t position) const;

    guarded_hive &m_hive;
    const listed_key &m_key;
    QString m_hidden; ///< why the key itself cannot be found; empty when it can, or is absent
    unlisted_places m_refused;
    unlisted_places m_partly_read;
    std::vector<reached_key> m_keys;
    QSet<unsigned long> m_seen;
    bool m_is_any_key_repeated = false;
};

QStringList key_survey::findings()
{
    m_hive.begin_walk();
    if (const unsigned long start = start_key(); start != 0)
        m_keys.push_back({start, {}, 0, 0});
    for (size_t position = 0; position < m_keys.size() && !m_hive.is_walk_over(); ++position)
        survey(position);
    QStringList findings;
    if (!m_hidden.isEmpty())
        findings.append(m_hidden);
    m_refused.append_to(findings, " cannot be listed, so it is not read"_L1);
    if (m_is_any_key_repeated)
        findings.append(
            u"%1 lists a key more than once, so part of it may not be read"_s.arg(m_key.key_path));
    m_partly_read.append_to(findings, " holds names that cannot be read, so part is not read"_L1);
    return findings;
}

/// 0 when there is none, or when it cannot be found.
unsigned long key_survey::start_key()
{
    unsigned long key = m_hive.root();
    QString parent = u"the root key"_s;
    for (const QString &name : m_key.key_path.split(u'\\', Qt::SkipEmptyParts)) {
        const auto subkey = subkey_named(key, name.toUtf8());
        if (!subkey && !m_hive.is_walk_over())
            m_hidden = u"the keys in %1 cannot be listed, so %2 is not read"_s.arg(
                shown(parent), shown(m_key.key_path));
        key = subkey.value_or(0);
        if (key == 0)
            return 0;
        parent = name;
    }
    return key;
}

/// 0 when there is none. Nothing when it cannot be found because the list, or a name before it,
/// cannot be read.
std::optional<unsigned long> key_survey::subkey_named(unsigned long parent,
                                                      const QByteArray &wanted)
{
    const hivex_handles subkeys = m_hive.subkeys(parent);
    if (!subkeys)
        return std::nullopt;
    for (const size_t key : entries_of(subkeys)) {
        const hivex_text name = m_hive.key_name(key);
        if (!name)
            return std::nullopt;
        if (qstricmp(name.get(), wanted.constData()) == 0)
            return key;
    }
    return 0;
}

void key_survey::survey(size_t position)
{
    const unsigned long node = m_keys[position].node;
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
    const hivex_handles values = m_hive.values(m_keys[position].node);
    if (!values)
        return note_refused(position);
    for (const size_t value : entries_of(values)) {
        if (m_hive.value_name(value) || m_hive.is_walk_over())
            continue;
        return m_partly_read.add([&] { return path_of(position); });
    }
}

void key_survey::survey_subkeys(size_t position)
{
    const hivex_handles subkeys = m_hive.subkeys(m_keys[position].node);
    if (!subkeys)
        return note_refused(position);
    bool is_whole = true;
    for (const size_t subkey : entries_of(subkeys)) {
        if (const hivex_text name = m_hive.key_name(subkey))
            m_keys.push_back({subkey, name.get(), position, m_keys[position].level + 1});
        else
            is_whole = m_hive.is_walk_over();
    }
    if (!is_whole)
        m_partly_read.add([&] { return path_of(position); });
}

/// A list that was not read because the walk had ended is not counted as refused.
void key_survey::note_refused(size_t position)
{
    if (!m_hive.is_walk_over())
        m_refused.add([&] { return path_of(position); });
}

QString key_survey::path_of(size_t position) const
{
    constexpr int deepest_level_told = 8; // only forged hives have more
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
    return guarded_hive().open(hive_file);
}

QStringList key_findings(const QString &hive_file, const QList<listed_key> &keys)
{
    guarded_hive hive;
    if (!hive.open(hive_file))
        return {u"cannot be opened as a registry hive, so it is not read"_s};
    QStringList findings;
    for (const listed_key &key : keys)
        findings += key_survey(hive, key).findings();
    findings.removeDuplicates();
    return findings;
}
