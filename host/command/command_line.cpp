#include "command_line.h"

#include <QCommandLineParser>

#include "host_version.h"
#include "result_command_line.h"

using namespace Qt::StringLiterals;

namespace {

const auto general_help = uR"(Usage: artifact_host extract SOURCE --result DIR [options]
       artifact_host volumes SOURCE [options]
       artifact_host recover HIVE COPY [options]
       artifact_host show RESULT [options]
       artifact_host export RESULT --format FORMAT --to DIR [options]
       artifact_host compare RESULT_A RESULT_B [options]
       artifact_host report RESULT -o FILE [options]

Lists the installed, registered, run, uninstalled and hidden applications of a
Windows volume in a SQLite database.

Commands:
  extract        Reads the volume mounted or extracted at SOURCE.
  volumes        Lists the volumes in SOURCE and what would be read of them.
  recover        Applies a hive's transaction logs to a private copy.
  show           Shows the rows of a result: tables, programs, a time line.
  export         Writes a result as CSV, JSON Lines, time line or workbook.
  compare        Tells what differs between two results.
  report         Writes a result as one page for a browser.

Options:
  -h, --help     Shows this text; "artifact_host COMMAND --help" tells more.
  -v, --version  Shows the version.

)"_s;

const auto extract_help = uR"(Usage: artifact_host extract SOURCE --result DIR [options]

Reads the Windows volume mounted or extracted at SOURCE, or in a folder some
levels below, as triage collectors write it. SOURCE is never written to. Fills
DIR/Artifacts_Result/Windows_Installed_Applications/
Windows_Installed_Applications.sqlite. Standard output tells the rows of each
tab, their total and, last, the path of the database. Progress and warnings go
to standard error, many warnings summed up. Ctrl-C stops the run and keeps the
rows written so far; a second one ends the program at once.

Beside the database, run.json tells of each run: what was asked for, what was
read with its SHA-256 before and after, every warning, rows, times and outcome.
A second run of the same source replaces the rows of its tabs. Results of
another source, of another version, or without run.json are refused, unless
--add or --replace tells what shall become of them.

A run reads all the evidence there is: files in whatever letter case their names
are spelt, texts decoded by their registry type, programs that were installed
for one user only, and the accounts of Windows 2000 to 2003. Of a hive that was
not closed cleanly it reads a copy in DIR to which the changes in its transaction
logs are applied. With --like-the-suite a run gives what the plug-in gives in a
forensics suite, to the letter, and warns of what that leaves out. A line on
standard error tells how the run has read.

Options:
  --result DIR      Folder for the results; created if missing, never in SOURCE.
  --volume NAME     Volume to read if SOURCE holds several; "artifact_host
                    volumes SOURCE" lists them.
  --user NAME       Account to read: the name of its folder in Users, in any
                    letter case. May be repeated. Without it, all that hold an
                    NTUSER.DAT or a package folder.
  --tab NAME        Tab to fill. May be repeated. Without it, all%1
  --debug-log FILE  Append the plug-in's debug log to FILE.
  --plugin FILE     Plug-in library to load. Without it, the one beside this
                    program, or in ../plugin or ../lib from there.
  --like-the-suite  Read only what the plug-in reads in a forensics suite.
  --no-replay       Read hives that were not closed cleanly as they lie, without
                    the changes in their transaction logs.
  --deleted         Look for deleted records in the hives besides. What is found
                    goes into a database of its own beside the result.
  --add             Keep the rows that the result folder holds and add those of
                    this source, with the next number: Source2, Source3, ...
  --replace         Make the database anew, whatever it holds.
  --force           With --add: add the rows of a source once more that is there
                    already, with the number that it has.
  --keep-rows       The same as --add --force.
  --wait SECONDS    Wait so long for another run in the result folder, and for a
                    database that is locked. Without it, not at all.
  --no-hashes       Do not read the hives for their SHA-256.
  --quiet           Show no progress, nor failures as they come.
  -h, --help        Shows this text.

)"_s;

const auto volumes_help = uR"(Usage: artifact_host volumes SOURCE [options]

Lists the Windows volumes in SOURCE and what a run would read of each: its
accounts, its registry hives with their size, the time of their last change in
the file system and by Windows, and their state, and its package folders.
Nothing is written. Warnings about what would not be read go to standard error.

Options:
  --volume NAME     The volume to list. Without it, all.
  --like-the-suite  List what a run with this option would read.
  -h, --help        Shows this text.

)"_s;

const auto recover_help = uR"(Usage: artifact_host recover HIVE COPY [options]

Writes to COPY what Windows would have after loading the registry hive HIVE: the
changes in its transaction logs are applied. HIVE and its logs are only read. COPY
must not exist, and must lie neither in the volume of HIVE nor in the folder of
HIVE or of a log. Standard output tells what became of each log, how many keys were
added, changed and removed, and the SHA-256 of the copy. If the hive was closed
cleanly or no log applies, no copy is written.

