#ifndef PLUGIN_STATIC_FUNCTION_H
#define PLUGIN_STATIC_FUNCTION_H

#include "host_context_records.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <QtGlobal>

class QSqlDatabase;

/// The helpers that every artefact plug-in of the suite carries: static members only, in the
/// sections below, each with a source file of its name. An instance is never needed.
///
/// Everything runs on the thread that calls the plug-in. No member throws; a failure is a line of
/// the debug log and an empty, zero or false result.
class plugin_static_function : public QWidget
{
public:
    /// Makes an instance without state of its own, owned by `parent` like any widget.
    explicit plugin_static_function(QWidget *parent = nullptr);

    // --- Run context: the only mutable state of the class (plugin_static_function_debug_log.cpp)

    static QString debug_file_path;     ///< full path of the debug file, which the host creates
    static int type_engine_int;         ///< host edition: 0 desk, 1 sweep, 2 field; -1 unset
    static bool bool_cancel_extraction; ///< set when the user cancels; the long loops poll it
    static int source_count_int;        ///< ordinal number of the evidence source; -1 unset
    /// The source's user accounts: records, despite the name.
    static QList<struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_system_account> system_account_QStringList;
    static qint64 examiner_selected_timezone_offset_qint64; ///< seconds east of UTC
    static qint64 examiner_machine_timezone_offset_qint64;  ///< seconds east of UTC
    static int examiner_selected_date_format_int; ///< 0 year first, 1 month first, else day first
    static bool debug_mode_status_bool;           ///< master switch of the debug log
    static bool debug_print_in_file_bool;         ///< debug lines go to debug_file_path
    static bool debug_print_on_terminal_bool;     ///< debug lines go to the Qt debug channel
    static QString examiner_machine_os_version_full; ///< survives set_essentials
    static QString source_os_version_full;           ///< survives set_essentials

    /// Resets the run context, but for the two operating-system versions, before a new source.
    static void set_essentials();
    /// Takes the host edition as given; an unknown one shows in the log lines only.
    static void set_engine_type(int type_engine);
    /// Takes the debug file's path and the three debug switches of the record.
    static void
    set_general_info(const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info &general_info);
    /// Takes the machine's time-zone offset and operating-system version.
    static void set_examiner_machine_info(
        const struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info &machine_info);
    /// Takes the source's user accounts and operating-system version.
    static void
    set_source_info(const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info &source_info);
    /// Takes the ordinal number of the evidence source.
    static void set_source_count(int source_count);
    /// Sets or clears the flag that stops the long loops of this class.
    static void set_cancel_extraction(bool cancel_extraction);
    /// Returns "Source" and the source's number: "Source3"; "Source-1" while it is unset.
    static QString get_source_count_name();

    /// Empties the record in place, except its last two texts, which stay as they were.
    static void clear_variables_arken_and_artifact_common_source_info(
        struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info &source_info);
    /// Sets the offset to 0 and empties the version text.
    static void clear_variables_arken_and_artifact_common_examiner_machine_info(
        struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info &machine_info);
    /// Clears the first four flags and the path; the fifth flag stays as it was.
    static void clear_variables_arken_and_artifact_common_general_info(
        struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info &general_info);

    // --- Debug log (plugin_static_function_debug_log.cpp)

    /// Writes one line to the Qt debug channel and to the debug file, as the switches say.
    ///
    /// `function_info` is the caller's full signature, of which the qualified name is shown. The
    /// file is opened and closed for each line and never created: an absent one takes no line.
    static void app_debug(const QString &message, const QString &function_info);

    // --- SQLite commands (plugin_static_function_sqlite.cpp)
    //
    // "_by_dbpath" opens a connection of its own, "_by_dbreference" uses the caller's open one and
    // neither opens nor closes it. `caller` is the calling function's signature for the log.

    /// Runs one statement on the database file; false when it cannot be opened or the statement
    /// fails. The connection is named after the caller and stays registered, closed.
    static bool execute_db_command_by_dbpath(const QString &command, const QString &db_path,
                                             const QString &caller);
    /// The same with `bind_values` bound to the placeholders in order. Cancelled while binding:
    /// false at once, with the connection left open until the caller's next call replaces it.
    static bool execute_db_command_with_addbindvalue_by_dbpath(const QString &command,
                                                               const QStringList &bind_values,
                                                               const QString &db_path,
                                                               const QString &caller);
    /// Runs one statement on the caller's connection; false when it fails.
    static bool execute_db_command_by_dbreference(const QString &command, QSqlDatabase &database,
                                                  const QString &caller);
    /// The same with `bind_values` bound in order; false at once when cancelled while binding.
    static bool execute_db_command_with_addbindvalue_by_dbreference(const QString &command,
                                                                    const QStringList &bind_values,
                                                                    QSqlDatabase &database,
                                                                    const QString &caller);

