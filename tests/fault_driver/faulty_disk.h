#ifndef FAULTY_DISK_H
#define FAULTY_DISK_H

#include <cstdint>

// Takes the place of the C library's calls that alter files, in a program and in every library it
// loads, to let one of them fail. Linux only: elsewhere nothing is watched and nothing fails.

/// What happens at the chosen step below the watched folder.
enum class disk_fault
{
    none,
    full_once,     ///< that write finds no space, later ones do
    full_for_good, ///< that write and all later ones find no space
    kill_before,   ///< the process is killed instead of the step
    kill_within    ///< the process is killed when half of the bytes are written
};

/// How many calls there were below the watched folders.
struct disk_counts
{
    std::int64_t steps = 0;     ///< calls that alter a file or its folder, writes included
    std::int64_t writes = 0;    ///< calls that need space
    std::int64_t opens = 0;     ///< files opened below the read folder
    std::int64_t waited_us = 0; ///< how long SQLite meant to wait for locks
};

/// Watches two folders, both ending in "/", from now on. `fault` happens at step number `at`, from
/// 1, or for the full disks at that write. Prints "fault" when it does. Waiting for a lock then
/// takes no time either.
void watch_disk(const char *written_folder, const char *read_folder, disk_fault fault,
                std::int64_t at);

/// The counts since watch_disk().
disk_counts counted_on_disk();

#endif
