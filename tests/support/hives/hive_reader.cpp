#include "hive_reader.h"

#include <QFile>
#include <cstdlib>
#include <cstring>

namespace test_support {

namespace {

constexpr int open_for_writing = 4;

struct freed
{
    void operator()(void *memory) const { std::free(memory); }
};

QString taken_text(char *text)
{
    const std::unique_ptr<char, freed> owned(text);
    return QString::fromUtf8(text);
}

// A list of handles that ends with 0.
QList<size_t> taken_list(size_t *handles)
{
    const std::unique_ptr<size_t, freed> owned(handles);
    QList<size_t> list;
    for (const size_t *handle = handles; handle != nullptr && *handle != 0; ++handle)
        list.append(*handle);
    return list;
}

// The number in the enumeration's place, which a hive may fill with what is no enumerator.
quint32 number_of(const hive_type &type)
{
    quint32 number = 0;
    static_assert(sizeof number == sizeof type);
    std::memcpy(&number, &type, sizeof number);
    return number;
}

} // namespace

hive_reader::hive_reader(const QString &path)
    : m_hive(hivex_open(QFile::encodeName(path).constData(), open_for_writing), hivex_close)
{
}

size_t hive_reader::node(const QString &path) const
{
    if (!is_open())
        return 0;
    size_t found = hivex_root(m_hive.get());
    const QStringList parts = path.split(u'\\', Qt::SkipEmptyParts);
    for (const QString &part : parts)
        found = hivex_node_get_child(m_hive.get(), found, part.toUtf8().constData());
    return found;
}

QList<size_t> hive_reader::subkey_nodes(size_t node) const
{
    return is_open() ? taken_list(hivex_node_children(m_hive.get(), node)) : QList<size_t>();
}

QString hive_reader::name(size_t node) const
{
    return taken_text(hivex_node_name(m_hive.get(), node));
}

QStringList hive_reader::subkeys(const QString &path) const
{
    QStringList names;
    const QList<size_t> nodes = subkey_nodes(node(path));
    for (const size_t child : nodes)
        names.append(name(child));
    return names;
}

QList<size_t> hive_reader::value_handles(size_t node) const
{
    return is_open() ? taken_list(hivex_node_values(m_hive.get(), node)) : QList<size_t>();
}

QList<read_value> hive_reader::values(const QString &path) const
{
    QList<read_value> values;
    const QList<size_t> handles = value_handles(node(path));
    for (const size_t handle : handles)
        values.append(value(handle));
    return values;
}

read_value hive_reader::value(size_t handle) const
{
    hive_type type = hive_t_REG_NONE;
    size_t size = 0;
    const std::unique_ptr<char, freed> data(hivex_value_value(m_hive.get(), handle, &type, &size));
    return {taken_text(hivex_value_key(m_hive.get(), handle)), number_of(type),
            data ? QByteArray(data.get(), static_cast<qsizetype>(size)) : QByteArray()};
}

qint64 hive_reader::last_write(const QString &path) const
{
    return is_open() ? hivex_node_timestamp(m_hive.get(), node(path)) : -1;
}

} // namespace test_support
