#include "volume_sizes.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

struct named_scenario
{
    QString name;
    volume_sizes sizes;
};

const QList<named_scenario> &scenarios()
{
    static const QList<named_scenario> list{
        // Shows what a program takes when there is nothing to read.
        {u"empty"_s, {}},
        {u"small"_s, {10, 10, 1000, 1000, 1000, 1000, 2, 1, 1000, 20, 50, 1000}},
        {u"medium"_s, {100, 50, 10000, 10000, 10000, 10000, 5, 1, 10000, 20, 500, 10000}},
        // The same rows in the shortest hives that hold them.
        {u"dense"_s, {30, 10, 10000, 10000, 10000, 10000, 5, 1, 10000, 20, 500, 10000}},
        {u"typical"_s, {100, 5, 200, 100, 50, 300, 2, 20, 100, 10, 1, 100}},
        // Almost as many subkeys and values of one key as libhivex lists: 70,000 and 110,000.
        {u"largest"_s, {300, 50, 65000, 5000, 10000, 100000, 1, 20, 10000, 20, 1, 1000}},
        // Icons alone, each with one name.
        {u"icons"_s, {1, 5, 0, 0, 0, 0, 1, 1, 0, 200, 1, 0}},
        {u"packages"_s, {1, 1, 0, 0, 0, 0, 1, 1, 0, 0, 1, 100000}},
    };
    return list;
}

} // namespace

const QList<named_size> &named_sizes()
{
    static const QList<named_size> list{
        {u"software-megabytes"_s, &volume_sizes::software_megabytes},
        {u"user-megabytes"_s, &volume_sizes::user_megabytes},
        {u"applications-64"_s, &volume_sizes::applications_64},
        {u"applications-32"_s, &volume_sizes::applications_32},
        {u"registered"_s, &volume_sizes::registered},
        {u"user-assist"_s, &volume_sizes::user_assist},
        {u"class-ids"_s, &volume_sizes::class_ids},
        {u"uninstall-every"_s, &volume_sizes::uninstall_every},
        {u"store"_s, &volume_sizes::store},
        {u"hidden-icons"_s, &volume_sizes::hidden_icons},
        {u"names-per-icon"_s, &volume_sizes::names_per_icon},
        {u"packages"_s, &volume_sizes::packages},
    };
    return list;
}

QStringList scenario_names()
{
    QStringList names;
    for (const named_scenario &known : scenarios())
        names.append(known.name);
    return names;
}

std::optional<volume_sizes> scenario(const QString &name)
{
    const auto found =
        std::find_if(scenarios().begin(), scenarios().end(),
                     [&name](const named_scenario &known) { return known.name == name; });
    return found == scenarios().end() ? std::nullopt : std::make_optional(found->sizes);
}
