#include "result_commands.h"

namespace {

struct result_command
{
    exit_code operator()(const show_options &options) const { return show_result(options); }
    exit_code operator()(const export_options &options) const { return export_result(options); }
    exit_code operator()(const compare_options &options) const { return compare_results(options); }
    exit_code operator()(const report_options &options) const { return report_result(options); }
};

} // namespace

exit_code look_at_results(const result_options &options)
{
    return std::visit(result_command(), options);
}
