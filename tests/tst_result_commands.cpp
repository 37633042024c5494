#include "files.h"
#include "host_test.h"
#include "made_result.h"
#include "result_file.h"
#include "table_descriptions.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// The commands that show, export and compare results, as a process.
class tst_result_commands : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init() { begin_test(); }
    void show_tells_what_a_run_found();
    void the_next_command_of_a_run_works_as_it_stands();
    void show_takes_only_what_was_asked_for_data();
    void show_takes_only_what_was_asked_for();
    void show_prints_everything_for_programs();
    void show_pages_on_a_terminal();
    void show_escapes_csv_on_a_terminal();
    void export_writes_files_data();
    void export_writes_files();
    void export_overwrites_nothing_unasked();
    void export_writes_nothing_to_the_evidence();
    void tables_of_alike_names_get_files_of_their_own();
    void a_journal_that_is_no_file_is_refused();
    void compare_tells_what_differs();
    void notices_tell_of_the_run();
    void wrong_use_is_refused_data();
    void wrong_use_is_refused();
    void a_reader_that_goes_away_is_no_failure();
    void commands_explain_themselves_data();
    void commands_explain_themselves();

private:
    host_result run(const QStringList &arguments) const { return host_process().run(arguments); }
    QString extracted() const;
    QString made() const;
};

namespace {

const auto no_record = u"artifact_host: no run record tells how these rows came about"_s;

} // namespace

/// The result folder of a run over the small volume.
QString tst_result_commands::extracted() const
{
    const auto volume = small_volume();
    extract(*volume, {u"--quiet"_s});
    return result_path();
}

/// A database with a few rows.
QString tst_result_commands::made() const
{
    made_result made(folder_path(u"made.sqlite"_s));
    const auto executed = u"previously_executed_apps"_s;
    for (int i = 0; i < 3; ++i)
        made.add(executed, {{u"system_account"_s, i == 1 ? u"'marek'"_s : u"'anna'"_s},
                            {u"exename"_s, u"'program%1.exe'"_s.arg(i)},
                            {u"runcount"_s, QString::number(3 - i)},
                            {u"lastruntime"_s, QString::number(1703752244 + i * 86400)}});
    return made.path();
}

void tst_result_commands::show_tells_what_a_run_found()
{
    const host_result result =
        run({u"show"_s, extracted(), u"--tab"_s, u"metro_apps,uninstall_apps"_s});
    QCOMPARE(result.errors, QStringList());
    QCOMPARE(result.output,
             (QStringList{
                 u"uninstall_apps: UserAssist entries with \"uninstall\" in their names"_s,
                 u"system_account  INT  exename_resolved  runcount  lastruntime_utc"_s,
                 u"--------------  ---  ----------------  --------  ---------------"_s,
                 u"ann               1  uninstall.exe            0"_s,
                 u"(1 row)"_s,
                 QString(),
                 u"metro_apps: package folders of the accounts"_s,
                 u"system_account  INT  filename_package  filename_publisher_id  windows_path"_s,
                 u"--------------  ---  ----------------  ---------------------  "
                 "----------------------------------------------"_s,
                 u"ann               1                                           "
                 "C:\\Users\\ann\\AppData\\Local\\Packages\\Calculator"_s,
                 u"bob               2                                           "
                 "C:\\Users\\bob\\AppData\\Local\\Packages\\Weather"_s,
                 u"(2 rows)"_s,
             }));
    QCOMPARE(result.exit_code, 0);
}

void tst_result_commands::the_next_command_of_a_run_works_as_it_stands()
{
    const auto volume = small_volume();
    const QString folder = folder_path(u"it's a result"_s);
    const host_result result =
        run({u"extract"_s, volume->root(), u"--result"_s, folder, u"--quiet"_s});
    QCOMPARE(result.next_line,
             next_line(u"'"_s + QString(folder).replace(u"'"_s, u"'\\''"_s) + u"'"_s));
    QCOMPARE(run({u"show"_s, folder}).exit_code, 0);
}

