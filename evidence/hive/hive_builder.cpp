#include "hive_builder.h"

#include "files.h"
#include "hive_layout.h"

namespace evidence {

using namespace Qt::StringLiterals;

hive_builder::hive_builder()
{
    m_keys.push_back(hive_key(m_keys, nullptr, u"ROOT"_s));
}

hive_builder &hive_builder::minor_version(quint32 version)
{
    m_minor_version = version;
    return *this;
}

hive_builder &hive_builder::sort_subkeys()
{
    for (hive_key &key : m_keys)
        key.sort_subkeys();
    return *this;
}

QByteArray hive_builder::bytes()
{
    return hive_layout(m_minor_version).bytes(m_keys);
}

void hive_builder::write_to(const QString &path)
{
    write_file(path, bytes());
}

} // namespace evidence
