#ifndef EXTRACT_COMMAND_H
#define EXTRACT_COMMAND_H

#include "command_line.h"
#include "exit_code.h"

/// Makes one run: checks everything that it needs, loads the plug-in, extracts, and reports on
/// standard output and standard error. A run that cannot start creates nothing. Needs a
/// QApplication.
exit_code extract(const extract_options &options);

#endif
