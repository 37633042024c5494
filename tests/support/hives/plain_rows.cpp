#include "plain_rows.h"

#include "application_keys.h"

#include <QByteArray>
#include <QFile>
#include <QHash>
#include <QMap>
#include <QtEndian>
#include <cstdlib>
#include <hivex.h>
#include <memory>
#include <stdexcept>
#include <vector>

namespace test_support {

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

struct freed
{
    void operator()(void *memory) const { std::free(memory); }
};

using handles = std::unique_ptr<size_t, freed>;

struct plain_value
{
    QString name;
    QByteArray data;

    /// As the tables show data of any type.
    QString text() const { return QString::fromLocal8Bit(QByteArray(data).replace('\0', "")); }
};

/// A hive through libhivex, with lists that it refuses as empty ones.
class plain_hive
{
public:
    explicit plain_hive(const QString &path)
        : m_hive(hivex_open(QFile::encodeName(path).constData(), 0), hivex_close)
    {
        if (!m_hive)
            throw std::runtime_error("the hive does not open");
    }

    size_t key(const QString &path) const
    {
        size_t node = hivex_root(m_hive.get());
        for (const QString &part : path.split(u'\\', Qt::SkipEmptyParts))
            node =
                node == 0 ? 0 : hivex_node_get_child(m_hive.get(), node, part.toUtf8().constData());
        return node;
    }

    /// By name, in the order of UTF-16 code units.
    QMap<QString, size_t> subkeys(size_t node) const
    {
        QMap<QString, size_t> subkeys;
        for (const size_t subkey : listed(node, hivex_node_children))
            subkeys.insert(text(hivex_node_name(m_hive.get(), subkey)), subkey);
        return subkeys;
    }

    /// The same in the order of the hive.
    QList<size_t> subkeys_as_listed(size_t node) const { return listed(node, hivex_node_children); }

    QList<plain_value> values(size_t node) const
    {
        QList<plain_value> values;
        for (const size_t value : listed(node, hivex_node_values))
            values.append({text(hivex_value_key(m_hive.get(), value)), data(value)});
        return values;
    }

    qint64 unix_seconds(size_t node) const
    {
        return (hivex_node_timestamp(m_hive.get(), node) - 116444736000000000) / 10000000;
    }

private:
    QList<size_t> listed(size_t node, size_t *(*list)(hive_h *, size_t)) const
    {
        const handles found(node == 0 ? nullptr : list(m_hive.get(), node));
        QList<size_t> entries;
        for (const size_t *entry = found.get(); entry != nullptr && *entry != 0; ++entry)
            entries.append(*entry);
        return entries;
    }

    static QString text(char *allocated)
    {
        const std::unique_ptr<char, freed> owned(allocated);
        return QString::fromUtf8(allocated);
    }

    QByteArray data(size_t value) const
    {
        hive_type type; // NOLINT(cppcoreguidelines-init-variables)
        size_t length = 0;
        const std::unique_ptr<char, freed> bytes(
            hivex_value_value(m_hive.get(), value, &type, &length));
        return bytes ? QByteArray(bytes.get(), static_cast<qsizetype>(length)) : QByteArray();
    }

