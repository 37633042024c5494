#ifndef ARTIFACT_LIST_H
#define ARTIFACT_LIST_H

#include "artifact.h"

#include <QList>
#include <QVariantList>

/// All artefacts, in the order in which their tables are created and filled.
const QList<const artifact *> &artifact_list();

/// The same list as hosts get it, in the property "artifacts" of the plug-in object. Each artefact
/// is a QVariantMap of these keys:
/// - "name" (QString): its table, which is also the tab that a host selects;
/// - "input" (QString): "software_hive", "user_hives" or "package_folders";
/// - "keys" (QVariantList): the registry keys that it reads, each a QVariantMap of "path" (QString,
///   from the root of the hive, "\" between keys) and of "first_value_level" and "last_level" (int,
///   see listed_registry_key);
/// - "keys_of_users" (QVariantList): keys of the same form that are read of the users' hives
/// besides
///   if a host asks for the installations of users; mostly none.
QVariantList described_artifacts();

#endif