void tst_result_commands::show_takes_only_what_was_asked_for_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("ids");
    QTest::newRow("all") << QStringList() << u"1 2 3"_s;
    QTest::newRow("an account in other letters") << QStringList{u"--user"_s, u"ANNA"_s} << u"1 3"_s;
    QTest::newRow("two accounts") << QStringList{u"--user"_s, u"anna"_s, u"--user"_s, u"marek"_s}
                                  << u"1 2 3"_s;
    QTest::newRow("a text") << QStringList{u"--where"_s, u"PROGRAM1"_s} << u"2"_s;
    QTest::newRow("from a day on") << QStringList{u"--since"_s, u"2023-12-29"_s} << u"2 3"_s;
    QTest::newRow("to the end of a day") << QStringList{u"--until"_s, u"2023-12-29"_s} << u"1 2"_s;
    QTest::newRow("a second in another zone")
        << QStringList{u"--since"_s, u"2023-12-29T09:30:44+01:00"_s, u"--until"_s,
                       u"2023-12-29T08:30:44Z"_s}
        << u"2"_s;
    QTest::newRow("the first ones") << QStringList{u"--limit"_s, u"2"_s} << u"1 2"_s;
    QTest::newRow("sorted") << QStringList{u"--sort"_s, u"runcount"_s} << u"3 2 1"_s;
    QTest::newRow("sorted, the largest first")
        << QStringList{u"--sort"_s, u"lastruntime_utc"_s, u"--descending"_s} << u"3 2 1"_s;
    QTest::newRow("sorted and filtered")
        << QStringList{u"--sort"_s, u"runcount"_s, u"--user"_s, u"anna"_s, u"--limit"_s, u"1"_s}
        << u"3"_s;
}

void tst_result_commands::show_takes_only_what_was_asked_for()
{
    QFETCH(const QStringList, options);
    const host_result result =
        run(QStringList{u"show"_s, made(), u"--tab"_s, u"previously_executed_apps"_s,
                        u"--columns"_s, u"INT"_s, u"--format"_s, u"csv"_s} +
            options);
    QStringList ids;
    for (const QString &line : result.output.mid(1))
        ids.append(line.section(u',', 1, 1));
    QTEST(ids.join(u' '), "ids");
    QCOMPARE(result.exit_code, 0);
}

void tst_result_commands::show_prints_everything_for_programs()
{
    const QString result = made();
    const host_result csv = run({u"show"_s, result, u"--format"_s, u"csv"_s});
    QCOMPARE(csv.output.size(), 4);
    QVERIFY(csv.output.first().contains("runcount,runcount_meaning"_L1));
    QVERIFY(csv.output.first().contains("install_date,install_date_iso"_L1));
    const host_result raw = run({u"show"_s, result, u"--format"_s, u"jsonl"_s, u"--raw"_s});
    QCOMPARE(raw.output.size(), 3);
    QVERIFY(!raw.output.first().contains("runcount_meaning"_L1));
    const host_result times =
        run({u"show"_s, result, u"--view"_s, u"timeline"_s, u"--format"_s, u"jsonl"_s});
    QVERIFY(times.output.first().startsWith(
        "{\"table\":\"timeline\",\"time\":1703752244,\"time_utc\":\"2023-12-28T08:30:44Z\""_L1));
    const host_result programs =
        run({u"show"_s, result, u"--view"_s, u"programs"_s, u"--columns"_s, u"program,run_count"_s,
             u"--format"_s, u"csv"_s, u"--sort"_s, u"run_count"_s});
    QCOMPARE(programs.output.value(1), u"programs,program2.exe,1,\r"_s);
}

void tst_result_commands::show_pages_on_a_terminal()
{
    if (const QString missing = host_process::missing_for_terminal(); !missing.isEmpty())
        QSKIP(qPrintable("This machine has no pseudo terminals: "_L1 + missing));
    const QString file = folder_path(u"paged"_s);
    const QString result = made();
    const auto shown = [&](const QStringList &more) {
        QFile::remove(file);
        host_process process;
        process.environment(u"PAGER"_s, u"cat > '%1'"_s.arg(file));
        return process.output_on_terminal(60, 10)
            .run(QStringList{u"show"_s, result} + more)
            .on_terminal;
    };
    const QStringList one_table{u"--tab"_s, u"previously_executed_apps"_s};
    QVERIFY(shown(one_table).contains("(3 rows)"));
    QVERIFY(!QFile::exists(file));
    QVERIFY(!shown({}).contains("(3 rows)"));
    const QByteArray paged = read_file(file);
    QVERIFY(paged.contains("(3 rows)"));
    for (const QByteArray &line : paged.split('\n'))
        QVERIFY2(QString::fromUtf8(line).size() <= 60 || line.contains(": "), line.constData());
    QVERIFY(shown({u"--no-pager"_s}).contains("(3 rows)"));
}

