#include "rebuilt_hive.h"

#include "rebuilt_hive_writer.h"

using namespace Qt::StringLiterals;

namespace {

QString folded(const QStringList &path)
{
    return path.join(u'\\').toCaseFolded();
}

} // namespace

rebuilt_hive::rebuilt_hive()
{
    key root;
    root.name = u"ROOT"_s;
    m_keys.push_back(root);
}

size_t rebuilt_hive::key_at(const QStringList &path)
{
    size_t number = 0;
    QStringList names;
    for (const QString &name : path) {
        names.append(name);
        const QString wanted = folded(names);
        if (const auto known = m_by_path.constFind(wanted); known != m_by_path.cend()) {
            number = *known;
            continue;
        }
        key made;
        made.name = name;
        made.parent = number;
        m_keys.push_back(made);
        m_keys[number].subkeys.push_back(m_keys.size() - 1);
        number = m_keys.size() - 1;
        m_by_path.insert(wanted, number);
    }
    return number;
}

void rebuilt_hive::add_key(const QStringList &path, quint64 last_write)
{
    m_keys[key_at(path)].last_write = last_write;
}

void rebuilt_hive::add_value(const QStringList &path, const QString &name, quint32 type,
                             const QByteArray &data)
{
    m_keys[key_at(path)].values.push_back({name, type, data});
}

bool rebuilt_hive::has_key(const QStringList &path) const
{
    return m_by_path.contains(folded(path));
}

QByteArray rebuilt_hive::bytes() const
{
    return rebuilt_hive_writer(m_keys).bytes();
}
