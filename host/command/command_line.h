#ifndef COMMAND_LINE_H
#define COMMAND_LINE_H

#include <QString>
#include <QStringList>

#include <optional>

#include "exit_code.h"

/// What the examiner asked the `extract` command for.
struct extract_options
{
    QString source;
    QString result_directory;
    QStringList users;   ///< account folder names, each once; empty for all that are found
    QStringList tabs;    ///< known tab names, never empty
    QString debug_log;   ///< empty for none
    QString plugin_file; ///< empty to look beside the program
    bool keep_rows = false;
    bool quiet = false;
};

/// A command line, understood: either a run to make or a text to show.
struct command_line
{
    std::optional<extract_options> extract; ///< set when a run is asked for
    QString text;                           ///< otherwise help, the version, or what is wrong
    exit_code code = exit_complete;
};

/// Reads the program's arguments, without the program's own name. It touches no file.
command_line parse_command_line(const QStringList &arguments);

#endif
