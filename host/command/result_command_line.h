#ifndef RESULT_COMMAND_LINE_H
#define RESULT_COMMAND_LINE_H

#include "command_line.h"

/// Whether the word is a command that looks at results: show, export, compare or report.
bool is_result_command(const QString &word);

/// Reads the arguments of such a command, without its own name. Touches no file.
command_line parse_result_command(const QString &command, const QStringList &arguments);

#endif
