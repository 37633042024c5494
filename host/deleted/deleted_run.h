#ifndef DELETED_RUN_H
#define DELETED_RUN_H

#include <QHash>
#include <QString>

#include <functional>

#include "deleted_outcome.h"
#include "extraction_run.h"
#include "result_location.h"
#include "source_volume.h"

/// Looks for deleted records in the hives, which are given by their paths relative to the volume
/// and by their accounts (none for the machine's), and makes a database of them at the location's
/// place, in which the plug-in's own tables have the rows that it makes of records that are whole
/// enough. An earlier database goes if the plan does not keep rows. The result's own database, and
/// the evidence, are not touched.
deleted_outcome recover_deleted(artifact_plugin &plugin, const extraction_plan &plan,
                                const result_location &location, const source_volume &volume,
                                const QHash<QString, QString> &accounts_by_hive,
                                const std::function<void()> &tell_search);

#endif