Options:
  --log FILE        Transaction log to apply. May be repeated. Without it, the
                    .LOG, .LOG1 and .LOG2 beside HIVE in whatever letter case.
  --list            Name each key that was added, changed or removed.
  -h, --help        Shows this text.

)"_s;

const auto exit_code_help = uR"(Exit codes:
  0    the run is complete: everything selected was read and written
  1    the run failed, or rows are missing from the database
  2    wrong use, such as an unknown tab, account or volume
  3    the source, or the result to look at, cannot be read
  4    the result folder or the debug log cannot be written, is in use, or holds
       results that the run would mix with
  5    the plug-in cannot be loaded
  6    the run is complete but for what the warnings list: something of the
       evidence could not be read, or not as a whole
  7    nothing to recover: the hive was closed cleanly, or no log applies
  130  the run was cancelled; the rows written before are kept)"_s;

command_line shown(const QString &text)
{
    return {std::nullopt, text, exit_complete};
}

command_line misused(const QString &reason)
{
    return {std::nullopt, reason, exit_usage};
}

constexpr int most_wait_seconds = 86'400;

/// An account is the name of a folder in "Users/". Any other text would lead elsewhere.
bool is_path_component(const QString &name)
{
    return !name.isEmpty() && name != "."_L1 && name != ".."_L1 && !name.contains(u'/') &&
           !name.contains(QChar::Null);
}

/// What is wrong with the values given, or an empty text.
QString misuse_of(const extract_options &options)
{
    for (const QString &user : options.users) {
        if (!is_path_component(user))
            return u"\"%1\" is no account name: give the name of a folder in SOURCE/Users"_s.arg(
                user);
    }
    return {};
}

/// The options of `artifact_host extract`, declared and read.
class extract_parser
{
public:
    extract_parser()
    {
        m_parser.addOptions({m_result, m_user, m_tab, m_debug_log, m_plugin, m_quiet, m_help});
        m_parser.addOptions({m_replace, m_add, m_force, m_keep_rows, m_wait, m_no_hashes});
        m_parser.addOptions({m_volume, m_like_the_suite, m_no_replay, m_deleted});
    }

    command_line parse(const QStringList &arguments)
    {
        m_arguments = QStringList(u"extract"_s) + arguments;
        // The parser expects the program's name as the first argument.
        if (!m_parser.parse(QStringList(u"artifact_host"_s) + arguments))
            return misused(m_parser.errorText());
        if (m_parser.isSet(m_help))
            return {std::nullopt, {}, exit_complete, std::nullopt, m_parser.value(m_plugin)};
        const QStringList sources = m_parser.positionalArguments();
        if (sources.size() != 1)
            return misused(u"extract takes one SOURCE, but %1 were given"_s.arg(sources.size()));
        if (!m_parser.isSet(m_result))
            return misused(u"extract needs a result folder: --result DIR"_s);
        for (const QCommandLineOption &option : {m_result, m_debug_log, m_plugin, m_volume}) {
            if (m_parser.isSet(option) && m_parser.value(option).isEmpty())
                return misused(u"--%1 was given an empty path"_s.arg(option.names().first()));
        }
        if (const QString misuse = misuse_of_results(); !misuse.isEmpty())
            return misused(misuse);
        return checked(options_for(sources.first()));
    }

private:
    extract_options options_for(const QString &source) const
    {
        extract_options options;
        options.arguments = m_arguments;
        options.source = source;
        options.result_directory = m_parser.value(m_result);
        options.users = m_parser.values(m_user);
        options.users.removeDuplicates();
        options.tabs = m_parser.values(m_tab);
        options.debug_log = m_parser.value(m_debug_log);
        options.plugin_file = m_parser.value(m_plugin);
        options.results = wish_for_earlier_results();
        options.wait_seconds = m_parser.value(m_wait).toInt();
        options.hashes = !m_parser.isSet(m_no_hashes);
        options.deleted = m_parser.isSet(m_deleted);
        options.quiet = m_parser.isSet(m_quiet);
        options.volume = m_parser.value(m_volume);
        if (m_parser.isSet(m_like_the_suite))
            options.reading = {};
        if (m_parser.isSet(m_no_replay))
            options.reading.replay_logs = false;
        return options;
    }

    earlier_results_wish wish_for_earlier_results() const
    {
        const bool keeps_rows = m_parser.isSet(m_keep_rows);
        return {m_parser.isSet(m_replace), m_parser.isSet(m_add) || keeps_rows,
                m_parser.isSet(m_force) || keeps_rows};
    }

    /// What is wrong with options that concern the results, or an empty text.
    QString misuse_of_results() const
    {
        const earlier_results_wish wish = wish_for_earlier_results();
        bool is_number = true;
        const int seconds = m_parser.isSet(m_wait) ? m_parser.value(m_wait).toInt(&is_number) : 0;
        if (!is_number || seconds < 0 || seconds > most_wait_seconds)
            return u"--wait takes whole seconds, up to %1"_s.arg(most_wait_seconds);
        if (wish.replace && wish.add)
            return u"--replace gives up the rows that --add and --keep-rows keep: give one of them"_s;
        if (wish.add_same_again && !wish.add)
            return u"--force means nothing without --add"_s;
        return {};
    }