    /// Returns column `column_index` (from 0) of all rows as trimmed texts, NULL as the empty text.
    /// Empty when the statement fails; the rows so far when cancelled.
    static QStringList get_stringlist_from_db_by_dbreference(const QString &command,
                                                             int column_index,
                                                             QSqlDatabase &database,
                                                             const QString &caller);
    /// The same with `bind_values` bound in order; empty when cancelled while binding.
    static QStringList get_stringlist_from_db_with_addbindvalues_by_dbreference(
        const QString &command, const QStringList &bind_values, int column_index,
        QSqlDatabase &database, const QString &caller);
    /// As the reference variant, on a connection of its own with a name never used before, which
    /// is closed and removed on every path.
    static QStringList get_stringlist_from_db_by_dbpath(const QString &command, int column_index,
                                                        const QString &db_path,
                                                        const QString &caller);
    /// The same with `bind_values` bound in order; empty when cancelled while binding.
    static QStringList get_stringlist_from_db_with_addbindvalues_by_dbpath(
        const QString &command, const QStringList &bind_values, int column_index,
        const QString &db_path, const QString &caller);

    /// True when a row's column equals `value`, both trimmed, with regard to letter case. False
    /// when there is none, when cancelled, and when the statement fails.
    static bool check_value_existence_in_db_by_dbreference(const QString &command, int column_index,
                                                           const QString &value,
                                                           QSqlDatabase database);
    /// Returns the names of the user's tables, without SQLite's own and without views.
    static QStringList get_total_tables_list_by_dbpath(const QString &db_path,
                                                       const QString &caller);
    /// Returns the entries of `parent_list` that `other_list` lacks, in order and with their
    /// duplicates; what it has so far when cancelled.
    static QStringList get_unmatched_varible_list_of_parentlist(const QStringList &parent_list,
                                                                const QStringList &other_list);

    // --- Times (plugin_static_function_time.cpp)
    //
    // Epoch seconds are decimal texts: whole seconds since 1970-01-01 00:00:00 UTC. Unusable input
    // gives the empty text. Month names are English and nothing depends on the locale.

    /// Returns the times of the file at `path_prefix` directly followed by `file_path` (both
    /// trimmed); three zeros when either is empty or the file is not there. A time that the file
    /// system does not keep is 0.
    static struct_GLOBAL_ARTIFACT_file_times get_posix_timestamp(const QString &file_path,
                                                                 const QString &path_prefix);
    /// Takes seconds since 2001-01-01 UTC; a fraction is dropped. Empty for "0". A number outside
    /// 32 bits counts as 0.
    static QString convert_apple_time_to_epoch(const QString &apple_seconds);
    /// Takes microseconds since 1601-01-01 UTC. Empty for "0"; a text of exactly ten characters is
    /// epoch seconds already and comes back as it is.
    static QString convert_google_time_to_epoch(const QString &google_microseconds);
    /// Shows epoch seconds at the examiner's selected offset in the selected date format; a
    /// fraction is dropped. Empty for 0, for what is no number or lies outside the calendar, and
    /// for a time before 1970 in a date format other than 0, 1 and 2.
    static QString convert_epoch_to_custom(const QString &epoch_seconds);
    /// Shows a duration in seconds as "MM:SS Min" or, from one hour on, "HH:MM:SS Hrs"; a fraction
    /// is dropped. Empty for a negative one.
    static QString get_human_readable_time(const QString &duration_seconds);
    /// Takes "HHMM" without a sign and returns seconds; unreadable digits count as 0.
    static int convert_timezone_to_seconds_1(const QString &hours_and_minutes);
    /// Takes "Tue, 05 Mar 2024 10:00:00 GMT" (day of two digits). The time is taken as UTC whatever
    /// the zone's name. Empty for "0".
    static QString convert_human_readable_to_epoch(const QString &date_text);
    /// Takes "Mar 5, 2024, 10:00:00 AM UTC", with any kind of blanks. The zone is UTC: behind the
    /// marker may stand "UTC", "GMT", "Z" or nothing. Another zone's name is unusable input, since
    /// its abbreviation gives no offset and a time that is hours off would be worse than
    /// none.
    static QString convert_human_readable_to_epoch_1(const QString &date_text);
    /// Takes "2024-03-05 10:00:00.123 +0530": the fraction is dropped, the zone may touch the time,
    /// may be "+05:30", "+0530" or "+05" with hours up to 14, and is UTC when it is missing.
    static QString convert_human_readable_to_epoch_2(const QString &date_text);
    /// Shows epoch seconds, before 1970 too, in UTC in the selected date format. Empty for 0 and
    /// for what is no number.
    static QString convert_timestamp_to_human_readable_in_GMT(const QString &epoch_seconds);
    /// As convert_epoch_to_custom, followed by a blank and the selected offset as "+0530".
    static QString convert_timestamp_to_human_readable_with_timezone(const QString &epoch_seconds);
    /// Takes UTC as "20240305T100000Z" or "2024-03-05T10:00:00.123Z" (the fraction is dropped),
    /// with or without the "Z", with "T" or a blank between, or "20240305" for the start of that
    /// day.
    static QString convert_T_Z_time_to_epoch(const QString &date_text);
    /// Reads a metadata listing: "kMDItemLastUsedDate = DATE" and "kMDItemUsedDates = ( "DATE", ...
    /// )", each DATE as convert_human_readable_to_epoch_2 takes it. Dates that cannot be read are
    /// left out.
    static struct_GLOBAL_ARTIFACT_used_dates extract_used_date(const QString &attribute_listing);

