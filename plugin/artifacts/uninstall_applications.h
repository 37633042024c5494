#ifndef UNINSTALL_APPLICATIONS_H
#define UNINSTALL_APPLICATIONS_H

#include "artifact.h"

/// Writes one row for each application of the artefact's Uninstall key, of the native view or of
/// the 32-bit one. Returns as artifact::write_rows.
bool write_uninstall_applications(extraction &run);

#endif
