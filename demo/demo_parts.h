#ifndef DEMO_PARTS_H
#define DEMO_PARTS_H

#include "evidence_volume.h"

namespace demo {

// The parts of the demonstration volume; each puts its keys and files into the volume and leaves
// the hives to be written.

/// SOFTWARE: Uninstall in both views, RegisteredApplications.
void add_software(evidence::evidence_volume &volume);

/// SYSTEM: what holds the machine's name and its current control set.
void add_system(evidence::evidence_volume &volume);

/// The users' hives: UserAssist, Compatibility Assistant, desktop icons.
void add_users(evidence::evidence_volume &volume);

/// The users' store packages.
void add_packages(evidence::evidence_volume &volume);

/// The transaction logs of one user, whose hive was not closed cleanly: two programs were run last.
/// To be called once the hives are written.
void write_logs(evidence::evidence_volume &volume);

/// A program that was uninstalled, whose key lies in free cells of SOFTWARE. To be called once the
/// hives are written.
void write_deletions(evidence::evidence_volume &volume);

/// Program files that the users' hives name, with their modification times.
void add_programs(evidence::evidence_volume &volume);

} // namespace demo

#endif
