#ifndef BARE_TIME_H
#define BARE_TIME_H

#include <cstdint>

/// Converts 100 ns intervals since 1601-01-01 UTC to Unix seconds.
inline std::int64_t unix_seconds(std::int64_t filetime)
{
    return (filetime - 116444736000000000) / 10000000;
}

#endif
