#include "result_help.h"

using namespace Qt::StringLiterals;

namespace {

const auto selection_help =
    uR"(  --tab NAME        Only this table. May be repeated, or be several with commas.
  --user NAME       Only rows of this account, in any letter case. May be
                    repeated.
  --where TEXT      Only rows that have TEXT in some cell, in any letter case.
  --since TIME      Only rows with a time at TIME or later ...
  --until TIME      ... and at TIME or earlier. A TIME is 2023-12-28,
                    2023-12-28T08:30 or 2023-12-28T08:30:44, in UTC unless a
                    zone follows (Z, +01:00). A day or a minute is all of it.
)"_s;

const auto raw_help =
    uR"(  --raw             Only the columns that the database has, no derived ones.
)"_s;

const auto result_help =
    uR"(RESULT is the folder that a run was given with --result, the folder of a
database, or the database. It is only read, also while a run writes to it.
)"_s;

const auto exit_code_help = uR"(
Exit codes:
  0    everything that was asked for was read and written
  1    rows are missing: the database is damaged or locked, or the output failed
  2    wrong use, such as an unknown table, column or account
  3    there is no result, or the database is none of this program
  4    the files cannot be written, or are there already)"_s;

} // namespace

QString show_help_text()
{
    return uR"(Usage: artifact_host show RESULT [options]

Shows the rows of a result: each table with the columns that a person needs,
known folders and applications by their names, times in UTC. Long cells are cut
with a mark; what could steer a terminal is escaped. On a terminal, what is
longer than the screen goes through $PAGER.

)"_s + result_help +
           uR"(
Options:
)"_s + selection_help +
           raw_help + uR"(  --columns NAMES   The columns to show, with commas between.
  --sort COLUMN     Sort each table by this column.
  --descending      With --sort: the largest first.
  --limit N         No more than N rows of each table.
  --view VIEW       tables, which is the default; programs: what was installed,
                    by whom it was run, how often and when; timeline: every time
                    of every row, in order.
  --format FORMAT   text, which is the default; csv or jsonl: every column, and
                    every cell as a whole. CSV of several tables has one header.
  --width N         Lines of at most N columns; 0: as long as they are.
  --no-pager        Write to the terminal itself.
  -h, --help        Shows this text.
)"_s + exit_code_help;
}

QString export_help_text()
{
    return uR"(Usage: artifact_host export RESULT --format FORMAT --to DIR [options]

Writes a result to files in DIR, which is made if it is missing:
  csv       TABLE.csv: RFC 4180, UTF-8, every stored column with what is derived
            of it beside it
  jsonl     TABLE.jsonl: one JSON object a row
  timeline  timeline.jsonl: every time of every row, for Timesketch
  bodyfile  bodyfile.txt: the same for mactime
  xlsx      a workbook with one sheet a table

)"_s + result_help +
           uR"(
Options:
  --format FORMAT   One of these.
  --to DIR          Where to write.
)"_s + selection_help +
           raw_help + uR"(  --replace         Write over files that are there. Without it, none is.
  --bom             csv: begin with the mark by which spreadsheets know UTF-8.
  --spreadsheet-safe
                    csv: put a ' before texts that a spreadsheet would take
                    for a formula. This alters them, so it must be asked for.
  -h, --help        Shows this text.
)"_s + exit_code_help;
}

QString compare_help_text()
{
    return uR"(Usage: artifact_host compare RESULT_A RESULT_B [options]
       artifact_host compare RESULT --source 1 --source 2 [options]

Tells what differs between an earlier state A and a later state B, by account:
programs that were installed, removed or upgraded, newly run or run again, and
entries that are gone. With two sources, compares these two of one result.

)"_s + result_help +
           uR"(
Options:
  --source N        A source of RESULT by its number. Given twice.
  --format FORMAT   text, which is the default; csv or jsonl.
  --width N         Lines of at most N columns; 0: as long as they are.
  --no-pager        Write to the terminal itself.
  -h, --help        Shows this text.
)"_s + exit_code_help;
}

QString report_help_text()
{
    return uR"(Usage: artifact_host report RESULT -o FILE [options]

Writes a report to FILE, for a browser: the facts of the run, what each table
proves and does not, pictures, programs and all tables with search, sorting,
accounts and a time line. It is one file that loads nothing and sends nothing.

)"_s + result_help +
           uR"(
Options:
  -o, --output FILE The file to write.
)"_s + selection_help +
           uR"(  --replace         Write over FILE if it is there. Without it, nothing is.
  -h, --help        Shows this text.
)"_s + exit_code_help;
}
