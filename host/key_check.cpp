#include "key_check.h"

#include <QFile>
#include <QFileInfo>

#include <cstdlib>
#include <hivex.h>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

struct hive_closer
{
    void operator()(hive_h *hive) const { hivex_close(hive); }
};
struct memory_freer
{
    void operator()(void *memory) const { std::free(memory); }
};

using hive_handle = std::unique_ptr<hive_h, hive_closer>;
using node_list = std::unique_ptr<hive_node_h, memory_freer>;
using value_list = std::unique_ptr<hive_value_h, memory_freer>;
using name_text = std::unique_ptr<char, memory_freer>;

/// A hive, asked for no key whose record would leave the file: libhivex itself reads on beyond it.
class open_hive
{
public:
    /// Writable in memory only: libhivex then reads the file instead of mapping it, so that a bad
    /// sector of the evidence is an error and not a SIGBUS.
    explicit open_hive(const QString &hive_file)
        : m_handle(hivex_open(QFile::encodeName(hive_file).constData(), HIVEX_OPEN_WRITE)),
          m_length(static_cast<quint64>(QFileInfo(hive_file).size()))
    {
    }

    explicit operator bool() const { return m_handle != nullptr; }

    hive_node_h root() const { return hivex_root(m_handle.get()); }

    /// The subkey of that name, 0 when there is none, and nothing when an entry of the list, or the
    /// list itself, keeps it from being found.
    std::optional<hive_node_h> subkey(hive_node_h parent, const QByteArray &wanted) const
    {
        return first_subkey(parent, [&wanted](const char *name) {
            return qstricmp(name, wanted.constData()) == 0;
        });
    }

    bool are_subkeys_listable(hive_node_h parent) const
    {
        return first_subkey(parent, [](const char *) { return false; }).has_value();
    }

    bool are_values_listable(hive_node_h key) const
    {
        return holds_record(key) && value_list(hivex_node_values(m_handle.get(), key)) != nullptr;
    }

private:
    /// The fixed part of a key's record (nk), up to the name at offset 0x50.
    bool holds_record(hive_node_h key) const
    {
        constexpr quint64 record_length = 0x50;
        return key + record_length <= m_length;
    }

    template<typename condition>
    std::optional<hive_node_h> first_subkey(hive_node_h parent, condition is_wanted) const
    {
        const node_list keys(holds_record(parent) ? hivex_node_children(m_handle.get(), parent)
                                                  : nullptr);
        if (keys == nullptr)
            return std::nullopt;
        for (const hive_node_h *key = keys.get(); *key != 0; ++key) {
            const name_text name(holds_record(*key) ? hivex_node_name(m_handle.get(), *key)
                                                    : nullptr);
            if (name == nullptr)
                return std::nullopt;
            if (is_wanted(name.get()))
                return *key;
        }
        return 0;
    }

    hive_handle m_handle;
    quint64 m_length;
};

/// What hides the key at `key_path`, or an empty text.
QString key_finding(const open_hive &hive, const QString &key_path)
{
    hive_node_h key = hive.root();
    QString place = u"the root key"_s;
    for (const QString &name : key_path.split(u'\\')) {
        const std::optional<hive_node_h> subkey = hive.subkey(key, name.toUtf8());
        if (!subkey)
            return u"the keys in %1 cannot be listed, so %2 is not read"_s.arg(place, key_path);
        if (*subkey == 0)
            return {};
        key = *subkey;
        place = name;
    }
    return hive.are_subkeys_listable(key) && hive.are_values_listable(key)
               ? QString()
               : u"the content of %1 cannot be listed, so it is not read"_s.arg(key_path);
}

} // namespace

bool opens_as_hive(const QString &hive_file)
{
    return bool(open_hive(hive_file));
}

QStringList key_findings(const QString &hive_file, const QStringList &key_paths)
{
    const open_hive hive(hive_file);
    if (!hive)
        return {u"cannot be opened as a registry hive, so it is not read"_s};
    QStringList findings;
    for (const QString &key_path : key_paths) {
        const QString finding = key_finding(hive, key_path);
        if (!finding.isEmpty())
            findings.append(finding);
    }
    findings.removeDuplicates();
    return findings;
}