    // --- Paths and files (plugin_static_function_path.cpp)
    //
    // The source kind "macOS_Home_Directory" says that a path lies in a user's home folder of a
    // macOS source; any other text means an ordinary source.

    /// Returns the path as rows show it, with a leading "/" unless it is blank. For the home kind
    /// everything through the first `path_prefix` is cut off and the given path kept as the
    /// complete one; for an ordinary source the path is relative already and the prefix is not
    /// looked at.
    static struct_GLOBAL_ARTIFACT_artifact_source_file
    get_final_artifact_source_file(const QString &file_path, const QString &path_prefix,
                                   const QString &source_kind);
    /// Returns the displayed path alone.
    static QString get_relative_file_path(const QString &file_path, const QString &path_prefix,
                                          const QString &source_kind);
    /// For the home kind: replaces "/Users/NAME" at the start by "/Users/" and `user_name`. Returns
    /// the path with a leading "/" unless it is blank.
    static QString get_complete_file_path(const QString &file_path, const QString &user_name,
                                          const QString &source_kind);
    /// Returns the first folder below the prefix, which is cut off by its length alone; empty while
    /// the run context holds no accounts.
    static QString extract_user_name_from_sourcefile(const QString &file_path,
                                                     const QString &path_prefix);
    /// Removes the directory and all below it. Symbolic links are removed as links and never
    /// followed, a given link to a directory included; "..", and links on the way, lead to where
    /// the file system says. What is no directory stays: a blank path, a file, a link to a file or
    /// to nothing. Failures are ignored.
    static void remove_directory(const QString &directory_path);
    /// Copies a tree, hidden entries included, into `destination_path`, which is made when absent.
    ///
    /// A file appears under its name only when it is whole, replacing one of that name. A link is
    /// copied as the file it leads to while that lies inside the tree; links out of the tree, to
    /// directories and to special files are logged as links passed over. Dangling links and special
    /// files are left out silently. Links in the destination are followed: a file goes to where the
    /// link of its name leads. The destination may lie inside the source. Stops when cancelled.
    static void copy_directory(const QString &source_path, const QString &destination_path);
    /// Shows bytes as "1023 B", "1.50 KB" or, of any greater size, "2048.00 MB". Empty for blank
    /// input; what is no number counts as 0.
    static QString human_readable_size(const QString &size_in_bytes);
    /// Returns a name that is free in the folder, which is made when absent: the file's own, else
    /// "1_" and it, "2_" and so on; empty when cancelled, during the listing too. `caller` is not
    /// looked at.
    static QString get_available_file(const QString &file_path, const QString &folder_path,
                                      const QString &caller);
    /// True when the folder itself holds an entry of that name, both trimmed, letter case told
    /// apart; false when cancelled. `caller` is not looked at.
    static bool is_file_exist_in_dir(const QString &folder_path, const QString &file_name,
                                     const QString &caller);
    /// Returns the unit behind the first number of a size text: "KB" of "1.50 KB"; empty if none.
    static QString mining_suffix(const QString &size_text);
    /// Returns the first number of a size text as it stands: "1.50" of "1.50 KB"; empty if none.
    static QString mining_size(const QString &size_text);
    /// Returns the scan version of the examiner's machine: "11" for macOS 11 and later, "10.15" and
    /// the like before, "iOS" for a version text with that word; empty when no version is known.
    static QString get_examiner_machine_os_scan_version();
    /// The same for the source: "iOS" when `os_scheme` holds that word, else by the source's
    /// operating-system version.
    static QString get_source_os_scan_version(const QString &os_scheme);

