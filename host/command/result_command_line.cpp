#include "result_command_line.h"

#include <QHash>

#include <algorithm>

#include "result_help.h"
#include "result_parser.h"

using namespace Qt::StringLiterals;

namespace {

command_line misused(const QString &reason)
{
    return {std::nullopt, reason, exit_usage};
}

const option_words<show_options::form> show_forms{{u"text"_s, show_options::form::text},
                                                  {u"csv"_s, show_options::form::csv},
                                                  {u"jsonl"_s, show_options::form::json_lines}};

const option_words<show_options::view> show_views{{u"tables"_s, show_options::view::tables},
                                                  {u"programs"_s, show_options::view::programs},
                                                  {u"timeline"_s, show_options::view::timeline}};

const option_words<export_options::form> export_forms{
    {u"csv"_s, export_options::form::csv},
    {u"jsonl"_s, export_options::form::json_lines},
    {u"timeline"_s, export_options::form::timeline},
    {u"bodyfile"_s, export_options::form::body_file},
    {u"xlsx"_s, export_options::form::xlsx}};

row_selection selection_of(result_parser &parser)
{
    row_selection selection;
    selection.tabs = parser.names(u"tab"_s);
    selection.filter.accounts = parser.values(u"user"_s);
    selection.filter.text = parser.value(u"where"_s);
    if (const auto since = parser.span(u"since"_s))
        selection.filter.since = since->first;
    if (const auto until = parser.span(u"until"_s))
        selection.filter.until = until->last;
    return selection;
}

QString the_result(result_parser &parser, const QString &command)
{
    const QStringList results = parser.results();
    if (results.size() != 1)
        parser.refuse(u"%1 takes one RESULT, but %2 were given"_s.arg(command).arg(results.size()));
    return results.value(0);
}

std::optional<int> width_of(result_parser &parser)
{
    const auto width = parser.number(u"width"_s, 0);
    return width ? std::optional(int(std::min<qint64>(*width, 1 << 20))) : std::nullopt;
}

void check_view(result_parser &parser, const show_options &options)
{
    const bool is_view = options.shown != show_options::view::tables;
    if (is_view && options.rows.is_raw)
        parser.refuse(u"--raw shows tables as they are stored, and a view is made of them"_s);
    if (options.shown == show_options::view::programs && !options.rows.tabs.isEmpty())
        parser.refuse(u"--view programs joins all tables: --tab means nothing with it"_s);
    if (options.shown == show_options::view::timeline && options.sort)
        parser.refuse(u"--view timeline is in the order of time: --sort means nothing with it"_s);
    if (parser.is_set(u"descending"_s) && !options.sort)
        parser.refuse(u"--descending means nothing without --sort"_s);
}

show_options show_options_of(result_parser &parser)
{
    show_options options;
    options.result = the_result(parser, u"show"_s);
    options.rows = selection_of(parser);
    options.rows.is_raw = parser.is_set(u"raw"_s);
    options.shown = parser.word(u"view"_s, show_views);
    options.format = parser.word(u"format"_s, show_forms);
    options.columns = parser.names(u"columns"_s);
    if (parser.is_set(u"sort"_s))
        options.sort = {parser.value(u"sort"_s), parser.is_set(u"descending"_s)};
    options.limit = parser.number(u"limit"_s, 1);
    options.width = width_of(parser);
    options.may_page = !parser.is_set(u"no-pager"_s);
    check_view(parser, options);
    return options;
}

export_options export_options_of(result_parser &parser)
{
    export_options options;
    options.result = the_result(parser, u"export"_s);
    options.rows = selection_of(parser);
    options.rows.is_raw = parser.is_set(u"raw"_s);
    options.format = parser.word(u"format"_s, export_forms);
    options.directory = parser.value(u"to"_s);
    options.replaces = parser.is_set(u"replace"_s);
    options.byte_order_mark = parser.is_set(u"bom"_s);
    options.spreadsheet_safe = parser.is_set(u"spreadsheet-safe"_s);
    if (!parser.is_set(u"format"_s))
        parser.refuse(u"export needs a format: --format csv, jsonl, timeline, bodyfile or xlsx"_s);
    if (options.directory.isEmpty())
        parser.refuse(u"export needs a folder to write to: --to DIR"_s);
    const bool is_csv = options.format == export_options::form::csv;
    if (!is_csv && (options.byte_order_mark || options.spreadsheet_safe))
        parser.refuse(u"--bom and --spreadsheet-safe are for --format csv alone"_s);
    const bool is_time_line = options.format == export_options::form::timeline ||
                              options.format == export_options::form::body_file;
    if (is_time_line && options.rows.is_raw)
        parser.refuse(u"--raw is for tables, and this format has times alone"_s);
    return options;
}

compare_options compare_options_of(result_parser &parser)
{
    compare_options options;
    const QStringList given = parser.results();
    const QStringList sources = parser.values(u"source"_s);
    options.before = given.value(0);
    options.after = given.value(given.size() - 1);
    options.format = parser.word(u"format"_s, show_forms);
    options.width = width_of(parser);
    options.may_page = !parser.is_set(u"no-pager"_s);
    for (const QString &source : sources)
        options.sources.append(source.startsWith("Source"_L1) ? source : "Source"_L1 + source);
    if (given.isEmpty() || given.size() > 2)
        parser.refuse(
            u"compare takes RESULT_A and RESULT_B, but %1 were given"_s.arg(given.size()));
    else if (given.size() == 1 && sources.size() != 2)
        parser.refuse(u"compare takes two results, or one and two of its sources: --source 1 "
                      "--source 2"_s);
    else if (given.size() == 2 && !sources.isEmpty())
        parser.refuse(u"--source is for the sources of one result"_s);
    return options;
}

report_options report_options_of(result_parser &parser)
{
    report_options options;
    options.result = the_result(parser, u"report"_s);
    options.rows = selection_of(parser);
    options.file = parser.value(u"output"_s);
    options.replaces = parser.is_set(u"replace"_s);
    if (options.file.isEmpty() || options.file.endsWith(u'/'))
        parser.refuse(u"report needs a file to write: -o FILE"_s);
    return options;
}

const QStringList selecting_options{u"tab"_s, u"user"_s, u"where"_s, u"since"_s, u"until"_s};

command_line parsed(result_parser &parser, const QStringList &arguments, const QString &help,
                    result_options (*options_of)(result_parser &))
{
    parser.parse(arguments);
    if (!parser.misuse().isEmpty())
        return misused(parser.misuse());
    if (parser.is_set(u"help"_s))
        return {std::nullopt, help, exit_complete};
    const result_options options = options_of(parser);
    if (!parser.misuse().isEmpty())
        return misused(parser.misuse());
    command_line command;
    command.results = options;
    return command;
}

command_line parse_show(const QStringList &arguments)
{
    result_parser parser(selecting_options + QStringList{u"sort"_s, u"columns"_s, u"limit"_s,
                                                         u"format"_s, u"view"_s, u"width"_s},
                         {u"raw"_s, u"descending"_s, u"no-pager"_s});
    return parsed(parser, arguments, show_help_text(),
                  [](result_parser &read) { return result_options(show_options_of(read)); });
}

command_line parse_export(const QStringList &arguments)
{
    result_parser parser(selecting_options + QStringList{u"format"_s, u"to"_s},
                         {u"raw"_s, u"replace"_s, u"bom"_s, u"spreadsheet-safe"_s});
    return parsed(parser, arguments, export_help_text(),
                  [](result_parser &read) { return result_options(export_options_of(read)); });
}

command_line parse_compare(const QStringList &arguments)
{
    result_parser parser({u"source"_s, u"format"_s, u"width"_s}, {u"no-pager"_s});
    return parsed(parser, arguments, compare_help_text(),
                  [](result_parser &read) { return result_options(compare_options_of(read)); });
}

command_line parse_report(const QStringList &arguments)
{
    result_parser parser(selecting_options + QStringList{u"output"_s}, {u"replace"_s});
    return parsed(parser, arguments, report_help_text(),
                  [](result_parser &read) { return result_options(report_options_of(read)); });
}

using parse_function = command_line (*)(const QStringList &);

/// How the arguments of the command are read; null for other words.
parse_function parser_of(const QString &command)
{
    const QHash<QString, parse_function> parsers{{u"show"_s, parse_show},
                                                 {u"export"_s, parse_export},
                                                 {u"compare"_s, parse_compare},
                                                 {u"report"_s, parse_report}};
    return parsers.value(command);
}

} // namespace

bool is_result_command(const QString &word)
{
    return parser_of(word) != nullptr;
}

command_line parse_result_command(const QString &command, const QStringList &arguments)
{
    return parser_of(command)(arguments);
}
