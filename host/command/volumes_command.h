#ifndef VOLUMES_COMMAND_H
#define VOLUMES_COMMAND_H

#include "command_line.h"
#include "exit_code.h"

/// Lists on standard output what a run would read of each volume of the source, and on standard
/// error what it would not.
exit_code list_volumes(const volumes_options &options);

#endif
