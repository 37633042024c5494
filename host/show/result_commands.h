#ifndef RESULT_COMMANDS_H
#define RESULT_COMMANDS_H

#include "exit_code.h"
#include "result_options.h"

/// Runs the command. Results are only read; `export` and `report` write their own files alone.
exit_code look_at_results(const result_options &options);

// Each of the commands: prints what was asked for on standard output and notices on standard error.
exit_code show_result(const show_options &options);
exit_code export_result(const export_options &options);
exit_code compare_results(const compare_options &options);
exit_code report_result(const report_options &options);

#endif