void tst_result_commands::show_escapes_csv_on_a_terminal()
{
    if (const QString missing = host_process::missing_for_terminal(); !missing.isEmpty())
        QSKIP(qPrintable("This machine has no pseudo terminals: "_L1 + missing));
    made_result made(folder_path(u"made.sqlite"_s));
    made.add(u"registered_apps"_s, {{u"key_name"_s, u"char(27) || '[2J'"_s}});
    const QStringList arguments{u"show"_s,     made.path(), u"--columns"_s, u"key_name"_s,
                                u"--format"_s, u"csv"_s,    u"--no-pager"_s};
    QVERIFY(host_process().output_on_terminal(80, 24).run(arguments).on_terminal.contains(
        "registered_apps,\\x1b[2J,"));
    QVERIFY(run(arguments).output.contains(u"registered_apps,\x1b[2J,\r"_s));
}

void tst_result_commands::export_writes_files_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QByteArray>("beginning");
    QStringList tables = results::described_tables();
    tables.sort();
    QTest::newRow("csv") << u"csv"_s << tables << QByteArray("table,bookmark,");
    QTest::newRow("jsonl") << u"jsonl"_s << tables << QByteArray("{\"table\":");
    QTest::newRow("timeline") << u"timeline"_s << QStringList{u"timeline.jsonl"_s}
                              << QByteArray("{\"message\":\"");
    QTest::newRow("bodyfile") << u"bodyfile"_s << QStringList{u"bodyfile.txt"_s}
                              << QByteArray("0|[");
    QTest::newRow("xlsx") << u"xlsx"_s << QStringList{u"Windows_Installed_Applications.xlsx"_s}
                          << QByteArray("PK");
}

void tst_result_commands::export_writes_files()
{
    QFETCH(const QString, format);
    QFETCH(QStringList, files);
    QFETCH(const QByteArray, beginning);
    if (files.size() > 1) {
        for (QString &file : files)
            file = file.section(u'.', 0, 0) + u'.' + format;
    }
    const QString target = folder_path(u"new/export"_s);
    const host_result result =
        run({u"export"_s, extracted(), u"--format"_s, format, u"--to"_s, target});
    QCOMPARE(result.errors, QStringList());
    QCOMPARE(result.exit_code, 0);
    QCOMPARE(QDir(target).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), files);
    QStringList told = result.output;
    told.sort();
    for (qsizetype i = 0; i < files.size(); ++i) {
        QCOMPARE(told.at(i), target + u'/' + files.at(i));
        const QByteArray content = read_file(told.at(i));
        // JSON Lines of a table without rows are none.
        const bool is_empty =
            format == "jsonl"_L1 && small_volume_rows(files.at(i).section(u'.', 0, 0)) == 0;
        QVERIFY(is_empty ? content.isEmpty() : content.startsWith(beginning));
    }
}

void tst_result_commands::export_overwrites_nothing_unasked()
{
    const QString result = made();
    const QString target = folder_path(u"export"_s);
    const QString file = target + "/registered_apps.csv"_L1;
    make_folder(target);
    write_file(file, "mine");
    const QStringList arguments{u"export"_s, result, u"--format"_s, u"csv"_s, u"--to"_s, target};
    const host_result refused = run(arguments);
    QCOMPARE(refused.errors.last(),
             u"artifact_host: %1 is there already; --replace writes over it"_s.arg(file));
    QCOMPARE(refused.exit_code, 4);
    QCOMPARE(QDir(target).entryList(QDir::Files), QStringList{u"registered_apps.csv"_s});
    QCOMPARE(read_file(file), QByteArray("mine"));
    QCOMPARE(run(arguments + QStringList{u"--replace"_s}).exit_code, 0);
    QVERIFY(read_file(file).startsWith("table,"));
    // A link is never written through.
    QVERIFY(QFile::remove(file));
    const QString other = folder_path(u"other"_s);
    write_file(other, "other");
    QVERIFY(QFile::link(other, file));
    QCOMPARE(run(arguments + QStringList{u"--replace"_s}).exit_code, 4);
    QCOMPARE(read_file(other), QByteArray("other"));
}

