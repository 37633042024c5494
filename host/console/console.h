#ifndef CONSOLE_H
#define CONSOLE_H

#include "exit_code.h"

#include <QString>
#include <QStringList>

#include <cstdio>

/// `text` with control, format and line-breaking characters and lone surrogates written as escapes
/// (\x1b, \u202e, \U000e0041), so that a name from the evidence can neither steer a terminal nor
/// fake a line.
QString printable(const QString &text);

/// Writes `line` and a line feed to `stream` in the local encoding.
void write_line(std::FILE *stream, const QString &line);

/// Replaces the terminal's current line by `text`, which must be shorter than a line.
void redraw_line(std::FILE *terminal, const QString &text);

/// Writes "artifact_host: " and the printable form of `text` as one line to standard error.
void print_notice(const QString &text);

/// Prints the reason of a refusal as a notice. Returns its code.
exit_code refuse(const refusal &refused);

/// The same as print_notice() for each warning, with "artifact_host: warning: " in front. Many are
/// summed up.
void print_warnings(const QStringList &warnings);

#endif