    static command_line checked(const extract_options &options)
    {
        const QString misuse = misuse_of(options);
        if (!misuse.isEmpty())
            return misused(misuse);
        return {options, {}, exit_complete};
    }

    QCommandLineParser m_parser;
    QStringList m_arguments;
    const QCommandLineOption m_result{u"result"_s, {}, u"DIR"_s};
    const QCommandLineOption m_user{u"user"_s, {}, u"NAME"_s};
    const QCommandLineOption m_tab{u"tab"_s, {}, u"NAME"_s};
    const QCommandLineOption m_debug_log{u"debug-log"_s, {}, u"FILE"_s};
    const QCommandLineOption m_plugin{u"plugin"_s, {}, u"FILE"_s};
    const QCommandLineOption m_replace{u"replace"_s};
    const QCommandLineOption m_add{u"add"_s};
    const QCommandLineOption m_force{u"force"_s};
    const QCommandLineOption m_keep_rows{u"keep-rows"_s};
    const QCommandLineOption m_wait{u"wait"_s, {}, u"SECONDS"_s};
    const QCommandLineOption m_no_hashes{u"no-hashes"_s};
    const QCommandLineOption m_quiet{u"quiet"_s};
    const QCommandLineOption m_volume{u"volume"_s, {}, u"NAME"_s};
    const QCommandLineOption m_like_the_suite{u"like-the-suite"_s};
    const QCommandLineOption m_no_replay{u"no-replay"_s};
    const QCommandLineOption m_deleted{u"deleted"_s};
    const QCommandLineOption m_help{{u"h"_s, u"help"_s}};
};

/// Parses the arguments of a command. Returns what they end with at once: the help that they ask
/// for, or what is wrong with an option.
std::optional<command_line> ended_at_options(QCommandLineParser &parser,
                                             const QStringList &arguments, const QString &help_text)
{
    const QCommandLineOption help{{u"h"_s, u"help"_s}};
    parser.addOption(help);
    // The parser expects the program's name as the first argument.
    if (!parser.parse(QStringList(u"artifact_host"_s) + arguments))
        return misused(parser.errorText());
    if (parser.isSet(help))
        return shown(help_text + exit_code_help);
    return std::nullopt;
}

command_line parse_volumes(const QStringList &arguments)
{
    const QCommandLineOption volume{u"volume"_s, {}, u"NAME"_s};
    const QCommandLineOption like_the_suite{u"like-the-suite"_s};
    QCommandLineParser parser;
    parser.addOptions({volume, like_the_suite});
    if (const auto ended = ended_at_options(parser, arguments, volumes_help))
        return *ended;
    const QStringList sources = parser.positionalArguments();
    if (sources.size() != 1)
        return misused(u"volumes takes one SOURCE, but %1 were given"_s.arg(sources.size()));
    if (parser.isSet(volume) && parser.value(volume).isEmpty())
        return misused(u"--volume was given an empty path"_s);
    volumes_options options{sources.first(), parser.value(volume)};
    if (parser.isSet(like_the_suite))
        options.reading = {};
    return {std::nullopt, {}, exit_complete, options};
}

command_line parse_recover(const QStringList &arguments)
{
    const QCommandLineOption log{u"log"_s, {}, u"FILE"_s};
    const QCommandLineOption list{u"list"_s};
    QCommandLineParser parser;
    parser.addOptions({log, list});
    if (const auto ended = ended_at_options(parser, arguments, recover_help))
        return *ended;
    const QStringList files = parser.positionalArguments();
    if (files.size() != 2)
        return misused(u"recover takes HIVE and COPY, but %1 files were given"_s.arg(files.size()));
    if (files.contains(QString()) || parser.values(log).contains(QString()))
        return misused(u"recover was given an empty path"_s);
    command_line command;
    command.recover = {files.first(), files.last(), parser.values(log), parser.isSet(list)};
    return command;
}

} // namespace

QString extract_help_text(const QStringList &tabs)
{
    const QString indent = u"\n                    "_s;
    return extract_help.arg(tabs.isEmpty() ? u"."_s : " of:"_L1 + indent + tabs.join(indent)) +
           exit_code_help;
}

command_line parse_command_line(const QStringList &arguments)
{
    const QString first = arguments.value(0);
    if (first == "extract"_L1)
        return extract_parser().parse(arguments.mid(1));
    if (first == "volumes"_L1)
        return parse_volumes(arguments.mid(1));
    if (first == "recover"_L1)
        return parse_recover(arguments.mid(1));
    if (is_result_command(first))
        return parse_result_command(first, arguments.mid(1));
    if (first == "--help"_L1 || first == "-h"_L1)
        return shown(general_help + exit_code_help);
    if (first == "--version"_L1 || first == "-v"_L1)
        return shown(u"artifact_host "_s + host_version());
    if (first.isEmpty())
        return misused(u"no command given; see artifact_host --help"_s);
    return misused(u"unknown command \"%1\"; see artifact_host --help"_s.arg(first));
}
