#include "log_capture.h"
#include "log_line.h"
#include "result_database.h"
#include "run_context_backup.h"
#include "scripted_driver.h"
#include "sqlite_helpers.h"
#include "test_main.h"

#include "plugin_static_function.h"

#include <QRegularExpression>
#include <QSqlDatabase>
#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;
using namespace test_support;

namespace {

using library = plugin_static_function;

QStringList helper_lines(const sqlite_helper &tested, const QStringList &openings,
                         const QStringList &values)
{
    QStringList lines;
    for (qsizetype index = 0; index < openings.size(); ++index)
        lines.append(
            library_line(QString::fromLatin1(tested.name), openings.at(index) + values.at(index)));
    return lines;
}

QStringList with_start(const sqlite_helper &tested, const QStringList &lines)
{
    return tested.lists
               ? QStringList(library_line(QString::fromLatin1(tested.name), u" Start "_s)) + lines
               : lines;
}

// A statement in the form that the helper can run: one with a placeholder when it binds values.
QString statement(const sqlite_helper &tested, const QString &table)
{
    return u"SELECT name FROM "_s + table + (tested.binds ? u" WHERE name LIKE ?"_s : QString()) +
           (table == "fruit"_L1 ? u" ORDER BY rowid"_s : QString());
}

QStringList bind_values(const sqlite_helper &tested)
{
    return tested.binds ? QStringList{u"%p%"_s} : QStringList();
}

using helper_choice = bool (*)(const sqlite_helper &);

bool any(const sqlite_helper & /*tested*/)
{
    return true;
}

bool opens_itself(const sqlite_helper &tested)
{
    return tested.how == helper_reach::by_path;
}

bool names_its_connection(const sqlite_helper &tested)
{
    return !tested.connection_prefix.isEmpty();
}

bool binds_values(const sqlite_helper &tested)
{
    return tested.binds;
}

bool lists_rows(const sqlite_helper &tested)
{
    return tested.lists;
}

void add_rows(helper_choice is_chosen)
{
    QTest::addColumn<int>("index");
    for (int index = 0; index < sqlite_helpers().size(); ++index) {
        if (is_chosen(sqlite_helpers().at(index)))
            QTest::newRow(sqlite_helpers().at(index).name) << index;
    }
}

} // namespace

// The family of helpers that run a statement.
class tst_sqlite_commands : public QObject
{
    Q_OBJECT

private slots:
    void init() { context.emplace(); }
    void cleanup() { context.reset(); }
    void good_statement_succeeds_data() { add_rows(any); }
    void good_statement_succeeds();
    void bad_statement_logs_four_lines_data() { add_rows(any); }
    void bad_statement_logs_four_lines();
    void too_many_bind_values_fail_data() { add_rows(binds_values); }
    void too_many_bind_values_fail();
    void database_that_does_not_open_logs_three_lines_data() { add_rows(opens_itself); }
    void database_that_does_not_open_logs_three_lines();
    void cancel_before_binding_stops_without_a_line_data() { add_rows(binds_values); }
    void cancel_before_binding_stops_without_a_line();
    void cancel_between_rows_returns_the_rows_so_far_data() { add_rows(lists_rows); }
    void cancel_between_rows_returns_the_rows_so_far();
    void execute_helper_changes_the_database();
    void bind_values_are_bound_in_order();
    void path_helper_names_its_connection_after_the_caller_data()
    {
        add_rows(names_its_connection);
    }
    void path_helper_names_its_connection_after_the_caller();
    void path_helper_closes_its_connection_after_a_failed_statement_data()
    {
        add_rows(names_its_connection);
    }
    void path_helper_closes_its_connection_after_a_failed_statement();
    void path_helper_replaces_the_connection_of_an_earlier_call();
    void list_helper_leaves_no_connection_behind_data() { add_rows(lists_rows); }
    void list_helper_leaves_no_connection_behind();
    void no_rows_still_log_start_and_end();
    void column_is_chosen_and_null_is_empty();

private:
    std::optional<run_context_backup> context;
};

void tst_sqlite_commands::good_statement_succeeds()
{
    QFETCH(const int, index);
    const sqlite_helper &tested = sqlite_helpers().at(index);
    const fruit_database fruit;
    const log_capture log;
    helper_request asked = fruit.make(statement(tested, u"fruit"_s), bind_values(tested));
    QCOMPARE(tested.call(asked),
             tested.lists ? (QStringList{u"apple"_s, u"pear"_s, u"Plum"_s}) : as_list(true));
    QCOMPARE(log.lines(),
             tested.lists ? with_start(tested, helper_lines(tested, {tested.end_line}, {QString()}))
                          : QStringList());
    QVERIFY(fruit.database.isOpen());
}