void tst_result_commands::export_writes_nothing_to_the_evidence()
{
    const auto volume = small_volume();
    extract(*volume, {u"--quiet"_s});
    const QStringList before = volume_snapshot(volume->root());
    const host_result result = run({u"export"_s, result_path(), u"--format"_s, u"csv"_s, u"--to"_s,
                                    volume->root() + "/Users/ann/export"_L1});
    QCOMPARE(result.exit_code, 4);
    QVERIFY(result.errors.last().contains("which is never written to"_L1));
    QCOMPARE(volume_snapshot(volume->root()), before);
}

void tst_result_commands::tables_of_alike_names_get_files_of_their_own()
{
    const QString result = made();
    for (const auto table : {"a/b"_L1, "a b"_L1, "A_B"_L1})
        execute(
            result,
            u"CREATE TABLE \"%1\" (INT INTEGER PRIMARY KEY, source_file, source_count_name)"_s.arg(
                table));
    const QString target = folder_path(u"export"_s);
    QCOMPARE(run({u"export"_s, result, u"--format"_s, u"csv"_s, u"--to"_s, target}).exit_code, 0);
    QStringList files = QDir(target).entryList(QDir::Files);
    files.sort();
    QCOMPARE(files.filter(QRegularExpression(u"^a_b"_s, QRegularExpression::CaseInsensitiveOption)),
             (QStringList{u"A_B-3.csv"_s, u"a_b-2.csv"_s, u"a_b.csv"_s}));
    QCOMPARE(run({u"export"_s, result, u"--format"_s, u"xlsx"_s, u"--to"_s, target}).exit_code, 0);
}

void tst_result_commands::a_journal_that_is_no_file_is_refused()
{
    const QString result = made();
    QCOMPARE(mkfifo(QFile::encodeName(result + "-journal"_L1).constData(), 0600), 0);
    const host_result refused = run({u"show"_s, result});
    QCOMPARE(
        refused.errors.last(),
        u"artifact_host: the result database cannot be read: %1-journal is no plain file"_s.arg(
            result));
    QCOMPARE(refused.exit_code, 3);
}

void tst_result_commands::compare_tells_what_differs()
{
    const QString before = made();
    const QString after = folder_path(u"after.sqlite"_s);
    QVERIFY(QFile::copy(before, after));
    execute(after, u"UPDATE previously_executed_apps SET runcount = 9 WHERE INT = 1"_s);
    execute(after, u"DELETE FROM previously_executed_apps WHERE INT = 2"_s);
    const host_result text = run({u"compare"_s, before, after});
    QCOMPARE(text.output,
             (QStringList{
                 u"changes: from the earlier state to the later one"_s,
                 u"change      system_account  subject       before  after  row_table              "
                 "   row_before  row_after  last_run_utc"_s,
                 u"----------  --------------  ------------  ------  -----  "
                 "------------------------  ----------  ---------  --------------------"_s,
                 u"run again   anna            program0.exe  3       9      "
                 "previously_executed_apps           1          1  2023-12-28T08:30:44Z"_s,
                 u"entry gone  marek           program1.exe  2              "
                 "previously_executed_apps           2"_s,
                 u"(2 rows)"_s,
             }));
    QCOMPARE(text.exit_code, 0);
    QCOMPARE(run({u"compare"_s, before, after, u"--format"_s, u"jsonl"_s}).output.size(), 2);
    execute(before, u"UPDATE previously_executed_apps SET source_count_name = 'Source2', "
                    "system_account = 'anna', exename = 'program0.exe' WHERE INT = 2"_s);
    const host_result sources = run({u"compare"_s, before, u"--source"_s, u"1"_s, u"--source"_s,
                                     u"2"_s, u"--format"_s, u"csv"_s});
    QCOMPARE(sources.output.size(), 3);
    QVERIFY(sources.output.contains(
        u"changes,entry gone,anna,program2.exe,1,,previously_executed_apps,3,,,,\r"_s));
}

