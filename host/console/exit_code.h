#ifndef EXIT_CODE_H
#define EXIT_CODE_H

#include <QString>

/// What the program tells the shell; `artifact_host --help` lists the same codes.
enum exit_code : int
{
    exit_complete = 0,
    exit_run_failed = 1,
    exit_usage = 2,
    exit_source = 3,
    exit_result = 4,
    exit_plugin = 5,
    exit_incomplete = 6, ///< complete but for what is listed
    exit_nothing_to_recover = 7,
    exit_cancelled = 130
};

/// Why a run cannot start.
struct refusal
{
    exit_code code = exit_run_failed;
    QString reason; ///< one line for the examiner; may hold text of the evidence unescaped
};

#endif
