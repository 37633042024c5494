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
/// calls them, nothing is thrown and nothing is returned: failures go to the debug log. Progress
/// comes through two signals, to be connected by name, both carrying running totals:
/// `signal_extracted_records_of_plugin_overall(qint64)` and
/// `signal_tab_processed_of_plugin_overall(int)`.
class artifact_plugin : public QFrame
{
public:
    /// Host edition, 0 to 2. It names the edition in the log; any other value disables extraction.
    virtual void pub_set_engine_type(int engine_type) = 0;
    /// The artefact's name. Blanks replaced by "_", it names the result folder and the database.
    virtual QString pub_get_artifact_name() = 0;
    /// Resets counts, logging and cancellation; the first operation of every run.
    virtual void pub_set_essentials() = 0;
    /// Ordinal number of the evidence source, written into every row as "Source" and the number.
    virtual void pub_set_source_count(int source_count) = 0;
    /// For iOS backups only; the plug-in keeps the pointer and never follows it.
    virtual void pub_set_ios_uid_backup_pointer(ios_uid_backup_parser *parser) = 0;
    virtual void pub_set_examiner_machine_info(
        struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info info) = 0;
    virtual void
    pub_set_general_info(struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info info) = 0;
    virtual void pub_set_source_info(struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info info) = 0;
    /// The tabs to fill; the second list is accepted and ignored.
    virtual void pub_set_essential_for_arken_desk_extraction(QStringList tabs,
                                                             QStringList ignored) = 0;
    /// Places the result below `directory` and creates the folders there.
    virtual void pub_set_result_directory(QString directory) = 0;
    /// Creates the result database with its tables; existing tables and rows stay.
    virtual void pub_create_db_tables() = 0;
    /// Deletes the rows of the selected tabs when `clear` is true.
    virtual void pub_set_clear_db(bool clear) = 0;
    /// Asks a running extraction to stop; only sets flags, so it may come at any time.
    virtual void pub_cancel_extraction() = 0;
    /// Looks for the source's files; must come before pub_extract_artifacts.
    virtual void pub_find_source_file() = 0;
    /// For macOS sources only.
    virtual void pub_set_extended_attributes_list(QStringList attributes) = 0;
    /// Fills the selected tabs; returns when all are done or the run was cancelled.
    virtual void pub_extract_artifacts() = 0;
    /// Does nothing in plug-ins without chats.
    virtual void pub_generate_chat_html_pages() = 0;
    /// Removes the plug-in's temporary folder; the last operation of a run.
    virtual void pub_remove_temporary_asthetics() = 0;
};

#endif
