#ifndef RECORD_ENTRY_H
#define RECORD_ENTRY_H

#include <QDateTime>
#include <QJsonObject>

#include <optional>

#include "deleted_outcome.h"
#include "earlier_results.h"
#include "finding.h"
#include "read_files.h"
#include "recorded_run.h"
#include "replayed_hives.h"
#include "run_report.h"

/// What a run record tells of a run, besides what was asked for.
struct recorded_facts
{
    result_mode mode;
    QDateTime begin;
    QList<read_file> files;
    QList<listed_folder> folders;
    QList<replayed_hive> replayed;
    std::optional<deleted_outcome> deleted; ///< if it was asked for and came to it
};

/// The entry of a run that is about to begin, with the outcome "running".
QJsonObject entry_of_begun_run(const loaded_plugin &plugin, const prepared_run &run,
                               const extract_options &options, const recorded_facts &facts);

/// The same entry of a run that has ended.
QJsonObject entry_of_ended_run(QJsonObject entry, const finished_run &run,
                               const recorded_facts &facts, const QList<finding> &findings,
                               exit_code code);

/// The same entry of a run that is refused after all.
QJsonObject entry_of_refused_run(QJsonObject entry, const refusal &refused);

/// The version that the plug-in tells of itself; empty if it tells none.
QString version_of(const artifact_plugin &plugin);

#endif
