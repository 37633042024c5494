#include "artifact_list.h"

#include "artifact_constants.h"

#include <QVariantMap>
#include <initializer_list>
#include <iterator>

using namespace Qt::StringLiterals;

namespace {

// A host keeps the texts longer than the library may be loaded: none of them refers to its data, as
// a QString literal would.

QString input_name(artifact_input input)
{
    switch (input) {
    case artifact_input::software_hive:
        return "software_hive"_L1;
    case artifact_input::user_hives:
        return "user_hives"_L1;
    case artifact_input::package_folders:
        return "package_folders"_L1;
    }
    return {};
}

/// Walkers ignore backslashes at the ends of a path; hosts need not know that.
QString plain_path(QLatin1StringView path)
{
    if (path.startsWith('\\'_L1))
        path = path.mid(1);
    if (path.endsWith('\\'_L1))
        path.chop(1);
    return path;
}

QVariantList described_keys(std::initializer_list<listed_registry_key> described)
{
    QVariantList keys;
    for (const listed_registry_key &key : described) {
        if (!key.path.isEmpty())
            keys.append(QVariantMap{{"path"_L1, plain_path(key.path)},
                                    {"first_value_level"_L1, key.first_value_level},
                                    {"last_level"_L1, key.last_level}});
    }
    return keys;
}

} // namespace

const QList<const artifact *> &artifact_list()
{
    static const QList<const artifact *> artifacts(std::begin(every_artifact),
                                                   std::end(every_artifact));
    return artifacts;
}

QVariantList described_artifacts()
{
    QVariantList descriptions;
    for (const artifact *described : artifact_list())
        descriptions.append(
            QVariantMap{{"name"_L1, QString(described->table.name)},
                        {"input"_L1, input_name(described->input)},
                        {"keys"_L1, described_keys({described->key, described->further_key})},
                        {"keys_of_users"_L1, described_keys({described->of_users.key})}});
    return descriptions;
}
