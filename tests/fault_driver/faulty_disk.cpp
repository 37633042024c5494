#include "faulty_disk.h"

#ifdef __linux__

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

struct watch
{
    std::string written_folder;
    std::string read_folder;
    disk_fault fault = disk_fault::none;
    std::int64_t at = 0;
    disk_counts counts;
};

/// Null until something is watched: the calls are in use long before main().
watch *current = nullptr;

bool is_below(const char *path, const std::string &folder)
{
    return !folder.empty() && std::strncmp(path, folder.c_str(), folder.size()) == 0;
}

bool is_written_folder(const char *path)
{
    return current != nullptr && is_below(path, current->written_folder);
}

bool is_written_folder(int descriptor)
{
    if (current == nullptr)
        return false;
    char link[32];
    char path[4096];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const ssize_t size = readlink(link, path, sizeof path - 1);
    path[size > 0 ? size : 0] = '\0';
    return is_written_folder(path);
}

void announce()
{
    syscall(SYS_write, STDOUT_FILENO, "fault\n", 6);
}

void kill_now()
{
    announce();
    kill(getpid(), SIGKILL);
}

bool kills(disk_fault fault)
{
    return fault == disk_fault::kill_before || fault == disk_fault::kill_within;
}

/// Counts a step; true when the process has to die at it.
bool is_last_step()
{
    ++current->counts.steps;
    return kills(current->fault) && current->counts.steps == current->at;
}

void take_step()
{
    if (is_last_step())
        kill_now();
}

/// Counts a write that needs space; false when there is none.
bool finds_space()
{
    const std::int64_t number = ++current->counts.writes;
    if (number == current->at &&
        (current->fault == disk_fault::full_once || current->fault == disk_fault::full_for_good))
        announce();
    const bool is_full =
        current->fault == disk_fault::full_once ? number == current->at : number >= current->at;
    const bool fills_up =
        current->fault == disk_fault::full_once || current->fault == disk_fault::full_for_good;
    if (fills_up && is_full)
        errno = ENOSPC;
    return !(fills_up && is_full);
}

/// Lets `write_bytes`, called with a number of bytes, take place as far as it may.
template<typename write_function>
ssize_t watched_write(int descriptor, size_t size, write_function write_bytes)
{
    if (!is_written_folder(descriptor))
        return write_bytes(size);
    if (is_last_step()) {
        if (current->fault == disk_fault::kill_within)
            write_bytes(size / 2);
        kill_now();
    }
    return finds_space() ? write_bytes(size) : -1;
}

int watched_open(const char *path, int flags, mode_t mode)
{
    if (current != nullptr && is_below(path, current->read_folder))
        ++current->counts.opens;
    if ((flags & O_CREAT) != 0 && is_written_folder(path)) {
        take_step();
        if (!finds_space())
            return -1;
    }
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

} // namespace

void watch_disk(const char *written_folder, const char *read_folder, disk_fault fault,
                std::int64_t at)
{
    current = new watch{written_folder, read_folder, fault, at, {}}; // for as long as the process
}

disk_counts counted_on_disk()
{
    return current != nullptr ? current->counts : disk_counts{};
}

// NOLINTBEGIN(cert-dcl50-cpp): the C library's own declarations, one of them with an ellipsis
#define REPLACES_LIBC extern "C" __attribute__((visibility("default")))

REPLACES_LIBC ssize_t write(int descriptor, const void *bytes, size_t size)
{
    return watched_write(descriptor, size, [&](size_t count) -> ssize_t {
        return syscall(SYS_write, descriptor, bytes, count);
    });
}

REPLACES_LIBC ssize_t pwrite64(int descriptor, const void *bytes, size_t size, off64_t offset)
{
    return watched_write(descriptor, size, [&](size_t count) -> ssize_t {
        return syscall(SYS_pwrite64, descriptor, bytes, count, offset);
    });
}

REPLACES_LIBC int ftruncate64(int descriptor, off64_t size) noexcept
{
    if (is_written_folder(descriptor))
        take_step();
    return static_cast<int>(syscall(SYS_ftruncate, descriptor, size));
}

REPLACES_LIBC int fdatasync(int descriptor)
{
    if (is_written_folder(descriptor))
        take_step();
    return static_cast<int>(syscall(SYS_fdatasync, descriptor));
}

REPLACES_LIBC int unlink(const char *path) noexcept
{
    if (is_written_folder(path))
        take_step();
    return static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, path, 0));
}

REPLACES_LIBC int open(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const auto mode = static_cast<mode_t>(va_arg(arguments, int));
    va_end(arguments);
    return watched_open(path, flags, mode);
}

REPLACES_LIBC int open64(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const auto mode = static_cast<mode_t>(va_arg(arguments, int));
    va_end(arguments);
    return watched_open(path, flags, mode);
}

// SQLite waits for a lock by sleeping, and counts what it slept by its own measure.
REPLACES_LIBC int usleep(useconds_t microseconds)
{
    if (current != nullptr) {
        current->counts.waited_us += microseconds;
        return 0;
    }
    constexpr long ns_per_us = 1000;
    constexpr long us_per_s = 1000000;
    const long whole = microseconds;
    timespec pause = {whole / us_per_s, whole % us_per_s * ns_per_us};
    return static_cast<int>(syscall(SYS_nanosleep, &pause, nullptr));
}

// NOLINTEND(cert-dcl50-cpp)

#else

void watch_disk(const char * /*written_folder*/, const char * /*read_folder*/, disk_fault /*fault*/,
                std::int64_t /*at*/)
{
}

disk_counts counted_on_disk()
{
    return {};
}

#endif
