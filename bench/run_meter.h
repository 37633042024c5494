#ifndef RUN_METER_H
#define RUN_METER_H

#include <string>
#include <vector>

/// Measures the parts of a run, one after the other. Time and memory count from the moment when the
/// meter is made.
class run_meter
{
public:
    /// Begins the first part.
    run_meter();

    /// Ends a part, which gets the name, and begins the next.
    void end_part(const std::string &name);

    /// Prints the parts to standard output as a JSON object: memory at the start, and for each part
    /// its processor time (user and system) and its time by the clock, in nanoseconds, and the most
    /// memory that the process had meanwhile, in kilobytes. Where the system keeps one peak for the
    /// whole process, a part may show that of an earlier one.
    void print() const;

private:
    struct part
    {
        std::string name;
        long long cpu_ns;
        long long wall_ns;
        long peak_kb;
    };

    void begin_part();

    long m_kb_at_start = 0;
    long long m_cpu_ns = 0;
    long long m_wall_ns = 0;
    std::vector<part> m_parts;
};

#endif
