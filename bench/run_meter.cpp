#include "run_meter.h"

#include <cstdio>
#include <ctime>
#include <fstream>
#include <sys/resource.h>

namespace {

long long nanoseconds(clockid_t clock)
{
    constexpr long long per_second = 1000000000;
    timespec time = {};
    clock_gettime(clock, &time);
    return per_second * time.tv_sec + time.tv_nsec;
}

#ifdef __linux__

/// A field of the process's status, in kilobytes.
long status_kb(const std::string &field)
{
    std::ifstream status("/proc/self/status");
    for (std::string name; status >> name;) {
        if (name != field)
            continue;
        long kilobytes = 0;
        status >> kilobytes;
        return kilobytes;
    }
    return 0;
}

long peak_kb()
{
    return status_kb("VmHWM:");
}

long current_kb()
{
    return status_kb("VmRSS:");
}

void forget_peak()
{
    std::ofstream("/proc/self/clear_refs") << '5';
}

#else

long peak_kb()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
#ifdef __APPLE__
    return usage.ru_maxrss / 1024; // bytes there
#else
    return usage.ru_maxrss;
#endif
}

long current_kb()
{
    return peak_kb();
}

void forget_peak() {}

#endif

} // namespace

run_meter::run_meter() : m_kb_at_start(current_kb())
{
    begin_part();
}

void run_meter::begin_part()
{
    forget_peak();
    m_wall_ns = nanoseconds(CLOCK_MONOTONIC);
    m_cpu_ns = nanoseconds(CLOCK_PROCESS_CPUTIME_ID);
}

void run_meter::end_part(const std::string &name)
{
    const long long cpu_ns = nanoseconds(CLOCK_PROCESS_CPUTIME_ID) - m_cpu_ns;
    const long long wall_ns = nanoseconds(CLOCK_MONOTONIC) - m_wall_ns;
    m_parts.push_back({name, cpu_ns, wall_ns, peak_kb()});
    begin_part();
}

void run_meter::print() const
{
    std::printf("{\"kb_at_start\": %ld, \"parts\": {", m_kb_at_start);
    const char *separator = "";
    for (const part &ended : m_parts) {
        std::printf("%s\n  \"%s\": {\"cpu_ns\": %lld, \"wall_ns\": %lld, \"peak_kb\": %ld}",
                    separator, ended.name.c_str(), ended.cpu_ns, ended.wall_ns, ended.peak_kb);
        separator = ",";
    }
    std::printf("\n}}\n");
}
