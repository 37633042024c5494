#include "hive_walks.h"

#include "application_keys.h"
#include "artifact_list.h"
#include "parse_hidden_desktop_icons.h"
#include "parse_installed_applications.h"
#include "parse_user_assist.h"

namespace test_support {

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

struct key_walk
{
    QString key_path;
    bool read_key_values;
};

template<typename walker_type>
qsizetype record_count_of(const QString &hive_path, const QList<key_walk> &walks)
{
    walker_type walker;
    for (const key_walk &walk : walks)
        walker.start_registry_parse(hive_path, walk.key_path, walk.read_key_values);
    return walker.data_records.size() + walker.installed_apps_records.size() +
           walker.user_assist_records.size() + walker.hidden_icons_records.size();
}

const QList<key_walk> &walks_from_the_root()
{
    static const QList<key_walk> walks{
        {u"\\"_s, false}, {u"\\"_s, true}, {u"no\\such\\key"_s, false}, {u"no\\such\\key"_s, true}};
    return walks;
}

/// The keys of all artefacts, without those that have a walker of their own.
QList<key_walk> walks_of_applications()
{
    const QStringList others{user_assist_key, hide_desktop_icons_key, name_space_key};
    QList<key_walk> walks;
    for (const artifact *described : artifact_list()) {
        const listed_registry_key &key = described->key;
        if (!key.path.isEmpty() && !others.contains(key.path))
            walks.append({key.path, key.has_own_values()});
    }
    return walks;
}

} // namespace

qsizetype walk_hive_in_every_way(const QString &hive_path)
{
    static const QList<key_walk> applications = walks_of_applications();
    static const QList<key_walk> icons{
        {hide_desktop_icons_key, false},
        {name_space_key + u"\\{CEBFF5CD-ACE2-4F4F-9178-9926F41749EA}"_s, true},
        {name_space_key + u'\\', true}};
    static const QList<key_walk> entries{{user_assist_key, false}};
    const QList<key_walk> &root = walks_from_the_root();
    return record_count_of<parse_installed_applications>(hive_path, applications + root) +
           record_count_of<parse_hidden_desktop_icons>(hive_path, icons + root) +
           record_count_of<parse_user_assist>(hive_path, entries + root) +
           record_count_of<registry>(hive_path, root);
}

} // namespace test_support
