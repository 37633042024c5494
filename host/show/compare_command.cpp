#include "comparison.h"
#include "console.h"
#include "looked_at_result.h"
#include "result_commands.h"
#include "result_output.h"

using namespace Qt::StringLiterals;
using namespace results;

namespace {

/// Why the result does not have one of these sources.
std::optional<refusal> check_sources(const opened_result &result, const QStringList &sources)
{
    if (sources.isEmpty())
        return std::nullopt;
    const QStringList known = result.values_of(result.tables(), u"source_count_name"_s);
    for (const QString &source : sources) {
        if (!known.contains(source))
            return refusal{exit_usage, u"unknown source \"%1\"; there are %2"_s.arg(
                                           source, known.join(", "_L1))};
    }
    return std::nullopt;
}

QList<int> places_in(const QList<column> &columns, show_options::form format)
{
    QList<int> places;
    for (int place = 0; place < int(columns.size()); ++place) {
        if (format != show_options::form::text || columns[place].is_shown)
            places.append(place);
    }
    return places;
}

exit_code print(comparison found, const compare_options &options)
{
    exit_code code = exit_complete;
    if (!found.failure.isEmpty()) {
        print_notice(found.failure);
        code = exit_run_failed;
    }
    QStringList names;
    for (const column &each : std::as_const(found.columns))
        names.append(each.name);
    memory_rows rows(u"changes"_s, u"from the earlier state to the later one"_s, found.columns,
                     std::move(found.rows));
    result_output output(options.format, options.width, options.may_page);
    row_writer &writer = output.begin(names);
    bool is_taken = writer.begin(rows, places_in(rows.columns(), options.format));
    while (is_taken) {
        const row *each = rows.next();
        is_taken = each != nullptr && writer.write(*each);
    }
    return output.finish(code);
}

} // namespace

exit_code compare_results(const compare_options &options)
{
    const looked_at_result before = look_at(options.before);
    if (before.refused)
        return refuse(*before.refused);
    if (const auto refused = check_sources(*before.result, options.sources))
        return refuse(*refused);
    const bool is_one_result = !options.sources.isEmpty();
    const looked_at_result other = is_one_result ? looked_at_result() : look_at(options.after);
    if (other.refused)
        return refuse(*other.refused);
    const opened_result &after = is_one_result ? *before.result : *other.result;
    const exit_code code = print(compare({before.result.get(), options.sources.value(0)},
                                         {&after, options.sources.value(1)}),
                                 options);
    tell_of_changes(*before.result);
    if (!is_one_result)
        tell_of_changes(after);
    return code;
}
