#ifndef EXTRACTION_RUN_H
#define EXTRACTION_RUN_H

#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>

#include "artifact_plugin_interface.h"
#include "progress_display.h"
#include "reading_options.h"
#include "tab_watch.h"

/// All that a run needs to know, already checked.
struct extraction_plan
{
    QString source_root; ///< absolute, ending in "/"
    QStringList accounts;
    QStringList tabs;
    QString result_directory;
    QString debug_log; ///< an existing file, or empty for none
    bool keep_rows = false;
    int source_number = 1;
    reading_options options;
    QVariantMap hive_copies; ///< full path of a hive to that of the copy to read in its place
};

/// How a run went, as far as the plug-in told.
struct run_outcome
{
    qint64 rows_written = 0;
    bool cancelled = false;
    qint64 failures = 0;    ///< failures that the plug-in logged
    QString first_failure;  ///< what the first of them said
    QStringList early_ends; ///< one text for each place where it left something out
    QStringList unread;     ///< one text for each place that it could not read
    QList<tab_result> tabs; ///< those that were begun, in their order
    QString trouble;        ///< why the run was ended before its end; empty when it was not

    /// How many tabs came to their end.
    int tabs_done() const;
};

/// What a run asks its caller while it goes.
struct run_hooks
{
    /// The plug-in has made its result database. Returns what is wrong with that, or an empty text.
    std::function<QString()> on_tables_made;
    std::function<void()> on_cleared; ///< the rows that stay are those that shall stay
    rows_stored_function rows_stored; ///< see tab_watch
};

/// Drives the plug-in object through one extraction, from the settings to the removal of its
/// temporary files. Returns when the extraction has ended; Ctrl-C cancels it. A database that takes
/// no rows ends it after the first table.
run_outcome run_extraction(artifact_plugin &plugin, const extraction_plan &plan,
                           progress_style style, const run_hooks &hooks);

#endif