    std::unique_ptr<hive_h, int (*)(hive_h *)> m_hive;
};

QStringList application_rows(const plain_hive &hive, const QString &key)
{
    const QStringList shown{u"DisplayName"_s,     u"DisplayVersion"_s, u"Publisher"_s,
                            u"InstallLocation"_s, u"InstallSource"_s,  u"URLInfoAbout"_s,
                            u"UninstallString"_s};
    QStringList rows;
    const QMap<QString, size_t> applications = hive.subkeys(hive.key(key));
    for (auto application = applications.cbegin(); application != applications.cend();
         ++application) {
        QHash<QString, QString> texts;
        for (const plain_value &value : hive.values(application.value())) {
            if (shown.contains(value.name))
                texts.insert(value.name, value.text());
        }
        QStringList row{application.key()};
        for (const QString &name : shown)
            row.append(texts.value(name));
        rows.append((row << QString::number(hive.unix_seconds(application.value()))).join(u'|'));
    }
    return rows;
}

QString decoded(const QString &name)
{
    QString text;
    for (const QChar character : name) {
        const char16_t code = character.unicode();
        const bool is_upper = code >= u'A' && code <= u'Z';
        const bool is_lower = code >= u'a' && code <= u'z';
        const int first = is_upper ? 'A' : 'a';
        text += is_upper || is_lower ? QChar((code - first + 13) % 26 + first) : character;
    }
    return text.replace(u'\\', u'/');
}

/// The little-endian number of up to `length` bytes from `offset` on.
quint64 number_in(const QByteArray &data, qsizetype offset, qsizetype length)
{
    quint64 number = 0;
    const QByteArray bytes = data.mid(offset, length);
    for (qsizetype i = bytes.size() - 1; i >= 0; --i)
        number = number * 256 + static_cast<quint8>(bytes.at(i));
    return number;
}

QString entry_row(const QString &class_id, const plain_value &entry, qsizetype position)
{
    const quint64 count = number_in(entry.data, 4, 4);
    const quint64 filetime = number_in(entry.data, 60, 8);
    const qint64 seconds =
        filetime == 0 ? 0 : (static_cast<qint64>(filetime) - 116444736000000000) / 10000000;
    return QStringList{class_id, decoded(entry.name), QString::number(position),
                       QString::number(count), QString::number(seconds)}
        .join(u'|');
}

/// The values of all keys below, those of siblings before those of their subkeys.
void append_values_below(const plain_hive &hive, size_t node, QList<plain_value> &values)
{
    std::vector<size_t> pending{node};
    while (!pending.empty()) {
        const size_t next = pending.back();
        pending.pop_back();
        for (const size_t subkey : hive.subkeys_as_listed(next))
            values += hive.values(subkey);
        const QList<size_t> sorted = hive.subkeys(next).values();
        pending.insert(pending.end(), sorted.crbegin(), sorted.crend());
    }
}

QStringList entry_rows(const plain_hive &hive)
{
    QStringList rows;
    qsizetype position = 0;
    const QMap<QString, size_t> class_ids = hive.subkeys(hive.key(user_assist_key));
    for (auto class_id = class_ids.cbegin(); class_id != class_ids.cend(); ++class_id) {
        QList<plain_value> entries;
        for (const size_t subkey : hive.subkeys(class_id.value())) {
            entries += hive.values(subkey);
            append_values_below(hive, subkey, entries);
        }
        for (const plain_value &entry : entries)
            rows.append(entry_row(class_id.key(), entry, position++));
    }
    return rows;
}

QStringList registered_rows(const plain_hive &hive)
{
    QStringList rows;
    for (const plain_value &value : hive.values(hive.key(registered_applications_key)))
        rows.append(value.name + u'|' + value.text());
    return rows;
}

QStringList program_rows(const plain_hive &hive)
{
    QStringList rows;
    for (const plain_value &value : hive.values(hive.key(compatibility_store_key)))
        rows.append(value.name);
    return rows;
}

QStringList icon_rows(const plain_hive &hive)
{
    const size_t name_space = hive.key(name_space_key);
    QHash<QString, size_t> names;
    const QMap<QString, size_t> name_keys = hive.subkeys(name_space);
    for (auto key = name_keys.cbegin(); key != name_keys.cend(); ++key)
        names.insert(key.key(), key.value());
    QStringList rows;
    for (const size_t subkey : hive.subkeys(hive.key(hide_desktop_icons_key))) {
        for (const plain_value &icon : hive.values(subkey)) {
            const QString hidden = number_in(icon.data, 0, 4) == 1 ? u"YES"_s : u"NO"_s;
            for (const plain_value &name : hive.values(names.value(icon.name, 0)))
                rows.append(name.text() + u'|' + hidden);
        }
    }
    return rows;
}

} // namespace

QStringList plain_rows(const QString &table, const QString &hive_path)
{
    const plain_hive hive(hive_path);
    if (table == "install_apps_64"_L1)
        return application_rows(hive, uninstall_key);
    if (table == "install_apps_32"_L1)
        return application_rows(hive, uninstall_key_32);
    if (table == "registered_apps"_L1)
        return registered_rows(hive);
    if (table == "previously_executed_apps"_L1)
        return entry_rows(hive);
    if (table == "third_party_applications"_L1)
        return program_rows(hive);
    if (table == "hidden_desktop_icons_app"_L1)
        return icon_rows(hive);
    throw std::out_of_range("the table is not filled from a hive alone");
}

QString plain_row_expression(const QString &table)
{
    static const QHash<QString, QStringList> columns{
        {u"registered_apps"_s, {u"key_name"_s, u"value"_s}},
        {u"previously_executed_apps"_s,
         {u"class_id"_s, u"exename"_s, u"entry_index"_s, u"runcount"_s, u"lastruntime"_s}},
        {u"third_party_applications"_s, {u"windows_path"_s}},
        {u"hidden_desktop_icons_app"_s, {u"app_name"_s, u"hidden"_s}},
    };
    const QStringList of_applications{
        u"parent_name"_s, u"display_name"_s,     u"display_version"_s,
        u"publisher"_s,   u"install_location"_s, u"install_source"_s,
        u"url"_s,         u"uninstall_string"_s, u"modified_timestamp"_s};
    return columns.value(table, of_applications).join(u" || '|' || "_s);
}

} // namespace test_support