    // --- Value filters (plugin_static_function_value_filter.cpp)
    //
    // They cut the bare value out of a printed Core Foundation value. Blank input and input without
    // the separators that the kind is printed with give the empty text.

    /// "123" of "<CFNumber 0x1 [0x2]>{value = +123, type = kCFNumberSInt64Type}".
    static QString get_filtered_number_value(const QString &printed_number);
    /// "true" of "<CFBoolean 0x1 [0x2]>{value = true}".
    static QString get_filtered_boolean_value(const QString &printed_boolean);
    /// The text of a printed string, without its double quotes.
    static QString get_filtered_cfstring_value(const QString &printed_string);
    /// The entries of a printed list `( "a", "b" )` joined by ";", without brackets and double
    /// quotes. Input without "," gives the empty text, a list of one entry too.
    static QString get_filtered_string_value(const QString &printed_list);
    /// The origins of a printed list of download origins, one per line. Round brackets inside an
    /// origin become "<" and ">", and the ";" of a print that ends in ");" is dropped.
    static QString get_filtered_wherefrom_value(const QString &printed_origins);
    /// Epoch seconds of an ISO 8601 date such as "2024-03-05 10:00:00 +0000", UTC unless it names
    /// an offset. What follows the first "." is dropped, an offset there included. A date without a
    /// time gives the empty text.
    static QString get_filtered_date_value(const QString &printed_date);
    /// Turns "\U" with four hexadecimal digits into that UTF-16 unit; two such escapes may form a
    /// surrogate pair. Anything else stays, lone surrogates and all behind 100000 escapes included.
    static QString convert_string_to_unicode(const QString &escaped_text);

    // --- Foundation readers (plugin_static_function_foundation.cpp)
    //
    // Dictionaries and keys are Foundation objects as untyped pointers; they stay the caller's. A
    // nil or wrong dictionary, a key that is missing and a value of another class give the empty
    // text and a failure line, and so does every call in a build without Foundation;
    // convert_cfstring_to_qstring and convert_nsdate_to_epoch give the empty text without a line.
    // Objective-C exceptions never leave a member.

    /// Returns the text of a CFStringRef or NSString.
    static QString convert_cfstring_to_qstring(const void *cf_string);
    /// Returns the text of the NSString under the key.
    static QString get_nsstring_values(const void *dictionary, const void *key);
    /// Returns the decimal text of the NSNumber under the key.
    static QString get_nsnumber_values(const void *dictionary, const void *key);
    /// The same, but "NO" or "YES" for the platform's booleans of value 0 and 1.
    static QString get_nsnumber_values_yes_no(const void *dictionary, const void *key);
    /// Returns `label`, ":+:" and the NSString under the key; empty when there is no value.
    static QString get_nsstring_key_and_values(const void *dictionary, const void *key,
                                               const QString &label);
    /// Returns `label`, ":+:" and the NSNumber under the key; empty when there is no value.
    static QString get_nsnumber_key_and_values(const void *dictionary, const void *key,
                                               const QString &label);
    /// Returns `label`, ":+:" and the NSNumber with "NO" and "YES" for booleans; empty without
    /// value.
    static QString get_nsnumber_key_and_value_yes_no(const void *dictionary, const void *key,
                                                     const QString &label);
    /// Returns `label`, ":+:" and the elements of the NSArray under the key joined by ";", texts as
    /// they are and others as Foundation describes them; empty when there is no array.
    static QString get_nsarray_key_and_values(const void *dictionary, const void *key,
                                              const QString &label);
    /// Takes an NSDate and returns epoch seconds; the fraction is dropped downwards. Empty for nil,
    /// for another class, for dates outside 15 October 1582 to the year 9999, and in a build
    /// without Foundation.
    static QString convert_nsdate_to_epoch(const void *ns_date);
};

#endif
