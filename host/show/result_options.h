#ifndef RESULT_OPTIONS_H
#define RESULT_OPTIONS_H

#include <QString>
#include <QStringList>

#include <optional>
#include <variant>

#include "row_filter.h"
#include "sorted_rows.h"

/// Which rows of a result the examiner asked for.
struct row_selection
{
    QStringList tabs; ///< each once; empty for all
    results::row_filter filter;
    bool is_raw = false; ///< only what the database holds
};

/// What the examiner asked the `show` command for.
struct show_options
{
    enum class form
    {
        text,
        csv,
        json_lines
    };
    enum class view
    {
        tables,
        programs,
        timeline
    };

    QString result;
    row_selection rows;
    view shown = view::tables;
    form format = form::text;
    QStringList columns; ///< empty for those that are shown by default
    std::optional<results::sort_order> sort;
    std::optional<qint64> limit; ///< rows of each table
    std::optional<int> width;    ///< of a line; without it, that of the terminal
    bool may_page = true;
};

/// What the examiner asked the `export` command for.
struct export_options
{
    enum class form
    {
        csv,
        json_lines,
        timeline,
        body_file,
        xlsx
    };

    QString result;
    QString directory;
    form format = form::csv;
    row_selection rows;
    bool replaces = false;
    bool byte_order_mark = false;
    bool spreadsheet_safe = false;
};

/// What the examiner asked the `compare` command for.
struct compare_options
{
    QString before;
    QString after;       ///< the same text if two sources of one result are compared
    QStringList sources; ///< "Source1" and "Source2"; empty for all
    show_options::form format = show_options::form::text;
    std::optional<int> width;
    bool may_page = true;
};

/// What the examiner asked the `report` command for.
struct report_options
{
    QString result;
    QString file; ///< to be written
    row_selection rows;
    bool replaces = false;
};

/// One of the commands that look at results.
using result_options = std::variant<show_options, export_options, compare_options, report_options>;

#endif
