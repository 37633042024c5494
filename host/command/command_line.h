#ifndef COMMAND_LINE_H
#define COMMAND_LINE_H

#include <QString>
#include <QStringList>

#include <optional>

#include "earlier_results.h"
#include "exit_code.h"
#include "reading_options.h"
#include "result_options.h"

/// What the examiner asked the `extract` command for.
struct extract_options
{
    QString source;
    QString result_directory;
    QStringList users;   ///< account folder names, each once; empty for all that are found
    QStringList tabs;    ///< as they were given; empty for all
    QString debug_log;   ///< empty for none
    QString plugin_file; ///< empty to look beside the program
    earlier_results_wish results;
    int wait_seconds = 0; ///< for locks of others
    bool hashes = true;
    bool deleted = false; ///< look for deleted records besides
    bool quiet = false;
    QString volume; ///< the volume's name in the source; empty for the only one
    reading_options reading = reading_options::all();
    QStringList arguments; ///< all of them, as they were given
};

/// What the examiner asked the `volumes` command for.
struct volumes_options
{
    QString source;
    QString volume; ///< empty for all
    reading_options reading = reading_options::all();
};

/// What the examiner asked the `recover` command for.
struct recover_options
{
    QString hive;
    QString copy;
    QStringList logs;  ///< empty for those beside the hive
    bool list = false; ///< name the keys that differ
};

/// What a command line asks for: a run, a look at results, help that names the plug-in's tabs, or a
/// text to show.
struct command_line
{
    std::optional<extract_options> extract;       ///< set when a run is asked for
    QString text;                                 ///< help, the version, or what is wrong
    exit_code code = exit_complete;               ///< what the program ends with after the text
    std::optional<volumes_options> volumes = {};  ///< set when a list of volumes is asked for
    std::optional<QString> help_with_plugin = {}; ///< the plug-in whose tabs the help shall name
    std::optional<recover_options> recover = {};  ///< set when a hive shall be recovered
    std::optional<result_options> results = {};   ///< set when results are to be looked at
};

/// The help of the `extract` command; `tabs` are those that the plug-in fills, if it could be
/// asked.
QString extract_help_text(const QStringList &tabs);

/// Reads the program's arguments, without the program's own name. Touches no file.
command_line parse_command_line(const QStringList &arguments);

#endif
