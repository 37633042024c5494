#ifndef UNINSTALL_KEY_H
#define UNINSTALL_KEY_H

#include "artifact.h"

/// Writes one row for each application of the artefact's Uninstall key, of the native view or of
/// the 32-bit one. Returns as artifact::write_rows.
bool write_uninstall_key(extraction &run);

#endif
