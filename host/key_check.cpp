#include "key_check.h"

#include <QFile>

#include <cstdlib>
#include <hivex.h>
#include <memory>

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
using key_name = std::unique_ptr<char, memory_freer>;

/// Writable in memory only: libhivex then reads the file instead of mapping it, so that a bad
/// sector of the evidence is an error and not a SIGBUS.
hive_handle open_hive(const QString &hive_file)
{
    return hive_handle(hivex_open(QFile::encodeName(hive_file).constData(), HIVEX_OPEN_WRITE));
}

bool are_keys_listable(hive_h *hive, hive_node_h parent)
{
    const node_list keys(hivex_node_children(hive, parent));
    if (keys == nullptr)
        return false;
    for (const hive_node_h *key = keys.get(); *key != 0; ++key) {
        if (key_name(hivex_node_name(hive, *key)) == nullptr)
            return false;
    }
    return true;
}

bool are_values_listable(hive_h *hive, hive_node_h key)
{
    return value_list(hivex_node_values(hive, key)) != nullptr;
}

/// What hides the key at `key_path`, or an empty text.
QString key_finding(hive_h *hive, const QString &key_path)
{
    hive_node_h key = hivex_root(hive);
    QString place = u"the root key"_s;
    for (const QString &name : key_path.split(u'\\')) {
        const hive_node_h child = hivex_node_get_child(hive, key, name.toUtf8().constData());
        if (child == 0)
            return are_keys_listable(hive, key)
                       ? QString()
                       : u"the keys in %1 cannot be listed, so %2 is not read"_s.arg(place,
                                                                                     key_path);
        key = child;
        place = name;
    }
    return are_keys_listable(hive, key) && are_values_listable(hive, key)
               ? QString()
               : u"the content of %1 cannot be listed, so it is not read"_s.arg(key_path);
}

} // namespace

bool opens_as_hive(const QString &hive_file)
{
    return open_hive(hive_file) != nullptr;
}

QStringList key_findings(const QString &hive_file, const QStringList &key_paths)
{
    const hive_handle hive = open_hive(hive_file);
    if (hive == nullptr)
        return {u"cannot be opened as a registry hive, so it is not read"_s};
    QStringList findings;
    for (const QString &key_path : key_paths) {
        const QString finding = key_finding(hive.get(), key_path);
        if (!finding.isEmpty())
            findings.append(finding);
    }
    findings.removeDuplicates();
    return findings;
}