void tst_result_commands::notices_tell_of_the_run()
{
    const QString result = extracted();
    QCOMPARE(run({u"show"_s, result}).errors, QStringList());
    QByteArray record = read_file(record_path());
    record.replace("\"outcome\": \"complete\"", "\"outcome\": \"running\"");
    write_file(record_path(), record);
    QVERIFY(run({u"show"_s, result})
                .errors.first()
                .endsWith(" has not ended, or was killed: rows may be missing"_L1));
    record.replace("\"outcome\": \"running\"", "\"outcome\": \"incomplete\"");
    write_file(record_path(), record);
    QVERIFY(run({u"show"_s, result})
                .errors.first()
                .endsWith(" ended as \"incomplete\": run.json tells what is missing"_L1));
    write_file(record_path(), "damaged");
    QVERIFY(run({u"show"_s, result})
                .errors.first()
                .endsWith("cannot be read: it is no record of runs"_L1));
    QVERIFY(QFile::remove(record_path()));
    QCOMPARE(run({u"show"_s, result}).errors, QStringList{no_record});
}

void tst_result_commands::wrong_use_is_refused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("reason");
    QTest::addColumn<int>("code");
    const auto show = [](const QStringList &more) {
        return QStringList{u"show"_s, u"RESULT"_s} + more;
    };
    QTest::newRow("no result") << QStringList{u"show"_s}
                               << u"show takes one RESULT, but 0 were given"_s << 2;
    QTest::newRow("nothing there")
        << QStringList{u"show"_s, u"/nowhere"_s} << u"result /nowhere does not exist"_s << 3;
    QTest::newRow("unknown option") << show({u"--frob"_s}) << u"Unknown option 'frob'."_s << 2;
    QTest::newRow("unknown tab") << show({u"--tab"_s, u"frob"_s})
                                 << u"unknown tab \"frob\"; there are %1"_s.arg(
                                        results::described_tables().join(", "_L1))
                                 << 2;
    QTest::newRow("unknown account") << show({u"--user"_s, u"eve"_s})
                                     << u"unknown account \"eve\"; there are anna, marek"_s << 2;
    QTest::newRow("unknown column")
        << show({u"--tab"_s, u"registered_apps"_s, u"--raw"_s, u"--columns"_s, u"frob"_s})
        << u"unknown column \"frob\"; there are bookmark, system_account, INT, key_name, value, "
           "reg_file, node_name, reg_path, arken_tag_value, notes_icon, tags_icon, "
           "os_scheme_display, source_count_name, source_file, artifacts_relation_source_file, "
           "notes"_s
        << 2;
    QTest::newRow("unknown column to sort by")
        << show({u"--view"_s, u"programs"_s, u"--sort"_s, u"exename"_s})
        << u"unknown column \"exename\"; there are program, version, publisher, system_account, "
           "state, run_count, shortcut_count, last_run, last_run_utc, uninstaller_last_run, "
           "uninstaller_last_run_utc, install_date, key_written, key_written_utc, location, "
           "joined_by, rows, source_count_name"_s
        << 2;
    QTest::newRow("unknown format") << show({u"--format"_s, u"pdf"_s})
                                    << u"unknown format \"pdf\"; there are text, csv, jsonl"_s << 2;
    QTest::newRow("no time") << show({u"--since"_s, u"monday"_s})
                             << u"--since takes a time such as 2023-12-28, 2023-12-28T08:30 or "
                                "2023-12-28T08:30:44+01:00, in UTC unless it says otherwise"_s
                             << 2;
    QTest::newRow("no number") << show({u"--limit"_s, u"0"_s})
                               << u"--limit takes a whole number from 1 on"_s << 2;
    QTest::newRow("raw view")
        << show({u"--view"_s, u"programs"_s, u"--raw"_s})
        << u"--raw shows tables as they are stored, and a view is made of them"_s << 2;
    QTest::newRow("export without a format")
        << QStringList{u"export"_s, u"RESULT"_s, u"--to"_s, u"x"_s}
        << u"export needs a format: --format csv, jsonl, timeline, bodyfile or xlsx"_s << 2;
    QTest::newRow("export to nowhere")
        << QStringList{u"export"_s, u"RESULT"_s, u"--format"_s, u"csv"_s}
        << u"export needs a folder to write to: --to DIR"_s << 2;
    QTest::newRow("spreadsheet-safe JSON")
        << QStringList{u"export"_s, u"RESULT"_s, u"--format"_s,          u"jsonl"_s,
                       u"--to"_s,   u"x"_s,      u"--spreadsheet-safe"_s}
        << u"--bom and --spreadsheet-safe are for --format csv alone"_s << 2;
    QTest::newRow("report to nowhere")
        << QStringList{u"report"_s, u"RESULT"_s} << u"report needs a file to write: -o FILE"_s << 2;
    QTest::newRow("report of an unknown tab")
        << QStringList{u"report"_s, u"RESULT"_s, u"-o"_s, u"/nowhere/x"_s, u"--tab"_s, u"frob"_s}
        << u"unknown tab \"frob\"; there are %1"_s.arg(results::described_tables().join(", "_L1))
        << 2;
    QTest::newRow("one result alone")
        << QStringList{u"compare"_s, u"RESULT"_s}
        << u"compare takes two results, or one and two of its sources: --source 1 --source 2"_s
        << 2;
    QTest::newRow("unknown source")
        << QStringList{u"compare"_s, u"RESULT"_s, u"--source"_s, u"1"_s, u"--source"_s, u"9"_s}
        << u"unknown source \"Source9\"; there are Source1"_s << 2;
}

