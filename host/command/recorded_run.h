#ifndef RECORDED_RUN_H
#define RECORDED_RUN_H

#include "command_line.h"
#include "extraction_run.h"
#include "finding.h"
#include "host_tabs.h"
#include "plugin_library.h"
#include "result_location.h"
#include "source_volume.h"

/// What the examiner asked for, checked against the volume and the machine.
struct prepared_run
{
    extraction_plan plan;
    result_location location;
    QList<host_tab> tabs;
    QString software_hive;         ///< the one to read, or its backup; empty if no tab reads it
    QList<finding> shown_findings; ///< those that the examiner has been told
    QList<finding> findings;       ///< about what was chosen
    QList<finding> hive_findings;  ///< about the hives, as they lie in the evidence
    QList<finding> passed_over;

    /// All that the examiner has not been told yet.
    QList<finding> new_findings() const { return findings + hive_findings + passed_over; }
};

/// Makes the run while no other one writes to the result folder, and keeps the folder's run record:
/// decides what becomes of earlier results, extracts, and reports. A run that is refused leaves
/// earlier results and their record as they are.
exit_code make_recorded_run(const loaded_plugin &plugin, const prepared_run &run,
                            const source_volume &volume, const extract_options &options);

#endif
