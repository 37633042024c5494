#ifndef RECOVER_COMMAND_H
#define RECOVER_COMMAND_H

#include "command_line.h"
#include "exit_code.h"

/// Applies the transaction logs of one hive and writes the result to a new file. Tells on standard
/// output what was applied and what that changed.
exit_code recover(const recover_options &options);

#endif