void tst_sqlite_commands::bad_statement_logs_four_lines()
{
    QFETCH(const int, index);
    const sqlite_helper &tested = sqlite_helpers().at(index);
    const fruit_database fruit;
    const log_capture log;
    const QString command = statement(tested, u"vegetables"_s);
    helper_request asked = fruit.make(command, bind_values(tested));
    QCOMPARE(tested.call(asked), tested.lists ? QStringList() : as_list(false));
    QCOMPARE(
        log.lines(),
        with_start(tested, helper_lines(tested, tested.query_failure,
                                        {fruit.path(), helpers_caller, command,
                                         fruit.execution_error(command, bind_values(tested))})));
    QVERIFY(!fruit.execution_error(command, bind_values(tested)).isEmpty());
}

void tst_sqlite_commands::too_many_bind_values_fail()
{
    QFETCH(const int, index);
    const sqlite_helper &tested = sqlite_helpers().at(index);
    const fruit_database fruit;
    const log_capture log;
    helper_request asked = fruit.make(statement(tested, u"fruit"_s), {u"a"_s, u"b"_s});
    QCOMPARE(tested.call(asked), tested.lists ? QStringList() : as_list(false));
    const QStringList lines = log.messages();
    QCOMPARE(lines.size(), tested.lists ? 5 : 4);
    QVERIFY(lines.last().startsWith(tested.query_failure.last()));
}

void tst_sqlite_commands::database_that_does_not_open_logs_three_lines()
{
    QFETCH(const int, index);
    const sqlite_helper &tested = sqlite_helpers().at(index);
    const fruit_database fruit;
    const log_capture log;
    helper_request asked = fruit.make(statement(tested, u"fruit"_s), bind_values(tested));
    asked.path = fruit.absent_path();
    QCOMPARE(tested.call(asked), tested.lists ? QStringList() : as_list(false));
    QCOMPARE(log.lines(), with_start(tested, helper_lines(tested, tested.open_failure,
                                                          {fruit.absent_path(), helpers_caller,
                                                           fruit.open_error()})));
}

void tst_sqlite_commands::cancel_before_binding_stops_without_a_line()
{
    QFETCH(const int, index);
    const sqlite_helper &tested = sqlite_helpers().at(index);
    const fruit_database fruit;
    const log_capture log;
    library::set_cancel_extraction(true);
    helper_request asked = fruit.make(statement(tested, u"fruit"_s), bind_values(tested));
    QCOMPARE(tested.call(asked), tested.lists ? QStringList() : as_list(false));
    QCOMPARE(log.lines(), with_start(tested, {}));
    if (!tested.connection_prefix.isEmpty())
        QVERIFY(QSqlDatabase::database(tested.connection_prefix + helpers_caller, false).isOpen());
    library::set_cancel_extraction(false);
    QCOMPARE(tested.call(asked).isEmpty(), false);
}

void tst_sqlite_commands::cancel_between_rows_returns_the_rows_so_far()
{
    QFETCH(const int, index);
    const sqlite_helper &tested = sqlite_helpers().at(index);
    // Its third row comes together with the user's cancel.
    const scripted_driver_registration driver(
        {u"first"_s, u" second "_s, u"third"_s},
        [](qsizetype row) { library::set_cancel_extraction(row == 2); });
    const log_capture log;
    helper_request asked = {good_command, {}, u"scripted"_s, driver.database()};
    QCOMPARE(tested.call(asked), (QStringList{u"first"_s, u"second"_s}));
    QCOMPARE(log.lines(), with_start(tested, {}));
}

void tst_sqlite_commands::execute_helper_changes_the_database()
{
    const fruit_database fruit;
    QVERIFY(library::execute_db_command_by_dbpath(u"DELETE FROM fruit WHERE weight = 1"_s,
                                                  fruit.path(), helpers_caller));
    QCOMPARE(result_database(fruit.path()).row_count(u"fruit"_s), 2);
    QSqlDatabase database = fruit.database;
    QVERIFY(library::execute_db_command_by_dbreference(u"DELETE FROM fruit"_s, database,
                                                       helpers_caller));
    QCOMPARE(result_database(fruit.path()).row_count(u"fruit"_s), 0);
}

