#ifndef LOOKED_AT_RESULT_H
#define LOOKED_AT_RESULT_H

#include <memory>
#include <optional>

#include "exit_code.h"
#include "opened_result.h"
#include "recorded_runs.h"
#include "result_options.h"
#include "result_place.h"

/// A result that a command reads, with the record of its runs; or why it cannot.
struct looked_at_result
{
    results::result_place place;
    results::recorded_runs record;
    std::unique_ptr<results::opened_result> result;
    QStringList remarks; ///< what the examiner has to know of it
    std::optional<refusal> refused;
};

/// Opens the result at `path`. Prints what the examiner has to know of it: that its last run did
/// not end well, or that the database is of another version.
looked_at_result look_at(const QString &path);

/// The tables that the selection names, in the result's order; why there are none, if one is
/// unknown.
struct selected_tables
{
    QStringList tables;
    std::optional<refusal> refused;
};

selected_tables select_tables(const results::opened_result &result, const row_selection &selection);

/// Why the accounts that the selection names are none of these tables; nothing if they are.
std::optional<refusal> check_accounts(const results::opened_result &result,
                                      const QStringList &tables, const QStringList &accounts);

/// Prints that rows were written to the result while it was read, if there were any.
void tell_of_changes(const results::opened_result &result);

#endif
