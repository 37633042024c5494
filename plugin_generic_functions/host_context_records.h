#ifndef HOST_CONTEXT_RECORDS_H
#define HOST_CONTEXT_RECORDS_H

#include <QList>
#include <QString>
#include <QStringList>
#include <QtGlobal>

// The records in which the host describes the evidence source, the examiner's machine and its own
// logging settings. The host and all its plug-ins share them by value, so the names, the order and
// the types of the members are a binary contract; members named by number are kept for their place
// only and are not read here.

/// One user account of the evidence source.
struct struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_system_account
{
    QString system_user;    ///< account name; on Windows also its folder's name below "Users/"
    QString account_text_2; ///< not read by the plug-in
};

/// One evidence source: a file system that the host has mounted or extracted under a directory.
struct struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info
{
    QString source_root_path;   ///< directory of the mounted file system, ending in "/"
    QString source_text_2;      ///< not read by the plug-in
    QString os_scheme_display;  ///< operating-system scheme as shown to the examiner in every row
    QString os_scheme_internal; ///< key that chooses the worker: "macOS", "iOS_UID" or "winOS"
    QString os_version_full;    ///< full operating-system version of the source
    QList<struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_system_account>
        system_account_list;        ///< the user accounts of the source; may be empty
    QString source_text_7;          ///< not read by the plug-in
    QString source_text_8;          ///< not read by the plug-in
    QStringList source_text_list_9; ///< not read by the plug-in
    QString source_text_10;         ///< not read by the plug-in
    QString source_text_11;         ///< not read by the plug-in
    QString source_text_12;         ///< not read by the plug-in; survives the clearing helper
    QString source_text_13;         ///< not read by the plug-in; survives the clearing helper
};

/// The host's logging settings.
struct struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info
{
    bool general_flag_1 = false;          ///< not read by the plug-in
    bool debug_mode_status = false;       ///< master switch of the debug log
    bool debug_print_on_terminal = false; ///< debug lines go to the Qt debug channel
    bool debug_print_in_file = false;     ///< debug lines go to the debug file
    bool general_flag_5 = false;          ///< not read by the plug-in; survives the clearing helper
    QString debug_file_path;              ///< full path of the debug file, which the host creates
};

/// The examiner's machine.
struct struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info
{
    qint64 examiner_machine_timezone_offset = 0; ///< seconds east of UTC
    QString examiner_machine_os_version_full;    ///< full operating-system version
};

/// Where a result row comes from.
struct struct_GLOBAL_ARTIFACT_artifact_source_file
{
    QString display_path;  ///< path relative to the source, with a leading "/"
    QString complete_path; ///< full path; filled only for a home folder of a macOS source
};

/// When a file was made, read and changed: seconds since 1970-01-01 00:00:00 UTC, 0 when not known.
struct struct_GLOBAL_ARTIFACT_file_times
{
    qint64 creation_time = 0;          ///< birth of the file
    qint64 last_access_time = 0;       ///< last read
    qint64 last_modification_time = 0; ///< last change of the content
};

/// When a file was used, as its metadata listing gives it; decimal seconds since the Unix epoch.
struct struct_GLOBAL_ARTIFACT_used_dates
{
    QString last_used_date; ///< attribute "kMDItemLastUsedDate"; empty when absent or unreadable
    QStringList used_dates; ///< attribute "kMDItemUsedDates" in the listing's order
};

#endif