void tst_result_commands::wrong_use_is_refused()
{
    QFETCH(QStringList, arguments);
    QFETCH(const QString, reason);
    QFETCH(const int, code);
    arguments.replaceInStrings(u"RESULT"_s, made());
    const host_result result = run(arguments);
    QCOMPARE(result.errors.last(), "artifact_host: "_L1 + reason);
    QCOMPARE(result.output, QStringList());
    QCOMPARE(result.exit_code, code);
}

void tst_result_commands::a_reader_that_goes_away_is_no_failure()
{
    const QString file = made();
    execute(file, u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < "
                  "30000) INSERT INTO previously_executed_apps(exename) SELECT i FROM n"_s);
    host_process process;
    process.under({u"sh"_s, u"-c"_s, u"\"$@\" | head -n 1; exit 0"_s, u"sh"_s});
    const host_result result = process.run({u"show"_s, file, u"--format"_s, u"jsonl"_s});
    QCOMPARE(result.output.size(), 1);
    QCOMPARE(result.errors, QStringList{no_record});
    if (QFile::exists(u"/dev/full"_s)) {
        host_process full;
        full.under({u"sh"_s, u"-c"_s, u"exec \"$@\" > /dev/full"_s, u"sh"_s});
        const host_result failed = full.run({u"show"_s, file});
        QCOMPARE(failed.errors.last(), u"artifact_host: the output cannot be written as a whole"_s);
        QCOMPARE(failed.exit_code, 1);
    }
}

void tst_result_commands::commands_explain_themselves_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("usage");
    QTest::newRow("show") << u"show"_s << u"Usage: artifact_host show RESULT [options]"_s;
    QTest::newRow("export")
        << u"export"_s
        << u"Usage: artifact_host export RESULT --format FORMAT --to DIR [options]"_s;
    QTest::newRow("compare") << u"compare"_s
                             << u"Usage: artifact_host compare RESULT_A RESULT_B [options]"_s;
    QTest::newRow("report") << u"report"_s
                            << u"Usage: artifact_host report RESULT -o FILE [options]"_s;
}

void tst_result_commands::commands_explain_themselves()
{
    QFETCH(const QString, command);
    const host_result result = run({command, u"--help"_s});
    QTEST(result.output.first(), "usage");
    QVERIFY(result.output.contains(u"  3    there is no result, or the database is none of this "
                                   "program"_s));
    for (const QString &line : result.output)
        QVERIFY2(line.size() <= 80, qPrintable(line));
    QCOMPARE(result.exit_code, 0);
}

TEST_MAIN(tst_result_commands)
#include "tst_result_commands.moc"
