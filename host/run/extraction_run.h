#ifndef EXTRACTION_RUN_H
#define EXTRACTION_RUN_H

#include <QString>
#include <QStringList>

#include <functional>

#include "artifact_plugin_interface.h"
#include "progress_display.h"
#include "reading_options.h"

/// All that a run needs to know, already checked.
struct extraction_plan
{
    QString source_root; ///< absolute, ending in "/"
    QStringList accounts;
    QStringList tabs;
    QString result_directory;
    QString debug_log; ///< an existing file, or empty for none
    bool keep_rows = false;
    reading_options options;
};

/// How a run went, as far as the plug-in told.
struct run_outcome
{
    qint64 rows_written = 0;
    bool cancelled = false;
    qint64 failures = 0;    ///< failures that the plug-in logged
    QString first_failure;  ///< what the first of them said
    QStringList early_ends; ///< one text for each place where it left something out
};

/// Drives the plug-in object through one extraction, from the settings to the removal of its
/// temporary files. Calls `on_tables_made` when the plug-in has made its result database. Returns
/// when the extraction has ended; Ctrl-C cancels it.
run_outcome run_extraction(artifact_plugin &plugin, const extraction_plan &plan,
                           progress_style style, const std::function<void()> &on_tables_made);

#endif