void tst_sqlite_commands::bind_values_are_bound_in_order()
{
    const fruit_database fruit;
    const QString insert = u"INSERT INTO fruit (name, weight) VALUES (?, ?)"_s;
    QVERIFY(library::execute_db_command_with_addbindvalue_by_dbpath(
        insert, {u"fig'; DROP TABLE fruit; --"_s, u"7"_s}, fruit.path(), helpers_caller));
    QSqlDatabase database = fruit.database;
    QVERIFY(library::execute_db_command_with_addbindvalue_by_dbreference(
        insert, {u"kiwi"_s, u"8"_s}, database, helpers_caller));
    QCOMPARE(result_database(fruit.path()).rows(u"fruit"_s, {u"name"_s, u"weight"_s}).mid(3),
             (QList<QStringList>{{u"fig'; DROP TABLE fruit; --"_s, u"7"_s}, {u"kiwi"_s, u"8"_s}}));
}

void tst_sqlite_commands::path_helper_names_its_connection_after_the_caller()
{
    QFETCH(const int, index);
    const sqlite_helper &tested = sqlite_helpers().at(index);
    const fruit_database fruit;
    const QString connection_name = tested.connection_prefix + helpers_caller;
    QSqlDatabase::removeDatabase(connection_name);
    helper_request asked = fruit.make(statement(tested, u"fruit"_s), bind_values(tested));
    QCOMPARE(tested.call(asked), as_list(true));
    QVERIFY(QSqlDatabase::contains(connection_name));
    QVERIFY(!QSqlDatabase::database(connection_name, false).isOpen());
}

void tst_sqlite_commands::path_helper_closes_its_connection_after_a_failed_statement()
{
    QFETCH(const int, index);
    const sqlite_helper &tested = sqlite_helpers().at(index);
    const fruit_database fruit;
    helper_request asked = fruit.make(statement(tested, u"vegetables"_s), bind_values(tested));
    QCOMPARE(tested.call(asked), as_list(false));
    const QString connection_name = tested.connection_prefix + helpers_caller;
    QCOMPARE(QSqlDatabase::database(connection_name, false).databaseName(), fruit.path());
    QVERIFY(!QSqlDatabase::database(connection_name, false).isOpen());
}

void tst_sqlite_commands::path_helper_replaces_the_connection_of_an_earlier_call()
{
    const fruit_database first;
    QTest::failOnWarning(QRegularExpression(u".*"_s));
    const QString connection_name =
        u"static bool plugin_static_function::execute_db_command_by_dbpath(QString, QString, QString)"_s +
        helpers_caller;
    QVERIFY(
        !library::execute_db_command_by_dbpath(good_command, first.absent_path(), helpers_caller));
    QVERIFY(library::execute_db_command_by_dbpath(good_command, first.path(), helpers_caller));
    QCOMPARE(QSqlDatabase::database(connection_name, false).databaseName(), first.path());
}

void tst_sqlite_commands::list_helper_leaves_no_connection_behind()
{
    QFETCH(const int, index);
    const sqlite_helper &tested = sqlite_helpers().at(index);
    const fruit_database fruit;
    const QStringList before = QSqlDatabase::connectionNames();
    helper_request good = fruit.make(statement(tested, u"fruit"_s), bind_values(tested));
    helper_request bad = fruit.make(statement(tested, u"vegetables"_s), bind_values(tested));
    helper_request absent = good;
    absent.path = fruit.absent_path();
    for (helper_request *asked : {&good, &bad, &absent})
        tested.call(*asked);
    QCOMPARE(QSqlDatabase::connectionNames(), before);
}

void tst_sqlite_commands::no_rows_still_log_start_and_end()
{
    const fruit_database fruit;
    const log_capture log;
    QCOMPARE(library::get_stringlist_from_db_by_dbpath(u"SELECT name FROM fruit WHERE weight > 9"_s,
                                                       0, fruit.path(), helpers_caller),
             QStringList());
    QCOMPARE(log.messages(), (QStringList{u" Start "_s, u" end "_s}));
}

void tst_sqlite_commands::column_is_chosen_and_null_is_empty()
{
    const fruit_database fruit;
    QCOMPARE(
        library::get_stringlist_from_db_by_dbpath(
            u"SELECT name, weight FROM fruit ORDER BY rowid"_s, 1, fruit.path(), helpers_caller),
        (QStringList{u"1"_s, QString(), u"3"_s}));
}

TEST_MAIN(tst_sqlite_commands)
#include "tst_sqlite_commands.moc"
