#ifndef ARTIFACT_PLUGIN_INTERFACE_H
#define ARTIFACT_PLUGIN_INTERFACE_H

#include <QFrame>
#include <QString>
#include <QStringList>

#include "host_context_records.h"

class ios_uid_backup_parser;

/// The binary contract between a host and an artefact plug-in.
///
/// The library exports one C function, `void *create_object()`. It returns a new object whose class
/// derives from QFrame by single inheritance and adds exactly the virtual operations below, in this
/// order. A host calls them through this class, which mirrors that table; the object itself is of
/// another class, so nothing may be cast dynamically. The host owns the object and deletes it.
///
/// A QApplication must exist before the object is made. All operations run on the thread that
/// calls them. They throw nothing and return no status; failures go to the debug log. Two signals
/// tell progress; both carry running totals and are connected by name:
/// `signal_extracted_records_of_plugin_overall(qint64)` and
/// `signal_tab_processed_of_plugin_overall(int)`.
class artifact_plugin : public QFrame
{
public:
    /// Takes the host edition: 0 desk, 1 sweep, 2 field. The edition marks each log line. Any other
    /// number is accepted, and makes extraction and clearing do nothing.
    virtual void pub_set_engine_type(int engine_type) = 0;
    /// Returns the artefact's name in the host's language. Blanks replaced by "_", it names the
    /// result folder and the database.
    virtual QString pub_get_artifact_name() = 0;
    /// Empties the run context (logging, edition, accounts, source count), resets both totals and
    /// lifts a cancellation. The first operation of every run.
    virtual void pub_set_essentials() = 0;
    /// Takes the ordinal number of the evidence source; every row shows it as "Source" and the
    /// number.
    virtual void pub_set_source_count(int source_count) = 0;
    /// Takes the host's parser of iOS backups. The plug-in keeps the pointer and never follows it.
    virtual void pub_set_ios_uid_backup_pointer(ios_uid_backup_parser *parser) = 0;
    /// Takes the examiner's machine.
    virtual void pub_set_examiner_machine_info(
        struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info info) = 0;
    /// Takes the logging settings. The debug file must exist: the plug-in only appends to it.
    virtual void
    pub_set_general_info(struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info info) = 0;
    /// Takes the evidence source.
    virtual void pub_set_source_info(struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info info) = 0;
    /// Takes the names of the tabs to fill, which are the result tables. The second list is
    /// ignored.
    virtual void pub_set_essential_for_arken_desk_extraction(QStringList tabs,
                                                             QStringList ignored) = 0;
    /// Takes the result directory, and makes the result folder and the temporary folder below it. A
    /// folder that cannot be made is not told here; opening the database then fails.
    virtual void pub_set_result_directory(QString directory) = 0;
    /// Creates the result database and those of its tables that are missing; rows stay.
    virtual void pub_create_db_tables() = 0;
    /// With true deletes the rows of the selected tabs; with false does nothing.
    virtual void pub_set_clear_db(bool clear) = 0;
    /// Makes a running extraction stop at its next test and later ones do nothing, until
    /// pub_set_essentials(). It only sets flags, so it may come at any time.
    virtual void pub_cancel_extraction() = 0;
    /// Looks for the source's files; must come before pub_extract_artifacts().
    virtual void pub_find_source_file() = 0;
    /// Takes the extended attributes of interest; macOS sources only.
    virtual void pub_set_extended_attributes_list(QStringList attributes) = 0;
    /// Fills the selected tabs, counting on from the current totals. Returns when all tabs are done
    /// or the run was cancelled.
    virtual void pub_extract_artifacts() = 0;
    /// Does nothing in plug-ins without chats.
    virtual void pub_generate_chat_html_pages() = 0;
    /// Removes the plug-in's temporary folder; the last operation of a run. Does nothing while no
    /// result directory was set.
    virtual void pub_remove_temporary_asthetics() = 0;
};

#endif
